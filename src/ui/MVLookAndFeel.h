// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVTheme.h"

namespace morvanelab
{

/** How everything standard in the window is drawn: the dark theme of MVTheme.h on the toolkit's components. Made with
    the first editor and shared by all (see MVSharedLookAndFeel). Message thread. */
class MVLookAndFeel : public juce::LookAndFeel_V4
{
public:
    MVLookAndFeel();
    ~MVLookAndFeel() override;

    /** Takes the colours of an XML text into the table: elements named "color" with the attributes "color_id" and
       "argb" (8 hexadecimal digits), at the top or inside a "colors" element. Everything else in the text is passed
       over, so that damaged text changes nothing it does not name clearly. Colours not named go back to their defaults.
       True if any colour was taken. Components see it after sendLookAndFeelChange of their top component. */
    bool applyCustomColours (const juce::String& xmlText);
    /** The colours that differ from their defaults as such a text; empty when none does. */
    static juce::String customColoursAsXml();
    /** Takes the table into the toolkit's own colour numbers; call after setThemeColour, before
        sendLookAndFeelChange. */
    void refreshColours();

    // What the toolkit asks for; see juce::LookAndFeel_V4.
    juce::Typeface::Ptr getTypefaceForFont (const juce::Font& font) override;

    void drawButtonBackground (juce::Graphics&, juce::Button&, const juce::Colour&, bool highlighted,
                               bool down) override;
    void drawButtonText (juce::Graphics&, juce::TextButton&, bool highlighted, bool down) override;
    juce::Font getTextButtonFont (juce::TextButton&, int buttonHeight) override;
    void drawToggleButton (juce::Graphics&, juce::ToggleButton&, bool highlighted, bool down) override;
    void changeToggleButtonWidthToFitText (juce::ToggleButton&) override;
    void drawTickBox (juce::Graphics&, juce::Component&, float x, float y, float w, float h, bool ticked, bool enabled,
                      bool highlighted, bool down) override;

    void drawRotarySlider (juce::Graphics&, int x, int y, int width, int height, float position, float startAngle,
                           float endAngle, juce::Slider&) override;
    void drawLinearSlider (juce::Graphics&, int x, int y, int width, int height, float position, float minimum,
                           float maximum, juce::Slider::SliderStyle, juce::Slider&) override;
    int getSliderThumbRadius (juce::Slider&) override;
    juce::Label* createSliderTextBox (juce::Slider&) override;
    juce::Font getSliderPopupFont (juce::Slider&) override;

    void drawComboBox (juce::Graphics&, int width, int height, bool down, int buttonX, int buttonY, int buttonW,
                       int buttonH, juce::ComboBox&) override;
    juce::Font getComboBoxFont (juce::ComboBox&) override;
    void positionComboBoxText (juce::ComboBox&, juce::Label&) override;

    void drawPopupMenuBackgroundWithOptions (juce::Graphics&, int width, int height,
                                             const juce::PopupMenu::Options&) override;
    void drawPopupMenuItem (juce::Graphics&, const juce::Rectangle<int>& area, bool separator, bool active,
                            bool highlighted, bool ticked, bool hasSubMenu, const juce::String& text,
                            const juce::String& shortcut, const juce::Drawable* icon,
                            const juce::Colour* textColour) override;
    void drawPopupMenuSectionHeaderWithOptions (juce::Graphics&, const juce::Rectangle<int>& area,
                                                const juce::String& name, const juce::PopupMenu::Options&) override;
    void drawPopupMenuUpDownArrow (juce::Graphics&, int width, int height, bool up) override;
    void getIdealPopupMenuItemSize (const juce::String& text, bool separator, int standardHeight, int& width,
                                    int& height) override;
    juce::Font getPopupMenuFont() override;
    int getPopupMenuBorderSize() override;
    juce::Component* getParentComponentForMenuOptions (const juce::PopupMenu::Options& options) override;

    juce::Rectangle<int> getTooltipBounds (const juce::String& text, juce::Point<int> position,
                                           juce::Rectangle<int> parentArea) override;
    void drawTooltip (juce::Graphics&, const juce::String& text, int width, int height) override;

    juce::AlertWindow* createAlertWindow (const juce::String& title, const juce::String& message,
                                          const juce::String& button1, const juce::String& button2,
                                          const juce::String& button3, juce::MessageBoxIconType, int numButtons,
                                          juce::Component* associated) override;
    void drawAlertBox (juce::Graphics&, juce::AlertWindow&, const juce::Rectangle<int>& textArea,
                       juce::TextLayout&) override;
    int getAlertWindowButtonHeight() override;
    juce::Font getAlertWindowTitleFont() override;
    juce::Font getAlertWindowMessageFont() override;
    juce::Font getAlertWindowFont() override;

