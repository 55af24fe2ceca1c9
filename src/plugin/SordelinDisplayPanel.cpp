// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinDisplayPanel.h"

#include "plugin/SordelinMainComponent.h"
#include "plugin/SordelinWidgets.h"
#include "ui/MVPLLWaveformDisplay.h"
#include "ui/MVSpectrogram3d.h"
#include "ui/MVSpectrogramDisplay.h"
#include "ui/MVSpectrumDisplay.h"
#include "ui/MVStrangeAttractor.h"
#include "ui/MVWaveformDisplay.h"

#include <array>

namespace morvanelab
{

namespace
{

constexpr int viewButtonWidth = 44;
constexpr int viewButtonHeight = 18;

template <typename Display>
std::unique_ptr<MVDataAnimator> makeDisplay()
{
    return std::make_unique<Display>();
}

struct ViewItem
{
    int menuId;
    const char* text;
    int mode;
    std::unique_ptr<MVDataAnimator> (*make)(); ///< null for the picture of the patch
};

using Main = SordelinMainComponent;

constexpr std::array<ViewItem, 7> viewItems { {
    { 42, "Metadata Image", Main::visualiserImage, nullptr },
    { 43, "Scroll Waveform", Main::visualiserScroll, &makeDisplay<MVWaveformDisplay> },
    { 44, "Phase Lock Waveform", Main::visualiserPhaseLock, &makeDisplay<MVPLLWaveformDisplay> },
    { 45, "Spectrum", Main::visualiserSpectrum, &makeDisplay<MVSpectrumDisplay> },
    { 46, "Spectrogram", Main::visualiserSpectrogram, &makeDisplay<MVSpectrogramDisplay> },
    { 47, "3d Spectrogram", Main::visualiserSpectrogram3d, &makeDisplay<MVSpectrogram3d> },
    { 48, "Strange Attractor", Main::visualiserAttractor, &makeDisplay<MVStrangeAttractor> },
} };

} // namespace

SordelinDisplayPanel::SordelinDisplayPanel (SordelinMainComponent& mainComponent)
    : main (mainComponent), source (mainComponent.getDisplayFeed())
{
    setComponentID ("DISPLAY");
    setUpControl (*this, viewButton, "View Menu");
    viewButton.onClick = [this] { showViewMenu(); };
    refresh();
}

SordelinDisplayPanel::~SordelinDisplayPanel() { source.attachSource (false); }

void SordelinDisplayPanel::refresh()
{
    if (main.getVisualiser() != visualiserMode)
        makeVisualiser (main.getVisualiser());
    showPatch();
}

void SordelinDisplayPanel::makeVisualiser (int mode)
{
    visualiser.reset();
    visualiserMode = mode;
    for (const auto& item : viewItems)
        if (item.mode == mode && item.make != nullptr)
        {
            auto display = item.make();
            display->setSource (&source);
            visualiser = std::move (display);
        }
    if (visualiser == nullptr)
        visualiser = std::make_unique<MVMetaDataImageView>();
    visualiser->setComponentID ("VISUALISER " + juce::String (mode));
    addAndMakeVisible (*visualiser, 0);
    viewButton.toFront (false);
    resized();
}

void SordelinDisplayPanel::showPatch()
{
    if (auto* display = dynamic_cast<MVDataAnimator*> (visualiser.get()))
        main.withEngine ([display] (MVRenderEngine& engine)
                         { display->setSampleRate (engine.getFormat().engineSampleRate); });
    if (auto* picture = dynamic_cast<MVMetaDataImageView*> (visualiser.get()))
    {
        const auto image = main.getPatchImage();
        picture->setImage (image != nullptr ? juce::ImageFileFormat::loadFrom (image->data(), image->size())
                                            : juce::Image());
        const auto notes = main.getPatchNotes();
        const auto text = [] (const std::string& utf8) { return juce::String::fromUTF8 (utf8.c_str()); };
        picture->setTexts (text (notes.name), text (notes.author), text (notes.description), text (notes.genre));
    }
}

void SordelinDisplayPanel::showViewMenu()
{
    juce::PopupMenu menu;
    for (const auto& item : viewItems)
        menu.addItem (item.menuId, item.text, true, item.mode == visualiserMode);
    menu.showMenuAsync (
        juce::PopupMenu::Options().withTargetComponent (viewButton).withParentComponent (getParentComponent()),
        [panel = juce::Component::SafePointer<SordelinDisplayPanel> (this)] (int chosen)
        {
            for (const auto& item : viewItems)
                if (panel != nullptr && item.menuId == chosen)
                    panel->main.setVisualiser (item.mode);
        });
}

void SordelinDisplayPanel::resized()
{
    if (visualiser != nullptr)
        visualiser->setBounds (getLocalBounds());
    viewButton.setBounds (3, 3, viewButtonWidth, viewButtonHeight);
}

} // namespace morvanelab
