// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinMainView.h"

#include "plugin/SordelinAboutBox.h"
#include "plugin/SordelinMainComponent.h"
#include "ui/MVColourPanel.h"
#include "ui/MVMidiMappingList.h"
#include "ui/MVX11Keyboard.h"

namespace morvanelab
{

namespace
{

// The window's fixed places, in pixels at 100 percent.
constexpr int rightColumn = 305;
constexpr int belowParameters = 45;
constexpr int besideKeyboard = 310;
constexpr int keyboardHeight = 43;
constexpr int presetBarFromRight = 244;
constexpr int presetBarTop = 3;
constexpr int edge = 5;
constexpr int stripHeight = 26;

constexpr int pollMilliseconds = 34;
constexpr int storeMilliseconds = 500; ///< after the last change of size
constexpr int tooltipDelay = 600;

/** 0 for a command that is none of ours. */
std::uint64_t pendingBit (int commandId)
{
    const int place = commandId - commandUpdateFromPatch;
    return place >= 0 && place < 64 ? std::uint64_t { 1 } << place : 0;
}

const juce::Colour noKeyboardColour { 0xFF969696 };

/** Tooltips wherever the pointer is: the toolkit shows none before it takes the process for the one in use, which in a
    host's window it does only after a click, and no longer once the host has the keyboard again. */
class HoverTips : public juce::TooltipWindow
{
public:
    using TooltipWindow::TooltipWindow;

