// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVTheme.h"

namespace morvanelab
{

/** The pictures of the window, embedded vector drawings of our own. */
enum class MVIcon
{
    logo,     ///< the mark alone, square
    wordmark, ///< mark and name, about 5.6 times as wide as high
    save,
    saveAs,
    clear, ///< a dustbin
    librarian,
    midiMap,
    menu,
    help,
    mute,
    bypass,
    panic,
    reset,
    view,
    previous,
    next,
    up,
    down,
    search,
    folder,
    file,
    bank,
    patch,
    genre,
    add,
    remove,
    copy,
    paste,
    move,
    swap,
    undo,
    redo,
    edit,
    image,
    importFile,
    exportFile,
    close,
    check,
    warning,
    info,
    keyboard,
    voices,
    zoom,
    palette,
    link,
    play,
    count
};

/** Outline of an icon in its own square of 24 by 24 (the wordmark: 136 by 24), read from the embedded drawing once.
    Strokes have become outlines, so filling the path draws the icon. Message thread. */
const juce::Path& iconPath (MVIcon icon);

/** The box an icon is drawn in, in its own units. */
juce::Rectangle<float> iconBox (MVIcon icon);

/** Draws an icon centred in an area, as large as it fits, in one colour. */
void drawIcon (juce::Graphics& graphics, MVIcon icon, juce::Rectangle<float> area, juce::Colour colour);

} // namespace morvanelab
