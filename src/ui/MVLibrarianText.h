// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVString.h"

#include <juce_core/juce_core.h>

namespace morvanelab
{

/** Stored text as it may be drawn or edited: UTF-8, or, if it is not valid, one character a byte. Control characters,
   also those that turn the direction of writing, become blanks; with keepLines, line ends stay. What is longer than
    mostCharacters ends in an ellipsis. */
juce::String toShownText (const MVString& stored, int mostCharacters = 200, bool keepLines = false);

/** Typed text as it is stored: UTF-8. */
MVString toStoredText (const juce::String& typed);

} // namespace morvanelab
