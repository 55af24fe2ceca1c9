// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVIcons.h"

#include "ui/MVResources.h"

#include <cmath>
#include <string>

namespace morvanelab
{

namespace
{

constexpr std::size_t iconCount = static_cast<std::size_t> (MVIcon::count);

/** File names in the order of MVIcon. */
constexpr std::array<const char*, iconCount> fileNames {
    "logo",     "wordmark", "save",  "saveAs",  "clear",      "librarian",  "midiMap", "menu",  "help",    "mute",
    "bypass",   "panic",    "reset", "view",    "previous",   "next",       "up",      "down",  "search",  "folder",
    "file",     "bank",     "patch", "genre",   "add",        "remove",     "copy",    "paste", "move",    "swap",
    "undo",     "redo",     "edit",  "image",   "importFile", "exportFile", "close",   "check", "warning", "info",
    "keyboard", "voices",   "zoom",  "palette", "link",       "play"
};

struct Drawing
{
    juce::Path outline;
    juce::Rectangle<float> box;
};

Drawing readDrawing (const char* name)
{
    const auto data = resourceData (std::string ("icons/") + name + ".svg");
    const auto xml = juce::parseXML (juce::String::fromUTF8 (data.data(), static_cast<int> (data.size())));
    if (xml == nullptr)
        return {};
    const auto drawable = juce::Drawable::createFromSVG (*xml);
    if (drawable == nullptr)
        return {};
    return { drawable->getOutlineAsPath(),
             { static_cast<float> (xml->getDoubleAttribute ("width")),
               static_cast<float> (xml->getDoubleAttribute ("height")) } };
}

const Drawing& drawingOf (MVIcon icon)
{
    static std::array<Drawing, iconCount> drawings;
    auto& drawing = drawings[static_cast<std::size_t> (icon)];
    if (drawing.box.isEmpty())
        drawing = readDrawing (fileNames[static_cast<std::size_t> (icon)]);
    return drawing;
}

} // namespace

const juce::Path& iconPath (MVIcon icon) { return drawingOf (icon).outline; }

juce::Rectangle<float> iconBox (MVIcon icon) { return drawingOf (icon).box; }

void drawIcon (juce::Graphics& graphics, MVIcon icon, juce::Rectangle<float> area, juce::Colour colour)
{
    const auto& drawing = drawingOf (icon);
    if (drawing.box.isEmpty() || area.isEmpty())
        return;

    // The box starts on whole pixels of the screen, whatever the zoom: symmetric icons then stay symmetric.
    const float pixels = graphics.getInternalContext().getPhysicalPixelScaleFactor();
    const float scale =
        juce::jmin (area.getWidth() / drawing.box.getWidth(), area.getHeight() / drawing.box.getHeight());
    const float x = area.getCentreX() - drawing.box.getWidth() * scale / 2;
    const float y = area.getCentreY() - drawing.box.getHeight() * scale / 2;
    graphics.setColour (colour);
    graphics.fillPath (drawing.outline, juce::AffineTransform::scale (scale).translated (
                                            std::round (x * pixels) / pixels, std::round (y * pixels) / pixels));
}

} // namespace morvanelab
