// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinSettings.h"

#include "foundation/MVXmlDocument.h"

#include <algorithm>

namespace morvanelab
{

namespace
{

constexpr const char* rootName = "xml_wrapper";
constexpr const char* windowName = "main_window_rect";
constexpr const char* librarianName = "bank_mgr_settings";
constexpr const char* shownName = "bank_mgr_displayed";
constexpr const char* trueText = "MV_TRUE";
constexpr const char* falseText = "MV_FALSE";
constexpr const char* zoomKey = "window_zoom";
constexpr const char* lookKey = "mv_custom_look_and_feel";
constexpr int largestSide = 16384;

int readSide (const juce::XmlElement& element, const char* name)
{
    const int side = element.getIntAttribute (name);
    return side > 0 && side <= largestSide ? side : 0;
}

} // namespace

SordelinSettings::Dimensions SordelinSettings::readDimensions (const char* key) const
{
    Dimensions dimensions;
    const auto text = properties.getString (key);
    if (! MVXmlDocument::isSafeToParse (text.toStdString()))
        return dimensions;
    const auto root = juce::parseXML (text);
    if (root == nullptr)
        return dimensions;
    if (const auto* window = root->getChildByName (windowName))
    {
        dimensions.width = readSide (*window, "width");
        dimensions.height = readSide (*window, "height");
        dimensions.librarianShown = window->compareAttribute (shownName, trueText);
    }
    if (const auto* librarian = root->getChildByName (librarianName))
        dimensions.librarian = std::make_shared<const juce::XmlElement> (*librarian);
    return dimensions;
}

void SordelinSettings::writeDimensions (const char* key, const Dimensions& dimensions)
{
    juce::XmlElement root (rootName);
    auto* window = root.createNewChildElement (windowName);
    window->setAttribute ("width", dimensions.width);
    window->setAttribute ("height", dimensions.height);
    window->setAttribute (shownName, dimensions.librarianShown ? trueText : falseText);
    if (dimensions.librarian != nullptr)
        root.addChildElement (new juce::XmlElement (*dimensions.librarian));
    properties.setString (key, root.toString (juce::XmlElement::TextFormat().singleLine().withoutHeader()));
}

juce::String SordelinSettings::getCustomLookAndFeel() const
{
    const auto text = properties.getString (lookKey);
    return MVXmlDocument::isSafeToParse (text.toStdString()) ? text : juce::String();
}

int SordelinSettings::getZoom() const { return getWithin (zoomKey, smallestZoom, largestZoom, defaultZoom); }

void SordelinSettings::setZoom (int percent)
{
    properties.setInt (zoomKey, std::clamp (percent, smallestZoom, largestZoom));
}

int SordelinSettings::getPlayMode() const { return getWithin ("play_mode", monoMode, oneShotMode, monoMode); }

int SordelinSettings::getVoices() const { return getWithin ("voices", smallestVoices, mostVoices, defaultVoices); }

int SordelinSettings::getWithin (const char* key, int low, int high, int fallback) const
{
    const int value = properties.getInt (key, fallback);
    return value < low || value > high ? fallback : value;
}

} // namespace morvanelab
