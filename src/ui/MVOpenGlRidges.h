// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVOrbitView.h"
#include "ui/MVRidgeColours.h"
#include "ui/MVSpectrumHistory.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <atomic>
#include <functional>
#include <memory>

namespace morvanelab
{

/** Draws the 3d spectrogram through OpenGL: a component that lies over the display while a context is attached to it.

    Threads: all operations on the message thread. The toolkit's rendering thread draws from a copy of the scene that it
    takes under a short lock, and never waits for the message thread. */
class MVOpenGlRidges : public juce::Component
{
public:
    /** Called on the rendering thread after each picture. */
    explicit MVOpenGlRidges (std::function<void()> pictureDrawn);
    ~MVOpenGlRidges() override;

    /** Makes a context while the component is showing; without effect after a failure. Where the processor would do the
        drawing, that counts as a failure unless software is true. */
    void attach (bool software);
    /** Gives the context back; waits for a picture that is being drawn. */
    void detach();
    bool isAttached() const;
    /** True once a context has drawn a picture, until it is detached. */
    bool isDrawing() const;
    /** True when no context came up within the time limit, it is too old, or its shaders were refused: drawing goes on
        without OpenGL. Looks at the clock, so ask now and then. */
    bool hasFailed();
    int numPictures() const;

    /** What the next picture shows: the background as it lies behind the ridges, in pixels of the screen, and the
       ridges themselves. The background's pixels must not be changed afterwards. Asks for the picture. */
    void show (const juce::Image& background, const MVSpectrumHistory& history, const MVOrbitView& view,
               const MVRidgeColours& colours, float lineWidth);

    /** Asks that the next picture be kept, and takes what was kept; an invalid image until then. */
    void keepNextPicture();
    juce::Image takeKeptPicture();

private:
    class Renderer;
    class WindowGuard;

    std::unique_ptr<Renderer> renderer;
    juce::Component guard;
    juce::uint32 attachedAt = 0;
    bool failed = false;
};

} // namespace morvanelab
