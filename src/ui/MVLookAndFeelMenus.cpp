// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVIconButton.h"
#include "ui/MVLookAndFeel.h"
#include "ui/MVPaint.h"

namespace morvanelab
{

namespace
{

using enum MVThemeColour;

constexpr int menuBorder = 4;
constexpr int itemIconWidth = 24;
constexpr int separatorHeight = 9;
constexpr int alertButtonHeight = 28;
constexpr int alertIconSide = 36;
constexpr int alertIconSpace = 80; ///< what the toolkit's own layout keeps free for the icon
constexpr int alertMargin = 22;
constexpr float tooltipWidth = 340.0F;
constexpr int tooltipMarginX = 9;
constexpr int tooltipMarginY = 6;

juce::TextLayout tooltipLayout (const juce::String& tip)
{
    juce::AttributedString attributed;
    attributed.append (tip, themeFont (fontHeights::small + 1), themeColour (text));
    attributed.setJustification (juce::Justification::topLeft);
    juce::TextLayout layout;
    layout.createLayout (attributed, tooltipWidth);
    return layout;
}

std::pair<MVIcon, MVThemeColour> alertIcon (juce::MessageBoxIconType type)
{
    switch (type)
    {
        case juce::MessageBoxIconType::WarningIcon:
            return { MVIcon::warning, warn };
        case juce::MessageBoxIconType::QuestionIcon:
            return { MVIcon::help, focus };
        case juce::MessageBoxIconType::InfoIcon:
        case juce::MessageBoxIconType::NoIcon:
            break;
    }
    return { MVIcon::info, focus };
}

} // namespace

// ------------------------------------------------------------------------------------------------ combo boxes

void MVLookAndFeel::drawComboBox (juce::Graphics& graphics, int width, int height, bool down, int, int, int, int,
                                  juce::ComboBox& box)
{
    const bool enabled = box.isEnabled();
    const bool hover = enabled && box.isMouseOver (true);
    const auto plain = box.findColour (juce::ComboBox::backgroundColourId);
    const auto fill = ! enabled                        ? themeColour (panel)
                      : plain != themeColour (control) ? plain
                                                       : themeColour (down    ? controlDown
                                                                      : hover ? controlHover
                                                                              : control);
    const auto bounds = juce::Rectangle<int> (width, height).toFloat();
    paintBody (graphics, bounds, fill,
               enabled ? box.findColour (juce::ComboBox::outlineColourId) : themeColour (panelOutline));
    if (box.hasKeyboardFocus (true))
        paintFocus (graphics, bounds);
    drawIcon (graphics, MVIcon::down, juce::Rectangle<int> (width - 20, 0, 12, height).toFloat(),
              enabled ? box.findColour (juce::ComboBox::arrowColourId) : themeColour (textDisabled));
}

juce::Font MVLookAndFeel::getComboBoxFont (juce::ComboBox& box)
{
    return themeFont (juce::jmin (fontHeights::normal, static_cast<float> (box.getHeight()) * 0.65F));
}

void MVLookAndFeel::positionComboBoxText (juce::ComboBox& box, juce::Label& label)
{
    label.setBounds (3, 1, juce::jmax (0, box.getWidth() - 25), box.getHeight() - 2);
    label.setFont (getComboBoxFont (box));
}

// ------------------------------------------------------------------------------------------------------ menus

void MVLookAndFeel::drawPopupMenuBackgroundWithOptions (juce::Graphics& graphics, int width, int height,
                                                        const juce::PopupMenu::Options&)
{
    graphics.fillAll (findColour (juce::PopupMenu::backgroundColourId));
    graphics.setColour (themeColour (popupOutline));
    graphics.drawRect (0, 0, width, height);
}

void MVLookAndFeel::drawPopupMenuItem (juce::Graphics& graphics, const juce::Rectangle<int>& area, bool separator,
                                       bool active, bool highlighted, bool ticked, bool hasSubMenu,
                                       const juce::String& itemText, const juce::String& shortcut,
                                       const juce::Drawable* icon, const juce::Colour* textColour)
{
    if (separator)
    {
        graphics.setColour (themeColour (popupOutline));
        graphics.fillRect (
            area.reduced (metrics::margin, 0).withSizeKeepingCentre (area.getWidth() - metrics::margin * 2, 1));
        return;
    }

    const bool lit = highlighted && active;
    if (lit)
    {
        graphics.setColour (findColour (juce::PopupMenu::highlightedBackgroundColourId));
        graphics.fillRoundedRectangle (area.reduced (menuBorder, 0).toFloat(), metrics::corner);
    }
    const auto ink = ! active ? themeColour (textDisabled)
                     : textColour != nullptr
                         ? *textColour
                         : findColour (lit ? juce::PopupMenu::highlightedTextColourId : juce::PopupMenu::textColourId);
    auto content = area.reduced (menuBorder + 2, 0);
    const auto iconArea = content.removeFromLeft (itemIconWidth).toFloat();
    if (icon != nullptr)
        icon->drawWithin (graphics, iconArea.reduced (3),
                          juce::RectanglePlacement::centred | juce::RectanglePlacement::onlyReduceInSize,
                          active ? 1.0F : 0.5F);
    else if (ticked)
        drawIcon (graphics, MVIcon::check, iconArea.withSizeKeepingCentre (14, 14),
                  active ? themeColour (accent) : ink);
    if (hasSubMenu)
        drawIcon (graphics, MVIcon::next, content.removeFromRight (16).toFloat().withSizeKeepingCentre (11, 11), ink);

    content.removeFromRight (metrics::gap);
    if (shortcut.isNotEmpty())
    {
        const auto font = themeFont (fontHeights::small);
        graphics.setFont (font);
        graphics.setColour (themeColour (active ? textFaint : textDisabled));
        graphics.drawText (shortcut,
                           content.removeFromRight (juce::roundToInt (font.getStringWidthFloat (shortcut)) + 2),
                           juce::Justification::centredRight, false);
    }
    graphics.setColour (ink);
    graphics.setFont (getPopupMenuFont());
    graphics.drawText (itemText, content, juce::Justification::centredLeft, true);
}

void MVLookAndFeel::drawPopupMenuSectionHeaderWithOptions (juce::Graphics& graphics, const juce::Rectangle<int>& area,
                                                           const juce::String& name, const juce::PopupMenu::Options&)
{
    graphics.setFont (themeFont (fontHeights::small, MVFontWeight::semiBold));
    graphics.setColour (findColour (juce::PopupMenu::headerTextColourId));
    graphics.drawText (name, area.reduced (metrics::margin + 2, 0).withTrimmedBottom (2),
                       juce::Justification::bottomLeft, true);
}

void MVLookAndFeel::drawPopupMenuUpDownArrow (juce::Graphics& graphics, int width, int height, bool up)
{
    drawIcon (graphics, up ? MVIcon::up : MVIcon::down,
              juce::Rectangle<int> (width, height).toFloat().withSizeKeepingCentre (12, 12), themeColour (textDim));
}

void MVLookAndFeel::getIdealPopupMenuItemSize (const juce::String& itemText, bool separator, int standardHeight,
                                               int& width, int& height)
{
    if (separator)
    {
        width = 50;
        height = separatorHeight;
        return;
    }
    height = standardHeight > 0 ? standardHeight : metrics::rowHeight;
    width = juce::roundToInt (getPopupMenuFont().getStringWidthFloat (itemText)) + itemIconWidth * 2 + menuBorder * 2;
}

juce::Font MVLookAndFeel::getPopupMenuFont() { return themeFont (fontHeights::normal); }

int MVLookAndFeel::getPopupMenuBorderSize() { return menuBorder; }

juce::Component* menuParentOf (juce::Component& component)
{
    auto* const window =
        dynamic_cast<juce::Component*> (juce::DragAndDropContainer::findParentDragContainerFor (&component));
    return window != nullptr ? window : component.getTopLevelComponent();
}

juce::Component* MVLookAndFeel::getParentComponentForMenuOptions (const juce::PopupMenu::Options& options)
{
    // Combo boxes name no parent.
    auto* const target = options.getTargetComponent();
    return options.getParentComponent() != nullptr || target == nullptr ? options.getParentComponent()
                                                                        : menuParentOf (*target);
}

// --------------------------------------------------------------------------------------------------- tooltips

juce::Rectangle<int> MVLookAndFeel::getTooltipBounds (const juce::String& tip, juce::Point<int> position,
                                                      juce::Rectangle<int> parentArea)
{
    const auto layout = tooltipLayout (tip);
    const int width = static_cast<int> (std::ceil (layout.getWidth())) + tooltipMarginX * 2;
    const int height = static_cast<int> (std::ceil (layout.getHeight())) + tooltipMarginY * 2;
    const int x = position.x > parentArea.getCentreX() ? position.x - width - 8 : position.x + 14;
    const int y = position.y > parentArea.getCentreY() ? position.y - height - 6 : position.y + 18;
    return juce::Rectangle<int> (x, y, width, height).constrainedWithin (parentArea);
}

void MVLookAndFeel::drawTooltip (juce::Graphics& graphics, const juce::String& tip, int width, int height)
{
    graphics.fillAll (findColour (juce::TooltipWindow::backgroundColourId));
    graphics.setColour (findColour (juce::TooltipWindow::outlineColourId));
    graphics.drawRect (0, 0, width, height);
    tooltipLayout (tip).draw (graphics,
                              juce::Rectangle<int> (width, height).reduced (tooltipMarginX, tooltipMarginY).toFloat());
}

// ---------------------------------------------------------------------------------------------------- alerts

juce::AlertWindow* MVLookAndFeel::createAlertWindow (const juce::String& title, const juce::String& message,
                                                     const juce::String& button1, const juce::String& button2,
                                                     const juce::String& button3, juce::MessageBoxIconType type,
                                                     int numButtons, juce::Component* associated)
{
    auto* alert = juce::LookAndFeel_V2::createAlertWindow (title, message, button1, button2, button3, type, numButtons,
                                                           associated);
    alert->setBounds (alert->getBounds().expanded (0, alertMargin / 2));
    for (auto* child : alert->getChildren())
        if (dynamic_cast<juce::TextButton*> (child) != nullptr)
            child->setTopLeftPosition (child->getX(), alert->getHeight() - child->getHeight() - alertMargin);
    return alert;
}

void MVLookAndFeel::drawAlertBox (juce::Graphics& graphics, juce::AlertWindow& alert, const juce::Rectangle<int>&,
                                  juce::TextLayout& layout)
{
    const auto bounds = alert.getLocalBounds();
    graphics.fillAll (
        alert.findColour (juce::AlertWindow::backgroundColourId)); // the window is opaque, so its corners are square
    graphics.setColour (alert.findColour (juce::AlertWindow::outlineColourId));
    graphics.drawRect (bounds);

    auto textArea = bounds.reduced (alertMargin, alertMargin);
    if (alert.getAlertType() != juce::MessageBoxIconType::NoIcon)
    {
        const auto [icon, colour] = alertIcon (alert.getAlertType());
        drawIcon (graphics, icon,
                  juce::Rectangle<int> (alertMargin, alertMargin - 4, alertIconSide, alertIconSide).toFloat(),
                  themeColour (colour));
        textArea.setLeft (alertIconSpace);
    }
    layout.draw (graphics, textArea.toFloat());
}

int MVLookAndFeel::getAlertWindowButtonHeight() { return alertButtonHeight; }

juce::Font MVLookAndFeel::getAlertWindowTitleFont() { return themeFont (fontHeights::large, MVFontWeight::semiBold); }

juce::Font MVLookAndFeel::getAlertWindowMessageFont() { return themeFont (fontHeights::normal); }

juce::Font MVLookAndFeel::getAlertWindowFont() { return themeFont (fontHeights::small); }

void MVLookAndFeel::drawCallOutBoxBackground (juce::CallOutBox&, juce::Graphics& graphics, const juce::Path& outline,
                                              juce::Image&)
{
    graphics.setColour (themeColour (popup));
    graphics.fillPath (outline);
    graphics.setColour (themeColour (popupOutline));
    graphics.strokePath (outline, juce::PathStrokeType (metrics::hairline));
}

// --------------------------------------------------------------------------------------------------- windows

void MVLookAndFeel::drawDocumentWindowTitleBar (juce::DocumentWindow& window, juce::Graphics& graphics, int width,
                                                int height, int titleX, int titleW, const juce::Image*, bool)
{
    graphics.fillAll (themeColour (titleBar));
    graphics.setColour (themeColour (panelOutline));
    graphics.fillRect (0, height - 1, width, 1);
    graphics.setColour (themeColour (window.isActiveWindow() ? text : textFaint));
    graphics.setFont (
        themeFont (juce::jmin (fontHeights::normal, static_cast<float> (height) * 0.65F), MVFontWeight::semiBold));
    graphics.drawText (window.getName(), titleX + metrics::gap, 0, titleW - metrics::gap, height,
                       juce::Justification::centredLeft, true);
}

juce::Button* MVLookAndFeel::createDocumentWindowButton (int kind)
{
    const bool closes = kind == juce::DocumentWindow::closeButton;
    const bool minimises = kind == juce::DocumentWindow::minimiseButton;
    auto* button = new MVIconButton (closes      ? "close"
                                     : minimises ? "minimise"
                                                 : "maximise",
                                     closes      ? MVIcon::close
                                     : minimises ? MVIcon::remove
                                                 : MVIcon::add,
                                     MVIconButton::Style::bare);
    button->setWantsKeyboardFocus (false);
    return button;
}

void MVLookAndFeel::positionDocumentWindowButtons (juce::DocumentWindow&, int x, int y, int width, int height,
                                                   juce::Button* minimise, juce::Button* maximise, juce::Button* close,
                                                   bool onLeft)
{
    int position = onLeft ? x : x + width - height;
    for (auto* button : { close, maximise, minimise })
    {
        if (button == nullptr)
            continue;
        button->setBounds (juce::Rectangle<int> (position, y, height, height).reduced (2));
        position += onLeft ? height : -height;
    }
}

} // namespace morvanelab
