// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVLookAndFeel.h"

#include "foundation/MVXmlDocument.h"
#include "foundation/MVXmlElement.h"
#include "foundation/MVXmlTag.h"
#include "ui/MVIcons.h"
#include "ui/MVPaint.h"

#include <string>

namespace morvanelab
{

namespace
{

using enum MVThemeColour;

constexpr const char* listName = "colors";
constexpr const char* colourName = "color";
constexpr const char* idAttribute = "color_id";
constexpr const char* argbAttribute = "argb";
constexpr int argbDigits = 8;

struct NamedColour
{
    MVThemeColour colour;
    juce::Colour value;
};

const MVThemeEntry* entryOf (int colorId)
{
    for (const auto& entry : themeEntries())
        if (entry.colorId == colorId)
            return &entry;
    return nullptr;
}

/** Adds the colour an element names, if it does so clearly. */
void readColour (const MVXmlElement& element, std::vector<NamedColour>& found)
{
    const auto* entry = entryOf (element.getColorId());
    const auto argb = element.getAttribute (argbAttribute);
    if (juce::String (element.getName()) != colourName || entry == nullptr || argb == nullptr)
        return;
    const juce::String digits (juce::CharPointer_UTF8 (argb->text()));
    if (digits.length() == argbDigits && digits.containsOnly ("0123456789abcdefABCDEF"))
        found.push_back ({ entry->colour, juce::Colour (static_cast<juce::uint32> (digits.getHexValue32())) });
}

void readColours (MVXmlElement& parent, std::vector<NamedColour>& found)
{
    const int count = parent.childCount();
    for (int i = 0; i < count; ++i)
        if (const auto child = parent.childAt (i))
            readColour (*child, found);
}

juce::LookAndFeel_V4::ColourScheme schemeOfTheme()
{
    return { themeColour (windowBackground),
             themeColour (control),
             themeColour (popup),
             themeColour (controlOutline),
             themeColour (text),
             themeColour (accent),
             themeColour (text),
             themeColour (selection),
             themeColour (text) };
}

} // namespace

MVLookAndFeel::MVLookAndFeel() { refreshColours(); }

MVLookAndFeel::~MVLookAndFeel() = default;

bool MVLookAndFeel::applyCustomColours (const juce::String& xmlText)
{
    std::vector<NamedColour> found;
    if (const auto root = MVXmlDocument::read (std::string_view (xmlText.toRawUTF8())))
    {
        readColours (*root, found);
        const int lists = root->countChildrenNamed (listName);
        for (int i = 0; i < lists; ++i)
            if (const auto list = root->childNamed (listName, i))
                readColours (*list, found);
    }
    resetThemeColours();
    for (const auto& colour : found)
        setThemeColour (colour.colour, colour.value);
    refreshColours();
    return ! found.empty();
}

juce::String MVLookAndFeel::customColoursAsXml()
{
    auto list = makeSmart<MVXmlElement> (MVXmlTag (listName));
    int count = 0;
    for (const auto& entry : themeEntries())
    {
        const auto argb = themeColour (entry.colour).getARGB();
        if (argb == entry.argb)
            continue;
        MVXmlTag tag (colourName);
        tag.addAttribute (idAttribute, std::to_string (entry.colorId).c_str());
        tag.addAttribute (
            argbAttribute,
            juce::String::toHexString (static_cast<juce::int64> (argb)).paddedLeft ('0', argbDigits).toRawUTF8());
        list->addChild (makeSmart<MVXmlElement> (tag));
        ++count;
    }
    if (count == 0)
        return {};
    MVXmlElement root;
    root.addChild (std::move (list));
    return juce::String::fromUTF8 (root.contentText()->text());
}

void MVLookAndFeel::refreshColours()
{
    setColourScheme (schemeOfTheme());

    // What the scheme of nine colours cannot tell apart.
    const std::pair<int, MVThemeColour> own[] {
        { juce::TextButton::buttonOnColourId, accentDim },
        { juce::TextButton::textColourOnId, accent },
        { juce::ToggleButton::tickColourId, accent },
        { juce::ToggleButton::tickDisabledColourId, controlOutline },
        { juce::TextEditor::backgroundColourId, field },
        { juce::TextEditor::highlightColourId, selection },
        { juce::TextEditor::focusedOutlineColourId, focus },
        { juce::CaretComponent::caretColourId, accent },
        { juce::ScrollBar::thumbColourId, track },
        { juce::ListBox::backgroundColourId, field },
        { juce::ListBox::outlineColourId, panelOutline },
        { juce::TreeView::selectedItemBackgroundColourId, selection },
        { juce::TreeView::dragAndDropIndicatorColourId, accent },
        { juce::PopupMenu::headerTextColourId, textFaint },
        { juce::ComboBox::focusedOutlineColourId, focus },
        { juce::ComboBox::arrowColourId, textDim },
        { juce::Slider::backgroundColourId, track },
        { juce::Slider::trackColourId, accent },
        { juce::Slider::thumbColourId, text },
        { juce::Slider::rotarySliderFillColourId, accent },
        { juce::Slider::rotarySliderOutlineColourId, track },
        { juce::Slider::textBoxHighlightColourId, selection },
        { juce::AlertWindow::backgroundColourId, popup },
        { juce::AlertWindow::outlineColourId, popupOutline },
        { juce::ProgressBar::backgroundColourId, meterTrack },
        { juce::ProgressBar::foregroundColourId, accent },
        { juce::TooltipWindow::backgroundColourId, popup },
        { juce::TooltipWindow::textColourId, text },
        { juce::TooltipWindow::outlineColourId, popupOutline },
        { juce::TabbedComponent::outlineColourId, panelOutline },
        { juce::HyperlinkButton::textColourId, focus },
        { juce::GroupComponent::outlineColourId, panelOutline },
        { juce::GroupComponent::textColourId, textDim },
        { juce::BubbleComponent::backgroundColourId, popup },
        { juce::BubbleComponent::outlineColourId, popupOutline },
        { juce::TableHeaderComponent::backgroundColourId, panelHeader },
        { juce::TableHeaderComponent::outlineColourId, panelOutline },
        { juce::TableHeaderComponent::highlightColourId, controlHover },
        { juce::TableHeaderComponent::textColourId, textDim },
        { juce::FileBrowserComponent::currentPathBoxBackgroundColourId, control },
        { juce::FileBrowserComponent::filenameBoxBackgroundColourId, field },
    };
    for (const auto& [id, colour] : own)
        setColour (id, themeColour (colour));

    setColour (juce::Slider::textBoxOutlineColourId, themeColour (panel).withAlpha (0.0F));
    setColour (juce::LassoComponent<int>::lassoFillColourId, themeColour (accentDim).withAlpha (0.3F));
    setColour (juce::LassoComponent<int>::lassoOutlineColourId, themeColour (accent));

    // Drawings in the old colours are made again when they are next asked for.
    folderImage.reset();
    documentImage.reset();
}

juce::Typeface::Ptr MVLookAndFeel::getTypefaceForFont (const juce::Font& font)
{
    if (font.getTypefaceName() == juce::Font::getDefaultSansSerifFontName())
        if (const auto face = themeTypeface (font.isBold() ? MVFontWeight::semiBold : MVFontWeight::regular))
            return face;
    return juce::LookAndFeel_V4::getTypefaceForFont (font);
}

// ---------------------------------------------------------------------------------------------------- buttons

void MVLookAndFeel::drawButtonBackground (juce::Graphics& graphics, juce::Button& button, const juce::Colour& colour,
                                          bool highlighted, bool down)
{
    const bool plain = colour == themeColour (control);
    auto fill = down          ? (plain ? themeColour (controlDown) : colour.darker (0.3F))
                : highlighted ? (plain ? themeColour (controlHover) : colour.brighter (0.15F))
                              : colour;
    auto outline = themeColour (button.getToggleState() ? accent : controlOutline);
    if (! button.isEnabled())
    {
        fill = themeColour (panel);
        outline = themeColour (panelOutline);
    }

    const auto bounds = button.getLocalBounds().toFloat().reduced (metrics::hairline / 2);
    const bool left = button.isConnectedOnLeft();
    const bool right = button.isConnectedOnRight();
    const bool top = button.isConnectedOnTop();
    const bool bottom = button.isConnectedOnBottom();
    juce::Path body;
    body.addRoundedRectangle (bounds.getX(), bounds.getY(), bounds.getWidth(), bounds.getHeight(), metrics::corner,
                              metrics::corner, ! (left || top), ! (right || top), ! (left || bottom),
                              ! (right || bottom));
    graphics.setColour (fill);
    graphics.fillPath (body);
    graphics.setColour (outline);
    graphics.strokePath (body, juce::PathStrokeType (metrics::hairline));
    if (button.hasKeyboardFocus (true))
        paintFocus (graphics, button.getLocalBounds().toFloat());
}

juce::Font MVLookAndFeel::getTextButtonFont (juce::TextButton&, int buttonHeight)
{
    return themeFont (juce::jmin (fontHeights::small + 1, static_cast<float> (buttonHeight) * 0.6F),
                      MVFontWeight::semiBold);
}

void MVLookAndFeel::drawButtonText (juce::Graphics& graphics, juce::TextButton& button, bool, bool)
{
    graphics.setFont (getTextButtonFont (button, button.getHeight()));
    graphics.setColour (! button.isEnabled()
                            ? themeColour (textDisabled)
                            : button.findColour (button.getToggleState() ? juce::TextButton::textColourOnId
                                                                         : juce::TextButton::textColourOffId));
    graphics.drawFittedText (button.getButtonText(), button.getLocalBounds().reduced (metrics::gap, 2),
                             juce::Justification::centred, 1, 0.85F);
}

void MVLookAndFeel::drawToggleButton (juce::Graphics& graphics, juce::ToggleButton& button, bool highlighted, bool down)
{
    const float side = static_cast<float> (juce::jmin (metrics::iconSize, button.getHeight()));
    const float top = (static_cast<float> (button.getHeight()) - side) / 2;
    drawTickBox (graphics, button, 2.0F, std::round (top), side, side, button.getToggleState(), button.isEnabled(),
                 highlighted, down);
    graphics.setColour (button.isEnabled() ? button.findColour (juce::ToggleButton::textColourId)
                                           : themeColour (textDisabled));
    graphics.setFont (themeFont (fontHeights::normal));
    graphics.drawFittedText (button.getButtonText(),
                             button.getLocalBounds().withTrimmedLeft (static_cast<int> (side) + metrics::gap + 4),
                             juce::Justification::centredLeft, 2, 0.9F);
}

void MVLookAndFeel::changeToggleButtonWidthToFitText (juce::ToggleButton& button)
{
    const float width = themeFont (fontHeights::normal).getStringWidthFloat (button.getButtonText());
    button.setSize (juce::roundToInt (width + 1) + metrics::iconSize + metrics::gap + 8, button.getHeight());
}

void MVLookAndFeel::drawTickBox (juce::Graphics& graphics, juce::Component& component, float x, float y, float w,
                                 float h, bool ticked, bool enabled, bool highlighted, bool down)
{
    const juce::Rectangle<float> box (x, y, w, h);
    const auto mark = enabled ? component.findColour (juce::ToggleButton::tickColourId) : themeColour (textDisabled);
    const auto outline = ticked ? mark : highlighted && enabled ? themeColour (focus) : themeColour (controlOutline);
    paintBody (graphics, box, themeColour (down ? controlDown : field), outline, 3.0F);
    if (ticked)
        drawIcon (graphics, MVIcon::check, box.reduced (1.5F), mark);
    if (component.hasKeyboardFocus (true))
        paintFocus (graphics, box.expanded (2), metrics::corner);
}

// ------------------------------------------------------------------------------------------------------- text

void MVLookAndFeel::fillTextEditorBackground (juce::Graphics& graphics, int width, int height, juce::TextEditor& editor)
{
    const auto fill = editor.findColour (juce::TextEditor::backgroundColourId);
    graphics.setColour (editor.isEnabled() ? fill : fill.interpolatedWith (themeColour (panel), 0.7F));
    graphics.fillRoundedRectangle (juce::Rectangle<int> (width, height).toFloat(), metrics::corner - 1);
}

void MVLookAndFeel::drawTextEditorOutline (juce::Graphics& graphics, int width, int height, juce::TextEditor& editor)
{
    const bool focused = editor.isEnabled() && ! editor.isReadOnly() && editor.hasKeyboardFocus (true);
    graphics.setColour (! editor.isEnabled() ? themeColour (panelOutline)
                                             : editor.findColour (focused ? juce::TextEditor::focusedOutlineColourId
                                                                          : juce::TextEditor::outlineColourId));
    graphics.drawRoundedRectangle (juce::Rectangle<int> (width, height).toFloat().reduced (metrics::hairline / 2),
                                   metrics::corner - 1, metrics::hairline);
}

juce::Font MVLookAndFeel::getLabelFont (juce::Label& label)
{
    // A label nobody gave a font has the toolkit's own size.
    const auto font = label.getFont();
    return font == juce::Font (15.0F) ? themeFont (fontHeights::normal) : font;
}

void MVLookAndFeel::drawLabel (juce::Graphics& graphics, juce::Label& label)
{
    graphics.fillAll (label.findColour (juce::Label::backgroundColourId));
    if (! label.isBeingEdited())
    {
        const auto font = getLabelFont (label);
        const auto area = getLabelBorderSize (label).subtractedFrom (label.getLocalBounds());
        graphics.setColour (label.isEnabled() ? label.findColour (juce::Label::textColourId)
                                              : themeColour (textDisabled));
        graphics.setFont (font);
        graphics.drawFittedText (
            label.getText(), area, label.getJustificationType(),
            juce::jmax (1, static_cast<int> (static_cast<float> (area.getHeight()) / font.getHeight())),
            label.getMinimumHorizontalScale());
    }
    graphics.setColour (label.findColour (juce::Label::outlineColourId));
    graphics.drawRect (label.getLocalBounds());
}

// ----------------------------------------------------------------------------------------------------- shared

MVSharedLookAndFeel::MVSharedLookAndFeel() { juce::LookAndFeel::setDefaultLookAndFeel (&look); }

MVSharedLookAndFeel::~MVSharedLookAndFeel() { juce::LookAndFeel::setDefaultLookAndFeel (nullptr); }

} // namespace morvanelab