    juce::String getTipFor (juce::Component& component) override
    {
        auto* const client = dynamic_cast<juce::TooltipClient*> (&component);
        const bool busy = juce::ModifierKeys::currentModifiers.isAnyMouseButtonDown()
                          || component.isCurrentlyBlockedByAnotherModalComponent();
        return client == nullptr || busy ? juce::String() : client->getTooltip();
    }
};

} // namespace

SordelinMainView::SordelinMainView (SordelinMainComponent& owner)
    : SordelinMidiMapping (owner), MVMidiMappingComponent (static_cast<SordelinMidiMapping&> (*this)), main (owner),
      menus (owner, *this), displayPanel (owner), midiPanel (owner, *this), ioPanel (owner),
      parameterPanel (owner, *this), presetBar (owner), keyboard (owner.getKeyboardState()),
      librarianModel (owner.getShelf().getBankManager(), owner.getPrompt()), librarian (librarianModel)
{
    setOpaque (true);
    shared->look.applyCustomColours (main.getSettings().getCustomLookAndFeel());
    sizeLimits.setSizeLimits (smallestWidth, smallestHeight, largestWidth, largestHeight);
    for (auto* panel : std::initializer_list<juce::Component*> { &displayPanel, &midiPanel, &ioPanel, &parameterPanel,
                                                                 &presetBar, &keyboard })
        addAndMakeVisible (panel);
    keyboard.setComponentID ("KEYBOARD");
    presetHeader.setComponentID ("PRESET HEADER");
    presetHeader.setFont (themeFont (fontHeights::small, MVFontWeight::semiBold).withExtraKerningFactor (0.08F));
    presetHeader.setColour (juce::Label::textColourId, themeColour (MVThemeColour::textDim));
    presetHeader.setJustificationType (juce::Justification::centredRight);
    presetHeader.setInterceptsMouseClicks (false, false);
    addAndMakeVisible (presetHeader);
    parameterPanel.onShowMappings = [this] { showMappings(); };
    onMappingChanged = [this] { midiPanel.refresh(); };
    makeButtons();
    makeLibrarian();
    addAndMakeVisible (corner);
    setTooltipsShown (main.getSettings().getShowHelp());

    main.getPrompt().setBoxMaker (
        [this] (SordelinPrompt::Box box)
        {
            // A box may arrive when the window it was meant for has just gone.
            if (isShowing())
                boxes.show (std::move (box));
            else
                box.done (false, {});
        });
    const auto stored = main.getSettings().getDimensions();
    setSize (stored.width > 0 ? stored.width : defaultWidth, stored.height > 0 ? stored.height : defaultHeight);
    setZoom (main.getSettings().getZoom());
    applyDimensionSettings (stored);
    updateFromPatch();
    startedUp = true;
    // Commands are posted from other threads through a weak reference, whose making is not meant for two threads.
    const juce::WeakReference<juce::Component> primed { this };
    main.setCommandSink (this);
}

SordelinMainView::~SordelinMainView()
{
    if (storeTimer.isTimerRunning())
        storeDimensions();
    main.setCommandSink (nullptr);
    main.getPrompt().setShowing (false);
    main.getPrompt().setBoxMaker (nullptr);
    boxes.declineAll();
    releaseChildCCReceivers();
    onMappingChanged = nullptr;
}

void SordelinMainView::makeButtons()
{
    setUpControl (*this, menuButton, "Show Options Menu");
    setUpControl (*this, helpButton, "Show Help Page");
    setUpControl (*this, librarianButton, "Show Patch Librarian");
    setUpControl (*this, previousButton, "Previous patch of the librarian's search");
    setUpControl (*this, nextButton, "Next patch of the librarian's search");
    setUpControl (*this, patchButton, "Choose a patch");
    menuButton.onClick = [this] { showMenuOf (menuButton, menus.makeOptionsMenu(), &SordelinMenus::chooseOption); };
    helpButton.onClick = [this] { showMenuOf (helpButton, menus.makeHelpMenu(), &SordelinMenus::chooseHelp); };
    librarianButton.onClick = [this] { librarian.isVisible() ? librarian.close() : showLibrarian(); };
    patchButton.onClick = [this] { showLibrarian(); };
    previousButton.onClick = [this] { librarian.loadPreviousPatch(); };
    nextButton.onClick = [this] { librarian.loadNextPatch(); };
}

void SordelinMainView::makeLibrarian()
{
    librarianModel.runAsking = [this] (std::function<void()> operation)
    { main.getPrompt().runAsking (MVBankMgrComponent::windowTitle, std::move (operation)); };
    librarianModel.onLoadedPatchMoved = [this] (const MVBankUuid& bank, int slot) { main.setPatchPlace (bank, slot); };
    librarian.onLoad = [this] { main.loadSelectedPatch(); };
    librarian.onLayoutChange = [this] { storeTimer.startTimer (storeMilliseconds); };
    addChildComponent (librarian);
    placeLibrarian();
}

void SordelinMainView::placeLibrarian()
{
    // Beside what chooses patches, which stays within reach.
    librarian.setBounds (
        juce::Rectangle<int> (rightColumn, 0, defaultWidth - besideKeyboard, defaultHeight)
            .withSizeKeepingCentre (MVBankMgrComponent::defaultWidth, MVBankMgrComponent::defaultHeight));
}

void SordelinMainView::showMenuOf (juce::Component& button, juce::PopupMenu menu, void (SordelinMenus::*chosen) (int))
{
    menu.showMenuAsync (juce::PopupMenu::Options().withTargetComponent (button).withParentComponent (this),
                        [view = juce::Component::SafePointer<SordelinMainView> (this), chosen] (int item)
                        {
                            if (view != nullptr)
                                (view->menus.*chosen) (item);
                        });
}

void SordelinMainView::openPanel (std::unique_ptr<juce::Component> content, bool takesKeys)
{
    overlay.show (*this, std::move (content), takesKeys);
}

void SordelinMainView::showAbout() { openPanel (std::make_unique<SordelinAboutBox>(), true); }

void SordelinMainView::closePanel() { overlay.close(); }

void SordelinMainView::showMappings()
{
    openPanel (std::make_unique<MVMidiMappingList> (*this, [this] (const MVKnob& knob)
                                                    { return parameterPanel.nameOf (knob); }),
               false);
}

void SordelinMainView::showColours()
{
    auto panel = std::make_unique<MVColourPanel>();
    panel->setComponentID ("COLOUR PANEL");
    panel->setSize (MVColourPanel::usualWidth, MVColourPanel::usualHeight);
    panel->onChange = [this]
    {
        main.getSettings().setCustomLookAndFeel (MVLookAndFeel::customColoursAsXml());
        applyColours();
    };
    openPanel (std::move (panel), false);
}

void SordelinMainView::applyColours()
{
    shared->look.refreshColours();
    presetHeader.setColour (juce::Label::textColourId, themeColour (MVThemeColour::textDim));
    sendLookAndFeelChange();
    repaint();
}

void SordelinMainView::showLibrarian() { librarian.open(); }

void SordelinMainView::setTooltipsShown (bool shown)
{
    main.getSettings().setShowHelp (shown);
    tooltips = shown ? std::make_unique<HoverTips> (this, tooltipDelay) : nullptr;
}

void SordelinMainView::setZoom (int percent)
{
    main.getSettings().setZoom (percent);
    setTransform (juce::AffineTransform::scale (static_cast<float> (getZoom()) / 100.0F));
}

int SordelinMainView::getZoom() const { return main.getSettings().getZoom(); }

SordelinSettings::Dimensions SordelinMainView::getDimensions() const
{
    SordelinSettings::Dimensions dimensions;
    dimensions.width = getWidth();
    dimensions.height = getHeight();
    dimensions.librarianShown = librarian.isVisible();
    dimensions.librarian = librarian.createSettings();
    return dimensions;
}

void SordelinMainView::applyDimensionSettings (const SordelinSettings::Dimensions& dimensions)
{
    if (dimensions.width > 0 && dimensions.height > 0)
        setSize (juce::jlimit (smallestWidth, largestWidth, dimensions.width),
                 juce::jlimit (smallestHeight, largestHeight, dimensions.height));
    if (dimensions.librarian != nullptr)
        librarian.applySettings (*dimensions.librarian);
    if (dimensions.librarianShown)
        showLibrarian();
}

void SordelinMainView::takeHostSize (int width, int height)
{
    const int zoom = getZoom();
    setSize (juce::jlimit (smallestWidth, largestWidth, width * 100 / zoom),
             juce::jlimit (smallestHeight, largestHeight, height * 100 / zoom));
}

void SordelinMainView::storeDimensions()
{
    storeTimer.stopTimer();
    main.getSettings().setDimensions (getDimensions());
}

void SordelinMainView::postSordelinCommand (int commandId)
{
    // A host may change patches faster than they can be shown: a command that still waits says it all.
    const auto bit = pendingBit (commandId);
    if (bit == 0 || (pendingCommands.fetch_or (bit) & bit) == 0)
        postCommandMessage (commandId);
}

void SordelinMainView::handleCommandMessage (int commandId)
{
    pendingCommands.fetch_and (~pendingBit (commandId));
    switch (commandId)
    {
        case commandUpdateFromPatch:
            updateFromPatch();
            break;
        case commandStartUpComplete:
            completeStartUp();
            break;
        case commandUpdateChangedSliders:
            parameterPanel.updateChangedSliders();
            break;
        case commandRefreshLayout:
            resized();
            break;
        case commandApplyAppValues:
            applyDimensionSettings (main.getSettings().getCustomAppValues());
            break;
        case commandRepaintParameters:
            parameterPanel.repaint();
            break;
        case commandRefreshBankList:
            librarian.handleCommandMessage (MVBankMgrComponent::commandEngineReady);
            break;
        case commandUpdatePresets:
            presetBar.refresh();
            break;
        case commandShowVisualiser:
        case commandShowPatchImage:
            displayPanel.refresh();
            break;
        case commandUpdateSettings:
            midiPanel.refresh();
            break;
        default:
            repaint();
            break;
    }
}

void SordelinMainView::completeStartUp()
{
    librarian.handleCommandMessage (MVBankMgrComponent::commandEngineReady);
    presetBar.refresh();
    midiPanel.refresh();
    updateFromPatch();
}

void SordelinMainView::updateFromPatch()
{
    const auto& table = main.getParameterTable();
    const auto name = main.getPatchName();
    patchButton.setButtonText (name.isEmpty() ? "-----" : name);
    displayPanel.refresh();
    ioPanel.refresh();
    ioPanel.setInputUsed (table.readsHostInput());
    parameterPanel.updateFromPatch();
    const bool playable = table.isPatchLoaded() && table.hasKeyboardInput();
    keyboard.setEnabled (playable);
    keyboard.setVisible (playable);
    librarian.setLoadedPatch (main.getPatchBank(), main.getPatchSlot());
    resized();
    repaint();
}

void SordelinMainView::visibilityChanged()
{
    MVMidiMappingComponent::visibilityChanged();
    tellShowing();
}

void SordelinMainView::parentHierarchyChanged()
{
    MVMidiMappingComponent::parentHierarchyChanged();
    tellShowing();
}

void SordelinMainView::tellShowing()
{
    const bool showing = isShowing();
    main.getPrompt().setShowing (showing);
    if (showing == pollTimer.isTimerRunning())
        return;
    if (showing)
        pollTimer.startTimer (pollMilliseconds);
    else
        leaveNothingOpen();
}

void SordelinMainView::showAsNew()
{
    librarian.close();
    setTooltipsShown (main.getSettings().getShowHelp());
    shared->look.applyCustomColours (main.getSettings().getCustomLookAndFeel());
    applyColours();
    setSize (defaultWidth, defaultHeight);
    placeLibrarian();
    setZoom (main.getSettings().getZoom());
    completeStartUp();
}

bool SordelinMainView::areCtrlAltShiftHeld()
{
    const auto held = x11::getHeldModifiers();
    return held.isCtrlDown() && held.isAltDown() && held.isShiftDown();
}

void SordelinMainView::poll()
{
    midiPanel.poll();
    ioPanel.poll();
    hostKeyboard.poll();
    if (! std::exchange (resetOffered, true) && areResetKeysHeld())
        main.offerReset ([this] { showAsNew(); });
}

void SordelinMainView::leaveNothingOpen()
{
    pollTimer.stopTimer();
    hostKeyboard.forget();
    juce::PopupMenu::dismissAllActiveMenus(); // those with a window of their own would stay
    parameterPanel.endGestures();
    cancelDrag();
    boxes.declineAll();
    overlay.close();
    if (storeTimer.isTimerRunning())
        storeDimensions();
}

void SordelinMainView::cancelDrag()
{
    if (! isDragAndDropActive())
        return;
    // The toolkit has no call for it, but its picture of what is dragged, the one child of that kind, takes Escape.
    for (auto* child : getChildren())
        if (child->isAlwaysOnTop() && child->getWantsKeyboardFocus())
        {
            child->keyPressed (juce::KeyPress (juce::KeyPress::escapeKey));
            return;
        }
}

void SordelinMainView::paint (juce::Graphics& graphics)
{
    graphics.fillAll (themeColour (MVThemeColour::windowBackground));
    drawIcon (graphics, MVIcon::wordmark, wordmarkArea.toFloat(), themeColour (MVThemeColour::accent));
    if (keyboard.isVisible())
        return;
    const auto area = keyboard.getBounds();
    graphics.setColour (noKeyboardColour);
    graphics.fillRect (area);
    graphics.setColour (themeColour (MVThemeColour::textOnKeyboardOff));
    graphics.setFont (themeFont (fontHeights::normal));
    constexpr int textInset = 10;
    graphics.drawText (main.getParameterTable().isPatchLoaded() ? "Loaded patch not keyboard enabled."
                                                                : "No patch loaded: choose one in the librarian.",
                       area.withTrimmedLeft (textInset), juce::Justification::centredLeft);
}

void SordelinMainView::paintOverChildren (juce::Graphics& graphics)
{
    if (! dropOffered)
        return;
    graphics.setColour (themeColour (MVThemeColour::accent));
    graphics.drawRect (getLocalBounds(), 3);
}

void SordelinMainView::resized()
{
    const int width = getWidth();
    const int height = getHeight();
    parameterPanel.setBounds (rightColumn, 0, width - besideKeyboard, height - belowParameters);
    presetBar.setBounds (width - presetBarFromRight, presetBarTop, SordelinPresetBar::width, SordelinPresetBar::height);
    constexpr int presetHeaderWidth = 70;
    presetHeader.setBounds (width - presetBarFromRight - presetHeaderWidth, 0, presetHeaderWidth,
                            metrics::sectionHeader);
    keyboard.setBounds (rightColumn, height - belowParameters + 1, width - besideKeyboard, keyboardHeight);
    layOutLeft ({ edge, 0, rightColumn - 2 * edge, height - 1 });
    constexpr int cornerSize = 14;
    corner.setBounds (width - cornerSize, height - cornerSize, cornerSize, cornerSize);
    overlay.setBounds (getLocalBounds());
    boxes.fit();
    librarian.setBounds (librarian.getBounds().constrainedWithin (getLocalBounds()));
    if (startedUp)
        storeTimer.startTimer (storeMilliseconds);
}

void SordelinMainView::layOutLeft (juce::Rectangle<int> area)
{
    auto top = area.removeFromTop (stripHeight + 2).reduced (0, 2);
    constexpr int helpWidth = 48;
    constexpr int menuWidth = 72;
    helpButton.setBounds (top.removeFromRight (helpWidth));
    top.removeFromRight (metrics::gap);
    menuButton.setBounds (top.removeFromRight (menuWidth));
    wordmarkArea = top.withTrimmedRight (metrics::gap).reduced (0, 1);

    auto patch = area.removeFromTop (stripHeight).reduced (0, 1);
    constexpr int arrowWidth = 26;
    constexpr int librarianWidth = 34;
    previousButton.setBounds (patch.removeFromLeft (arrowWidth));
    patch.removeFromLeft (2);
    librarianButton.setBounds (patch.removeFromRight (librarianWidth));
    patch.removeFromRight (2);
    nextButton.setBounds (patch.removeFromRight (arrowWidth));
    patch.removeFromRight (2);
    patchButton.setBounds (patch);

    constexpr int gap = 4;
    area.removeFromTop (gap);
    ioPanel.setBounds (area.removeFromBottom (SordelinIoPanel::height));
    area.removeFromBottom (gap);
    midiPanel.setBounds (area.removeFromBottom (SordelinMidiPanel::height));
    area.removeFromBottom (gap);
    displayPanel.setBounds (area);
}

bool SordelinMainView::isInterestedInDragSource (const SourceDetails& details)
{
    return details.description.toString() == MVBankItemSelectComponent::patchDragId;
}

void SordelinMainView::itemDragEnter (const SourceDetails&)
{
    dropOffered = true;
    repaint();
}

void SordelinMainView::itemDragExit (const SourceDetails&)
{
    dropOffered = false;
    repaint();
}

void SordelinMainView::itemDropped (const SourceDetails& details)
{
    itemDragExit (details);
    main.loadSelectedPatch();
}

} // namespace morvanelab
