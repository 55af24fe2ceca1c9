// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVOpenGlRidges.h"

#include "ui/MVOpenGlProbe.h"
#include "ui/MVOpenGlRenderer.h"

namespace morvanelab
{

namespace
{

constexpr juce::uint32 timeLimit = 3000; // milliseconds from the attachment to the first picture

} // namespace

/** The renderer with its context; a type of its own so that OpenGL's headers stay in two files. */
class MVOpenGlRidges::Renderer
{
public:
    explicit Renderer (std::function<void()> pictureDrawn) : drawing (std::move (pictureDrawn))
    {
        context.setRenderer (&drawing);
        // The rendering thread would wait for the message thread to paint components.
        context.setComponentPaintingEnabled (false);
    }

    ~Renderer() { context.detach(); }

    void attachTo (juce::Component& component, bool smooth)
    {
        juce::OpenGLPixelFormat format (8, 0, 0, 0);
        format.multisamplingLevel = smooth ? 4 : 0;
        context.setPixelFormat (format);
        context.setMultisamplingEnabled (smooth);
        drawing.begin();
        context.attachTo (component);
    }

    MVOpenGlRenderer drawing;
    juce::OpenGLContext context;
};

/** Gives the context back just before the window below it goes. No listener is told then, and a context that outlived
    its window would close one that is no longer there, at which the X server's error ends the process. */
class MVOpenGlRidges::WindowGuard : public juce::CachedComponentImage
{
public:
    explicit WindowGuard (MVOpenGlRidges& component) : owner (component) {}

    void paint (juce::Graphics&) override {}
    bool invalidateAll() override { return false; }
    bool invalidate (const juce::Rectangle<int>&) override { return false; }
    void releaseResources() override { owner.detach(); }

private:
    MVOpenGlRidges& owner;
};

MVOpenGlRidges::MVOpenGlRidges (std::function<void()> pictureDrawn)
    : renderer (std::make_unique<Renderer> (std::move (pictureDrawn)))
{
    setOpaque (true);
    setInterceptsMouseClicks (false, false);
    guard.setCachedComponentImage (new WindowGuard (*this));
    addChildComponent (guard);
}

MVOpenGlRidges::~MVOpenGlRidges()
{
    guard.setCachedComponentImage (nullptr);
    detach();
}

void MVOpenGlRidges::attach (bool software)
{
    if (failed || isAttached() || ! isShowing())
        return;
    const auto kind = openGlKind();
    if (kind == OpenGlKind::none || (kind == OpenGlKind::software && ! software))
    {
        failed = true;
        return;
    }
    attachedAt = juce::Time::getMillisecondCounter();
    renderer->attachTo (*this, kind == OpenGlKind::hardware);
}

void MVOpenGlRidges::detach() { renderer->context.detach(); }

bool MVOpenGlRidges::isAttached() const { return renderer->context.getTargetComponent() != nullptr; }

bool MVOpenGlRidges::isDrawing() const
{
    return isAttached() && renderer->drawing.state() == MVOpenGlRenderer::State::drawing;
}

bool MVOpenGlRidges::hasFailed()
{
    if (! failed && isAttached() && ! isDrawing())
        failed = renderer->drawing.state() == MVOpenGlRenderer::State::refused
                 || juce::Time::getMillisecondCounter() - attachedAt > timeLimit;
    return failed;
}

int MVOpenGlRidges::numPictures() const { return renderer->drawing.numPictures(); }

void MVOpenGlRidges::show (const juce::Image& background, const MVSpectrumHistory& history, const MVOrbitView& view,
                           const MVRidgeColours& colours, float lineWidth)
{
    renderer->drawing.setScene (background, history, view, colours, lineWidth);
    renderer->context.triggerRepaint();
}

void MVOpenGlRidges::keepNextPicture()
{
    renderer->drawing.keepNextPicture();
    renderer->context.triggerRepaint();
}

juce::Image MVOpenGlRidges::takeKeptPicture() { return renderer->drawing.takeKeptPicture(); }

} // namespace morvanelab
