// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVDataAnimator.h"

#include "dsp/MVPcmAnalyzer.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace morvanelab
{

namespace
{

constexpr double silenceLevel = 1.0e-5;    // -100 dB
constexpr juce::uint32 silenceAfter = 700; // milliseconds
constexpr int lookInterval = 250;          // milliseconds
constexpr int waitStep = 9;                // milliseconds
constexpr int mostBlocksATick = 256;
constexpr double restForWork = 2.0;
constexpr double longestRest = 1000.0; // milliseconds

} // namespace

MVDataAnimator::BusyScope::BusyScope (MVDataAnimator& display, const double* samples, int byteCount)
    : owner (display), count (samples != nullptr && byteCount > 0 ? byteCount / static_cast<int> (sizeof (double)) : 0),
      threadBefore (display.busyThread.exchange (std::this_thread::get_id()))
{
    ++owner.busyCount;
    if (MVPcmAnalyzer::peak (samples, count) > silenceLevel)
    {
        owner.lastSignal = juce::Time::getMillisecondCounter();
        owner.hadSignal = true;
    }
}

MVDataAnimator::BusyScope::~BusyScope()
{
    owner.busyThread = threadBefore;
    --owner.busyCount;
}

MVDataAnimator::MVDataAnimator (int interval, Delivery how, int newestSamples)
    : timerInterval (std::max (interval, shortestInterval)), delivery (how),
      window (how == Delivery::newest ? static_cast<std::size_t> (std::max (newestSamples, 1)) : 0)
{
    setOpaque (true);
}

MVDataAnimator::~MVDataAnimator() { MVDataAnimator::attachSource (false); }

void MVDataAnimator::attachSource (bool on)
{
    setRunning (false);
    if (source != nullptr)
        source->attachSource (on);
}

void MVDataAnimator::setRunning (bool on)
{
    running = on;
    if (on)
    {
        startTimer (timerInterval);
        return;
    }
    stopTimer();
    while (busyCount > 0 && busyThread.load() != std::this_thread::get_id())
        juce::Thread::sleep (waitStep);
}

void MVDataAnimator::setSource (MVDisplaySource* newSource)
{
    if (newSource == source)
        return;
    attachSource (false);
    source = newSource;
    if (std::exchange (active, false))
        activityChanged (false);
    updateActivity();
}

void MVDataAnimator::setSampleRate (double hz)
{
    if (! (hz > 0.0) || ! std::isfinite (hz) || hz == rate)
        return;
    rate = hz;
    sampleRateChanged();
    repaint();
}

bool MVDataAnimator::isSilent() const
{
    return ! hadSignal || juce::Time::getMillisecondCounter() - lastSignal > silenceAfter;
}

void MVDataAnimator::showingChanged (bool showing)
{
    // What no one tells of, such as a component that is moved away from before the display, is found by looking.
    if (showing)
        look.startTimer (lookInterval);
    else
        look.stopTimer();
    updateActivity();
}

bool MVDataAnimator::overlapsOthers (bool wholeAndOpaque) const
{
    const juce::Component* below = this;
    for (const auto* parent = getParentComponent(); parent != nullptr; parent = parent->getParentComponent())
    {
        const auto area = parent->getLocalArea (this, getLocalBounds());
        for (int i = parent->getIndexOfChildComponent (below) + 1; i < parent->getNumChildComponents(); ++i)
        {
            const auto* other = parent->getChildComponent (i);
            const auto bounds = other->getBoundsInParent();
            if (! other->isVisible() || bounds.isEmpty())
                continue;
            if (wholeAndOpaque ? other->isOpaque() && bounds.contains (area) : bounds.intersects (area))
                return true;
        }
        below = parent;
    }
    return false;
}

bool MVDataAnimator::isCovered() const { return overlapsOthers (true); }

bool MVDataAnimator::isTouchedByOthers() const { return overlapsOthers (false); }

bool MVDataAnimator::shouldBeActive() const
{
    return source != nullptr && isShowing() && getWidth() > 0 && getHeight() > 0 && ! isCovered();
}

void MVDataAnimator::updateActivity()
{
    const bool wanted = shouldBeActive();
    if (wanted == active)
        return;
    active = wanted;
    windowFill = 0;
    attachSource (active);
    if (active)
        setRunning (true);
    activityChanged (active);
}

void MVDataAnimator::tick()
{
    updateActivity();
    if (! active)
        return;

    int added = 0;
    for (int i = 0; i < mostBlocksATick; ++i)
    {
        const int frames = source->pull (block.data());
        if (frames <= 0)
            break;
        if (delivery == Delivery::everyBlock)
        {
            processData (block.data(), frames * static_cast<int> (sizeof (double)));
            continue;
        }
        const auto size = static_cast<int> (window.size());
        const int taken = std::min (frames, size);
        std::copy (window.begin() + taken, window.end(), window.begin());
        std::copy (block.begin() + (frames - taken), block.begin() + frames, window.end() - taken);
        windowFill = std::min (windowFill + taken, size);
        added += taken;
    }
    if (added > 0)
        deliverNewest();

    if (std::exchange (wasSilent, isSilent()) != wasSilent)
        repaint();
}

void MVDataAnimator::timerCallback()
{
    const double begin = juce::Time::getMillisecondCounterHiRes();
    tick();
    afterTick();
    const double work = juce::Time::getMillisecondCounterHiRes() - begin + std::exchange (paintMilliseconds, 0.0);
    const int interval = std::max (timerInterval, static_cast<int> (std::min (work * restForWork, longestRest)));
    if (running && interval != getTimerInterval())
        startTimer (interval);
}

void MVDataAnimator::paint (juce::Graphics& graphics)
{
    const double begin = juce::Time::getMillisecondCounterHiRes();
    paintDisplay (graphics);
    paintMilliseconds += juce::Time::getMillisecondCounterHiRes() - begin;
}

void MVDataAnimator::deliverNewest()
{
    if (windowFill == static_cast<int> (window.size()))
        processData (window.data(), windowFill * static_cast<int> (sizeof (double)));
}

} // namespace morvanelab
