// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVOrbitView.h"
#include "ui/MVRidgeColours.h"
#include "ui/MVSpectrumHistory.h"

#include <juce_opengl/juce_opengl.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

namespace morvanelab
{

/** What the rendering thread does for MVOpenGlRidges. Needs OpenGL 2.1 with shaders of language 1.20.

    Threads: begin, setScene, the picture that is kept and the questions on the message thread, the rest on the
    rendering thread. */
class MVOpenGlRenderer : public juce::OpenGLRenderer
{
public:
    enum class State
    {
        waiting, ///< for a context
        drawing, ///< at least one picture is done
        refused  ///< the context cannot draw the scene
    };

    /** Called on the rendering thread after each picture. */
    explicit MVOpenGlRenderer (std::function<void()> pictureDrawn);
    ~MVOpenGlRenderer() override;

    /** Before a context is attached. */
    void begin() { progress = State::waiting; }
    State state() const { return progress; }
    int numPictures() const { return pictures; }
    void setScene (const juce::Image& background, const MVSpectrumHistory& history, const MVOrbitView& view,
                   const MVRidgeColours& colours, float lineWidth);
    void keepNextPicture() { keepWanted = true; }
    juce::Image takeKeptPicture();

    void newOpenGLContextCreated() override;
    void renderOpenGL() override;
    void openGLContextClosing() override;

private:
    /** Two corners a point of a ridge: on the ridge and at its foot. */
    struct Corner
    {
        float x;
        float y;
    };
    static constexpr int cornersARidge = MVSpectrumHistory::numPoints * 2;

    struct Scene
    {
        juce::Image background;
        bool backgroundIsNew = true;
        MVSpectrumHistory history;
        MVOrbitView view;
        MVRidgeColours colours;
        bool coloursAreNew = true;
        float lineWidth = 1.0F;
    };

    struct Resources;

    void takeScene();
    void uploadBackground();
    void uploadColours();
    void uploadRidges();
    void drawBackground();
    void drawRidges (float aspect);
    void keepPicture (int width, int height);

    std::function<void()> drawn;
    std::atomic<State> progress { State::waiting };
    std::atomic<int> pictures { 0 };
    std::atomic<bool> keepWanted { false };

    std::mutex lock; ///< guards the next scene and the kept picture
    Scene next;
    juce::Image kept;

    // The rendering thread's.
    Scene scene;
    std::unique_ptr<Resources> resources;
    std::vector<Corner> corners;
};

} // namespace morvanelab