    void fillTextEditorBackground (juce::Graphics&, int width, int height, juce::TextEditor&) override;
    void drawTextEditorOutline (juce::Graphics&, int width, int height, juce::TextEditor&) override;
    void drawLabel (juce::Graphics&, juce::Label&) override;
    juce::Font getLabelFont (juce::Label&) override;

    void drawScrollbar (juce::Graphics&, juce::ScrollBar&, int x, int y, int width, int height, bool vertical,
                        int thumbStart, int thumbSize, bool mouseOver, bool mouseDown) override;
    int getDefaultScrollbarWidth() override;
    int getMinimumScrollbarThumbSize (juce::ScrollBar&) override;

    void drawTableHeaderBackground (juce::Graphics&, juce::TableHeaderComponent&) override;
    void drawTableHeaderColumn (juce::Graphics&, juce::TableHeaderComponent&, const juce::String& name, int columnId,
                                int width, int height, bool mouseOver, bool mouseDown, int columnFlags) override;
    void drawTreeviewPlusMinusBox (juce::Graphics&, const juce::Rectangle<float>& area, juce::Colour background,
                                   bool open, bool mouseOver) override;

    juce::Button* createFileBrowserGoUpButton() override;
    void layoutFileBrowserComponent (juce::FileBrowserComponent&, juce::DirectoryContentsDisplayComponent*,
                                     juce::FilePreviewComponent*, juce::ComboBox* path, juce::TextEditor* name,
                                     juce::Button* goUp) override;
    void drawFileBrowserRow (juce::Graphics&, int width, int height, const juce::File&, const juce::String& name,
                             juce::Image* icon, const juce::String& size, const juce::String& time, bool directory,
                             bool selected, int item, juce::DirectoryContentsDisplayComponent&) override;
    const juce::Drawable* getDefaultFolderImage() override;
    const juce::Drawable* getDefaultDocumentFileImage() override;

    int getTabButtonBestWidth (juce::TabBarButton&, int depth) override;
    void drawTabButton (juce::TabBarButton&, juce::Graphics&, bool mouseOver, bool mouseDown) override;
    void drawTabAreaBehindFrontButton (juce::TabbedButtonBar&, juce::Graphics&, int width, int height) override;
    void drawGroupComponentOutline (juce::Graphics&, int width, int height, const juce::String& text,
                                    const juce::Justification&, juce::GroupComponent&) override;
    void drawCornerResizer (juce::Graphics&, int width, int height, bool mouseOver, bool dragging) override;
    void drawStretchableLayoutResizerBar (juce::Graphics&, int width, int height, bool vertical, bool mouseOver,
                                          bool dragging) override;
    void drawProgressBar (juce::Graphics&, juce::ProgressBar&, int width, int height, double progress,
                          const juce::String& text) override;
    void drawCallOutBoxBackground (juce::CallOutBox&, juce::Graphics&, const juce::Path&, juce::Image& cached) override;

    void drawDocumentWindowTitleBar (juce::DocumentWindow&, juce::Graphics&, int width, int height, int titleX,
                                     int titleW, const juce::Image* icon, bool textOnLeft) override;
    juce::Button* createDocumentWindowButton (int kind) override;
    void positionDocumentWindowButtons (juce::DocumentWindow&, int x, int y, int width, int height,
                                        juce::Button* minimise, juce::Button* maximise, juce::Button* close,
                                        bool onLeft) override;

private:
    std::unique_ptr<juce::Drawable> folderImage;
    std::unique_ptr<juce::Drawable> documentImage;
};

/** Whose child a menu of this component is to be: the plug-in's window, so that the menu has its zoom and stays in it.
 */
juce::Component* menuParentOf (juce::Component& component);

/** The one look-and-feel of all windows of this process, held by `juce::SharedResourcePointer<MVSharedLookAndFeel>` in
   the component that shows itself first. While it lives it is also the toolkit's default, so that menus, tooltips and
   alert boxes without a parent wear it; the toolkit is linked into this program alone, so no one else is touched.
    Message thread. */
struct MVSharedLookAndFeel
{
    MVSharedLookAndFeel();
    ~MVSharedLookAndFeel();

    MVLookAndFeel look;
};

} // namespace morvanelab
