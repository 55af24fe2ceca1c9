// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinMainView.h"

#include "plugin/SordelinMainComponent.h"

namespace morvanelab
{

namespace
{

constexpr int margin = 8;
constexpr int headerHeight = 44;
constexpr int keyboardHeight = 64;
constexpr int labelHeight = 16;
constexpr int mostInOneRow = 4;
constexpr int slotsPerBank = 64;
constexpr int playHostNotesItem = 1;
constexpr int firstPatchItem = 100;

const juce::Colour backgroundColour { 0xFF24272C };
const juce::Colour panelColour { 0xFF2E3238 };
const juce::Colour titleColour { 0xFFE8A23D };
const juce::Colour textColour { 0xFFD9D6CF };
const juce::Colour trackColour { 0xFF4A5059 };

void colourKnob (juce::Slider& knob)
{
    knob.setColour (juce::Slider::rotarySliderFillColourId, titleColour);
    knob.setColour (juce::Slider::rotarySliderOutlineColourId, trackColour);
    knob.setColour (juce::Slider::thumbColourId, textColour);
}

} // namespace

SordelinMainView::SordelinMainView (SordelinMainComponent& owner) : main (owner), keyboard (owner.getKeyboardState())
{
    setOpaque (true);
    patchButton.setTooltip ("Choose a patch");
    patchButton.onClick = [this] { showPatchMenu(); };
    addAndMakeVisible (patchButton);

    colourKnob (volumeSlider);
    volumeSlider.setRange (0.0, 1.0);
    volumeSlider.setSkewFactorFromMidPoint (0.5);
    volumeSlider.setTooltip ("Output Volume");
    volumeSlider.onValueChange = [this] { main.setMasterVolume (volumeSlider.getValue()); };
    addAndMakeVisible (volumeSlider);
    makeParameterSliders();
    addAndMakeVisible (keyboard);
    for (auto* child : getChildren())
    {
        child->setWantsKeyboardFocus (false);
        child->setMouseClickGrabsKeyboardFocus (false);
    }

    setSize (defaultWidth, defaultHeight);
    updateFromPatch();
    // Commands are posted from other threads through a weak reference, whose making is not meant for two threads.
    const juce::WeakReference<juce::Component> primed { this };
    main.setCommandSink (this);
}

SordelinMainView::~SordelinMainView()
{
    main.setCommandSink (nullptr);
    main.getPrompt().setShowing (false);
}

void SordelinMainView::makeParameterSliders()
{
    for (int slot = 0; slot < hostParameterCount; ++slot)
    {
        const auto index = static_cast<std::size_t> (slot);
        auto slider =
            std::make_unique<juce::Slider> (juce::Slider::RotaryHorizontalVerticalDrag, juce::Slider::NoTextBox);
        auto* knob = slider.get();
        colourKnob (*knob);
        knob->setRange (0.0, 1.0);
        knob->onValueChange = [this, knob, slot] { main.setSlotValue (slot, knob->getValue()); };
        knob->onDragStart = [this, slot]
        {
            if (main.getHostCallbacks().beginGesture)
                main.getHostCallbacks().beginGesture (main.getParameterTable().patchToHost (slot));
        };
        knob->onDragEnd = [this, slot]
        {
            if (main.getHostCallbacks().endGesture)
                main.getHostCallbacks().endGesture (main.getParameterTable().patchToHost (slot));
        };
        auto label = std::make_unique<juce::Label>();
        label->setJustificationType (juce::Justification::centred);
        label->setColour (juce::Label::textColourId, textColour);
        label->setFont (juce::Font (12.0F));
        label->setMinimumHorizontalScale (0.7F);
        addChildComponent (*slider);
        addChildComponent (*label);
        paramSliders[index] = std::move (slider);
        paramLabels[index] = std::move (label);
    }
}

void SordelinMainView::handleCommandMessage (int commandId)
{
    switch (commandId)
    {
        case commandUpdateFromPatch:
        case commandStartUpComplete:
            updateFromPatch();
            break;
        case commandUpdateChangedSliders:
            updateChangedSliders();
            break;
        case commandRefreshLayout:
            resized();
            break;
        case commandRepaintParameters:
            repaint (parameterPanel);
            break;
        default:
            repaint();
            break;
    }
}

void SordelinMainView::updateFromPatch()
{
    const auto& table = main.getParameterTable();
    const auto patch = table.getPatch();
    activeCount = table.getActiveCount();
    const auto name = main.getPatchName();
    patchButton.setButtonText (name.isEmpty() ? "-----" : name);
    volumeSlider.setValue (main.getMasterVolume(), juce::dontSendNotification);

    for (int slot = 0; slot < hostParameterCount; ++slot)
    {
        const auto index = static_cast<std::size_t> (slot);
        const int hostIndex = table.patchToHost (slot);
        auto& slider = *paramSliders[index];
        slider.setVisible (hostIndex >= 0);
        slider.setEnabled (hostIndex >= 0);
        slider.setTooltip (main.getParameterText (hostIndex));
        slider.setValue (main.getSlotValue (slot), juce::dontSendNotification);
        paramLabels[index]->setVisible (hostIndex >= 0);
        paramLabels[index]->setText (main.getParameterName (hostIndex), juce::dontSendNotification);
    }
    keyboard.setEnabled (patch.loaded && patch.hasKeyboardInput);
    resized();
    repaint();
}

void SordelinMainView::updateChangedSliders()
{
    const auto changed = main.takeChangedSlots();
    for (unsigned slot = 0; slot < hostParameterCount; ++slot)
        if ((changed & (1U << slot)) != 0 && ! paramSliders[slot]->isMouseButtonDown())
            paramSliders[slot]->setValue (main.getSlotValue (static_cast<int> (slot)), juce::dontSendNotification);
}

void SordelinMainView::paint (juce::Graphics& graphics)
{
    graphics.fillAll (backgroundColour);
    graphics.setColour (titleColour);
    graphics.setFont (juce::Font (20.0F, juce::Font::bold));
    graphics.drawText ("SORDELIN", margin, 0, 140, headerHeight, juce::Justification::centredLeft);

    graphics.setColour (panelColour);
    graphics.fillRoundedRectangle (parameterPanel.toFloat(), 5.0F);
    graphics.setColour (textColour);
    graphics.setFont (juce::Font (12.0F));
    graphics.drawText ("PARAMETERS", parameterPanel.reduced (margin, 4), juce::Justification::topLeft);
    if (activeCount == 0)
        graphics.drawText ("(No Parameters)", parameterPanel, juce::Justification::centred);
}

void SordelinMainView::resized()
{
    auto area = getLocalBounds();
    auto header = area.removeFromTop (headerHeight);
    volumeSlider.setBounds (header.removeFromRight (headerHeight + margin).reduced (2));
    patchButton.setBounds (header.withTrimmedLeft (150).reduced (margin, 8));
    keyboard.setBounds (area.removeFromBottom (keyboardHeight + margin).reduced (margin, 0).withTrimmedBottom (margin));
    parameterPanel = area.reduced (margin, 0).withTrimmedBottom (margin);
    layOutParameters (parameterPanel.withTrimmedTop (labelHeight + 2));
}

void SordelinMainView::layOutParameters (juce::Rectangle<int> panel)
{
    if (activeCount == 0)
        return;
    const int rows = activeCount > mostInOneRow ? 2 : 1;
    const int columns = (activeCount + rows - 1) / rows;
    const int cellWidth = panel.getWidth() / columns;
    const int cellHeight = panel.getHeight() / rows;
    const double largest = panel.getHeight() * (rows == 1 ? 0.6 : 0.4);
    const int size = juce::roundToInt (0.9 * juce::jmin (static_cast<double> (cellWidth), largest));

    int position = 0;
    for (std::size_t slot = 0; slot < paramSliders.size(); ++slot)
    {
        if (! paramSliders[slot]->isEnabled())
            continue;
        auto cell = juce::Rectangle<int> (panel.getX() + position % columns * cellWidth,
                                          panel.getY() + position / columns * cellHeight, cellWidth, cellHeight);
        paramLabels[slot]->setBounds (cell.removeFromBottom (labelHeight));
        paramSliders[slot]->setBounds (cell.withSizeKeepingCentre (size, juce::jmin (size, cell.getHeight())));
        ++position;
    }
}

void SordelinMainView::showPatchMenu()
{
    juce::PopupMenu menu;
    const auto banks = main.getShelf().listBanks();
    for (std::size_t bank = 0; bank < banks.size(); ++bank)
    {
        juce::PopupMenu slots;
        for (int slot = 0; slot < slotsPerBank; ++slot)
        {
            const auto& name = banks[bank].slots[static_cast<std::size_t> (slot)];
            if (! name.empty())
                slots.addItem (firstPatchItem + static_cast<int> (bank) * slotsPerBank + slot,
                               juce::String::fromUTF8 (name.c_str()));
        }
        menu.addSubMenu (juce::String::fromUTF8 (banks[bank].title.c_str()), slots);
    }
    menu.addSeparator();
    menu.addItem (playHostNotesItem, "Play host notes", true, main.isPlayingHostNotes());
    menu.showMenuAsync (juce::PopupMenu::Options().withTargetComponent (patchButton).withParentComponent (this),
                        [view = juce::Component::SafePointer<SordelinMainView> (this)] (int item)
                        {
                            if (view != nullptr && item != 0)
                                view->choosePatch (item);
                        });
}

void SordelinMainView::choosePatch (int menuItem)
{
    if (menuItem == playHostNotesItem)
        main.setPlayHostNotes (! main.isPlayingHostNotes());
    else
        main.loadPatch ((menuItem - firstPatchItem) / slotsPerBank, (menuItem - firstPatchItem) % slotsPerBank);
}

void SordelinMainView::tellShowing() { main.getPrompt().setShowing (isShowing()); }

} // namespace morvanelab
