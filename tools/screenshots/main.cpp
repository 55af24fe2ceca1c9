// SPDX-License-Identifier: GPL-3.0-or-later
// sordelin-screenshots BANKS OUT: plays patches on the plug-in in a window and writes pictures of it.
#include "host/EditorWindow.h"
#include "screenshots/Studio.h"

#include <iostream>

namespace
{

using namespace morvanelab;

void chord (Studio& studio, bool on)
{
    for (const int key : { 48, 55, 64 })
        if (on)
            studio.core().getKeyboardState().noteOn (1, key, 0.4F);
        else
            studio.core().getKeyboardState().noteOff (1, key, 0.0F);
}

void shootParameters (Studio& studio, const juce::File& out)
{
    studio.shoot (out.getChildFile ("window-empty.png"));
    studio.core().setVisualiser (SordelinMainComponent::visualiserScroll);
    struct Shot
    {
        const char* patch;
        const char* file;
    };
    for (const auto& shot :
         { Shot { "Saw Stack", "window-3-parameters.png" }, Shot { "Choir Ah", "window-5-parameters.png" },
           Shot { "Sixteen Partials", "window-16-parameters.png" } })
    {
        studio.load (shot.patch);
        chord (studio, true);
        studio.run (2.0);
        studio.shoot (out.getChildFile (shot.file));
        chord (studio, false);
        studio.run (0.5);
    }
}

void shootDisplays (Studio& studio, const juce::File& out)
{
    struct View
    {
        int mode;
        const char* file;
    };
    using Core = SordelinMainComponent;
    studio.load ("Saw Stack");
    chord (studio, true);
    for (const auto& view :
         { View { Core::visualiserImage, "display-image.png" }, View { Core::visualiserScroll, "display-scroll.png" },
           View { Core::visualiserPhaseLock, "display-phase-lock.png" },
           View { Core::visualiserSpectrum, "display-spectrum.png" },
           View { Core::visualiserSpectrogram, "display-spectrogram.png" },
           View { Core::visualiserSpectrogram3d, "display-3d-spectrogram.png" },
           View { Core::visualiserAttractor, "display-attractor.png" } })
    {
        studio.core().setVisualiser (view.mode);
        studio.run (view.mode == Core::visualiserSpectrogram ? 12.0 : 4.0);
        studio.shoot (out.getChildFile (view.file));
    }
    studio.core().setVisualiser (Core::visualiserSpectrum);
    chord (studio, false);
}

void shootLearning (Studio& studio, const juce::File& out)
{
    studio.click ("MAP MIDI CC");
    auto& first = dynamic_cast<MVKnob&> (studio.find ("PARAMETER 1"));
    auto& second = dynamic_cast<MVKnob&> (studio.find ("PARAMETER 2"));
    studio.view().learn (first);
    studio.run (0.2);
    studio.send (juce::MidiMessage::controllerEvent (1, 74, 90));
    studio.run (0.5);
    studio.view().learn (second);
    studio.run (0.3);
    studio.shoot (out.getChildFile ("learn.png"));
    studio.click ("MAP MIDI CC");
    studio.view().clearAllMappedMidi();
}

void shootPanels (Studio& studio, const juce::File& out)
{
    studio.view().showLibrarian();
    studio.run (1.0);
    studio.shoot (out.getChildFile ("librarian.png"));
    studio.view().getLibrarian().close();
    studio.view().showAbout();
    studio.run (0.3);
    studio.shoot (out.getChildFile ("about.png"));
    studio.view().closePanel();
    studio.view().setZoom (200);
    studio.run (1.5);
    studio.shoot (out.getChildFile ("window-zoom-200.png"));
    studio.view().setZoom (100);
}

} // namespace

int main (int argc, char** argv)
{
    if (argc != 3)
    {
        std::cerr << "usage: sordelin-screenshots BANKS OUT\n";
        return 1;
    }
    try
    {
        const host::HostDisplay display;
        const juce::ScopedJuceInitialiser_GUI toolkit;
        const auto here = juce::File::getCurrentWorkingDirectory();
        const auto out = here.getChildFile (juce::String::fromUTF8 (argv[2]));
        Studio studio (here.getChildFile (juce::String::fromUTF8 (argv[1])));
        studio.core().setPlayMode (SordelinSettings::polyMode);
        shootParameters (studio, out);
        shootDisplays (studio, out);
        shootLearning (studio, out);
        shootPanels (studio, out);
        return 0;
    }
    catch (const std::exception& failure)
    {
        std::cerr << "sordelin-screenshots: " << failure.what() << "\n";
        return 2;
    }
}
