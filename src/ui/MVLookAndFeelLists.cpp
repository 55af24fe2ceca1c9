// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVIconButton.h"
#include "ui/MVLookAndFeel.h"
#include "ui/MVPaint.h"

namespace morvanelab
{

namespace
{

using enum MVThemeColour;

constexpr int scrollBarWidth = 10;
constexpr int shortestThumb = 24;
constexpr int fileLabelWidth = 46;
constexpr int wideRow = 420; ///< from here on a file's size and time stand beside its name

std::unique_ptr<juce::Drawable> drawableOf (MVIcon icon, juce::Colour colour)
{
    auto drawable = std::make_unique<juce::DrawablePath>();
    drawable->setPath (iconPath (icon));
    drawable->setFill (colour);
    return drawable;
}

MVIcon fileIcon (const juce::File& file, bool directory)
{
    return directory                                         ? MVIcon::folder
           : file.hasFileExtension (".mv_onbank")            ? MVIcon::bank
           : file.hasFileExtension (".mv_onpatch;.mv_patch") ? MVIcon::patch
                                                             : MVIcon::file;
}

/** The edge of a tab that touches the page. */
juce::Rectangle<int> pageEdge (juce::Rectangle<int> area, juce::TabbedButtonBar::Orientation orientation, int thickness)
{
    switch (orientation)
    {
        case juce::TabbedButtonBar::TabsAtBottom:
            return area.removeFromTop (thickness);
        case juce::TabbedButtonBar::TabsAtLeft:
            return area.removeFromRight (thickness);
        case juce::TabbedButtonBar::TabsAtRight:
            return area.removeFromLeft (thickness);
        case juce::TabbedButtonBar::TabsAtTop:
            break;
    }
    return area.removeFromBottom (thickness);
}

} // namespace

// ------------------------------------------------------------------------------------------------ scroll bars

void MVLookAndFeel::drawScrollbar (juce::Graphics& graphics, juce::ScrollBar& bar, int x, int y, int width, int height,
                                   bool vertical, int thumbStart, int thumbSize, bool mouseOver, bool mouseDown)
{
    if (thumbSize <= 0)
        return;
    const bool wide = mouseOver || mouseDown;
    auto thumb = (vertical ? juce::Rectangle<int> (x, thumbStart, width, thumbSize)
                           : juce::Rectangle<int> (thumbStart, y, thumbSize, height))
                     .toFloat()
                     .reduced (2.0F);
    if (! wide)
        thumb = vertical ? thumb.withTrimmedLeft (1.0F) : thumb.withTrimmedTop (1.0F);
    const auto colour = bar.findColour (juce::ScrollBar::thumbColourId);
    graphics.setColour (mouseDown ? colour.brighter (0.5F) : mouseOver ? colour.brighter (0.25F) : colour);
    graphics.fillRoundedRectangle (thumb, juce::jmin (thumb.getWidth(), thumb.getHeight()) / 2);
}

int MVLookAndFeel::getDefaultScrollbarWidth() { return scrollBarWidth; }

int MVLookAndFeel::getMinimumScrollbarThumbSize (juce::ScrollBar&) { return shortestThumb; }

// ------------------------------------------------------------------------------------------- tables and trees

void MVLookAndFeel::drawTableHeaderBackground (juce::Graphics& graphics, juce::TableHeaderComponent& header)
{
    auto area = header.getLocalBounds();
    graphics.fillAll (header.findColour (juce::TableHeaderComponent::backgroundColourId));
    graphics.setColour (header.findColour (juce::TableHeaderComponent::outlineColourId));
    graphics.fillRect (area.removeFromBottom (1));
    for (int i = header.getNumColumns (true); --i >= 0;)
        graphics.fillRect (header.getColumnPosition (i).removeFromRight (1).reduced (0, 4));
}

void MVLookAndFeel::drawTableHeaderColumn (juce::Graphics& graphics, juce::TableHeaderComponent& header,
                                           const juce::String& name, int, int width, int height, bool mouseOver,
                                           bool mouseDown, int columnFlags)
{
    auto area = juce::Rectangle<int> (width, height);
    const auto lit = header.findColour (juce::TableHeaderComponent::highlightColourId);
    if (mouseOver || mouseDown)
    {
        graphics.setColour (lit.withMultipliedAlpha (mouseDown ? 1.0F : 0.6F));
        graphics.fillRect (area.withTrimmedBottom (1));
    }
    area.reduce (metrics::gap, 0);
    const bool forwards = (columnFlags & juce::TableHeaderComponent::sortedForwards) != 0;
    if (forwards || (columnFlags & juce::TableHeaderComponent::sortedBackwards) != 0)
        drawIcon (graphics, forwards ? MVIcon::down : MVIcon::up,
                  area.removeFromRight (12).toFloat().withSizeKeepingCentre (10, 10), themeColour (accent));
    graphics.setColour (header.findColour (juce::TableHeaderComponent::textColourId));
    graphics.setFont (themeFont (fontHeights::small, MVFontWeight::semiBold));
    graphics.drawText (name, area, juce::Justification::centredLeft, true);
}

void MVLookAndFeel::drawTreeviewPlusMinusBox (juce::Graphics& graphics, const juce::Rectangle<float>& area,
                                              juce::Colour, bool open, bool mouseOver)
{
    drawIcon (graphics, open ? MVIcon::down : MVIcon::next, area.withSizeKeepingCentre (11.0F, 11.0F),
              themeColour (mouseOver ? text : textDim));
}

// ---------------------------------------------------------------------------------------------- file browser

juce::Button* MVLookAndFeel::createFileBrowserGoUpButton() { return new MVIconButton ("up", MVIcon::up); }

void MVLookAndFeel::layoutFileBrowserComponent (juce::FileBrowserComponent& browser,
                                                juce::DirectoryContentsDisplayComponent* list,
                                                juce::FilePreviewComponent* preview, juce::ComboBox* path,
                                                juce::TextEditor* name, juce::Button* goUp)
{
    auto area = browser.getLocalBounds().reduced (metrics::margin, metrics::gap);
    auto top = area.removeFromTop (metrics::controlHeight);
    goUp->setBounds (top.removeFromRight (metrics::controlHeight));
    top.removeFromRight (metrics::gap);
    path->setBounds (top);
    area.removeFromTop (metrics::gap);

    // The box's own label stands left of it.
    name->setBounds (area.removeFromBottom (metrics::controlHeight).withTrimmedLeft (fileLabelWidth));
    area.removeFromBottom (metrics::gap);
    if (preview != nullptr)
    {
        preview->setBounds (area.removeFromRight (area.getWidth() / 3));
        area.removeFromRight (metrics::gap);
    }
    if (auto* component = dynamic_cast<juce::Component*> (list))
        component->setBounds (area);
}

void MVLookAndFeel::drawFileBrowserRow (juce::Graphics& graphics, int width, int height, const juce::File& file,
                                        const juce::String& name, juce::Image*, const juce::String& size,
                                        const juce::String& time, bool directory, bool selected, int item,
                                        juce::DirectoryContentsDisplayComponent&)
{
    graphics.fillAll (themeColour (selected ? selection : item % 2 != 0 ? fieldAlternate : field));
    auto row = juce::Rectangle<int> (width, height).reduced (metrics::gap, 0);
    const auto iconArea = row.removeFromLeft (metrics::iconSize + 2).toFloat();
    drawIcon (graphics, fileIcon (file, directory),
              iconArea.withSizeKeepingCentre (metrics::iconSize, metrics::iconSize),
              themeColour (directory ? accent : textDim));
    row.removeFromLeft (metrics::gap);
    if (width > wideRow && ! directory)
    {
        graphics.setColour (themeColour (selected ? text : textFaint));
        graphics.setFont (themeFont (fontHeights::small));
        graphics.drawText (time, row.removeFromRight (row.getWidth() / 3), juce::Justification::centredRight, true);
        graphics.drawText (size, row.removeFromRight (70), juce::Justification::centredRight, true);
    }
    graphics.setColour (themeColour (text));
    graphics.setFont (themeFont (fontHeights::normal));
    graphics.drawText (name, row, juce::Justification::centredLeft, true);
}

const juce::Drawable* MVLookAndFeel::getDefaultFolderImage()
{
    if (folderImage == nullptr)
        folderImage = drawableOf (MVIcon::folder, themeColour (accent));
    return folderImage.get();
}

const juce::Drawable* MVLookAndFeel::getDefaultDocumentFileImage()
{
    if (documentImage == nullptr)
        documentImage = drawableOf (MVIcon::file, themeColour (textDim));
    return documentImage.get();
}

// ------------------------------------------------------------------------------------------------------- tabs

int MVLookAndFeel::getTabButtonBestWidth (juce::TabBarButton& button, int)
{
    const auto font = themeFont (fontHeights::normal, MVFontWeight::semiBold);
    return juce::roundToInt (font.getStringWidthFloat (button.getButtonText())) + metrics::margin * 3;
}

void MVLookAndFeel::drawTabButton (juce::TabBarButton& button, juce::Graphics& graphics, bool mouseOver, bool mouseDown)
{
    const bool front = button.isFrontTab();
    const auto area = button.getActiveArea();
    graphics.setColour (themeColour (front ? panel : mouseOver || mouseDown ? controlHover : titleBar));
    graphics.fillRect (area);
    if (front)
    {
        graphics.setColour (themeColour (accent));
        graphics.fillRect (pageEdge (area, button.getTabbedButtonBar().getOrientation(), 2));
    }
    graphics.setColour (themeColour (! button.isEnabled() ? textDisabled : front ? text : textDim));
    graphics.setFont (themeFont (fontHeights::normal, front ? MVFontWeight::semiBold : MVFontWeight::regular));
    graphics.drawFittedText (button.getButtonText(), button.getTextArea(), juce::Justification::centred, 1, 0.85F);
}

void MVLookAndFeel::drawTabAreaBehindFrontButton (juce::TabbedButtonBar& bar, juce::Graphics& graphics, int width,
                                                  int height)
{
    graphics.setColour (themeColour (panelOutline));
    graphics.fillRect (pageEdge ({ width, height }, bar.getOrientation(), 1));
}

// ------------------------------------------------------------------------------------------ groups, bars, ends

void MVLookAndFeel::drawGroupComponentOutline (juce::Graphics& graphics, int width, int height,
                                               const juce::String& name, const juce::Justification& justification,
                                               juce::GroupComponent& group)
{
    const auto font = themeFont (fontHeights::small, MVFontWeight::semiBold);
    const float top = font.getHeight() / 2;
    const auto frame =
        juce::Rectangle<int> (width, height).toFloat().withTrimmedTop (top).reduced (metrics::hairline / 2);
    graphics.setColour (group.isEnabled() ? group.findColour (juce::GroupComponent::outlineColourId)
                                          : themeColour (panelHeader));
    graphics.drawRoundedRectangle (frame, metrics::panelCorner, metrics::hairline);
    if (name.isEmpty())
        return;

    // The frame's line is open behind the name.
    const float nameWidth = juce::jmin (font.getStringWidthFloat (name) + 10.0F, frame.getWidth() - 16.0F);
    const auto line = juce::Rectangle<float> (frame.getX() + 8.0F, 0.0F, frame.getWidth() - 16.0F, font.getHeight());
    const auto gap = justification.appliedToRectangle (juce::Rectangle<float> (nameWidth, font.getHeight()), line);
    graphics.setColour (themeColour (panel));
    graphics.fillRect (gap);
    graphics.setColour (group.isEnabled() ? group.findColour (juce::GroupComponent::textColourId)
                                          : themeColour (textDisabled));
    graphics.setFont (font);
    graphics.drawText (name, gap, juce::Justification::centred, true);
}

void MVLookAndFeel::drawCornerResizer (juce::Graphics& graphics, int width, int height, bool mouseOver, bool dragging)
{
    graphics.setColour (themeColour (mouseOver || dragging ? textDim : knobEdge));
    const auto w = static_cast<float> (width);
    const auto h = static_cast<float> (height);
    for (const float part : { 0.25F, 0.5F, 0.75F })
        graphics.drawLine (w * part, h - 1.5F, w - 1.5F, h * part, 1.2F);
}

void MVLookAndFeel::drawStretchableLayoutResizerBar (juce::Graphics& graphics, int width, int height, bool,
                                                     bool mouseOver, bool dragging)
{
    const auto bar = juce::Rectangle<int> (width, height);
    graphics.setColour (themeColour (dragging ? accent : mouseOver ? focus : panelOutline));
    graphics.fillRect (width > height ? bar.withSizeKeepingCentre (width, 1) : bar.withSizeKeepingCentre (1, height));
}

void MVLookAndFeel::drawProgressBar (juce::Graphics& graphics, juce::ProgressBar& bar, int width, int height,
                                     double progress, const juce::String& label)
{
    if (width == height || progress < 0.0 || progress > 1.0)
    {
        juce::LookAndFeel_V4::drawProgressBar (graphics, bar, width, height, progress, label);
        return;
    }
    const auto area = juce::Rectangle<int> (width, height).toFloat();
    const float corner = juce::jmin (metrics::corner, static_cast<float> (height) / 2);
    paintBody (graphics, area, bar.findColour (juce::ProgressBar::backgroundColourId), themeColour (controlOutline),
               corner);
    const auto done = area.withWidth (area.getWidth() * static_cast<float> (progress)).reduced (metrics::hairline);
    graphics.setColour (
        bar.findColour (juce::ProgressBar::foregroundColourId).withMultipliedAlpha (label.isEmpty() ? 1.0F : 0.4F));
    graphics.fillRoundedRectangle (done, corner);
    graphics.setColour (themeColour (text));
    graphics.setFont (themeFont (fontHeights::small));
    graphics.drawText (label, area, juce::Justification::centred, true);
}

} // namespace morvanelab
