// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVDisplaySource.h"
#include "ui/MVShowingWatch.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

namespace morvanelab
{

/** Base of the signal displays: takes blocks of samples from its source on a timer and redraws itself.

    A display looks after its own activity: it switches its source on and runs while it is on the screen, and switches
    it off while it is hidden, minimised, wholly covered by an opaque component or removed. Hence the owner only gives
    it a source and a place.

    Threads: the message thread throughout. The timer hands the samples over, so the message thread is also the one
    that delivers. `busyCount` lets another thread deliver with processData: setRunning (false) waits for it. */
class MVDataAnimator : public juce::Component, public juce::Timer
{
public:
    /** Shortest interval in milliseconds: no display draws more than 30 pictures a second. */
    static constexpr int shortestInterval = 34;

    /** How the samples that came in since the last tick are handed over. */
    enum class Delivery
    {
        everyBlock, ///< block by block as they were made
        newest      ///< once a tick, the newest samples in one piece
    };

    ~MVDataAnimator() override;

    /** Stops, waits until no delivery is under way, and switches the source on or off. The timer stays stopped until
        setRunning (true). */
    virtual void attachSource (bool on);
    /** Takes byteCount / 8 samples. One delivery at a time. */
    virtual void processData (const double* samples, int byteCount) = 0;
    /** True starts the timer. False stops it and sleeps in steps of 9 ms, without limit, until no delivery is under way
        on another thread; one that this very thread is in the middle of is not waited for. */
    virtual void setRunning (bool on);

    /** Where samples come from, null for nowhere; the one before is switched off. The source outlives the display or
        is taken away before it goes. */
    void setSource (MVDisplaySource* newSource);
    /** Sample rate in Hz that axes refer to; values at or below 0 and not-a-numbers are ignored. */
    void setSampleRate (double hz);
    double sampleRate() const { return rate; }

    bool isRunning() const { return running; }
    /** Whether nothing above -100 dB came in for a while. */
    bool isSilent() const;
    /** What the timer does: takes what the source has and hands it over, and sees whether the display is still on the
        screen. */
    void tick();
    /** Whether another component lies over this one: over all of it and opaque, or over any part. */
    bool isCovered() const;
    bool isTouchedByOthers() const;

    /** Ticks. The next time comes after the interval, or after twice the time that this tick and the last picture have
        taken if that is longer, but within a second: a large display on a slow machine has to leave the message
        thread, which is the host's, to others too. */
    void timerCallback() final;
    void paint (juce::Graphics& graphics) final;

protected:
    /** The interval in milliseconds, and for Delivery::newest how many samples are handed over at a time. */
    explicit MVDataAnimator (int interval, Delivery how = Delivery::everyBlock, int newestSamples = 0);

    /** Marks a delivery as under way for as long as it lives; the first thing in every processData. */
    class BusyScope
    {
    public:
        BusyScope (MVDataAnimator& display, const double* samples, int byteCount);
        ~BusyScope();
        BusyScope (const BusyScope&) = delete;

        /** Samples that may be read; 0 for a null pointer or a negative count. */
        int size() const { return count; }

    private:
        MVDataAnimator& owner;
        int count;
        std::thread::id threadBefore;
    };

    /** Draws the display; what it takes counts for the pace of timerCallback. */
    virtual void paintDisplay (juce::Graphics& graphics) = 0;
    /** Called on the timer after each tick. */
    virtual void afterTick() {}
    /** Called when the display has started or stopped being active. */
    virtual void activityChanged (bool /*isActive*/) {}
    /** Called when the sample rate has changed. */
    virtual void sampleRateChanged() {}

    int timerInterval; ///< milliseconds
    std::atomic<bool> running { false };
    std::atomic<std::int32_t> busyCount { 0 };
    MVDisplaySource* source = nullptr;

private:
    /** Looks now and then while the display shows. */
    class Look : public juce::Timer
    {
    public:
        explicit Look (MVDataAnimator& display) : owner (display) {}
        void timerCallback() override { owner.updateActivity(); }

    private:
        MVDataAnimator& owner;
    };

    bool overlapsOthers (bool wholeAndOpaque) const;
    bool shouldBeActive() const;
    void showingChanged (bool showing);
    void updateActivity();
    void deliverNewest();

    Delivery delivery;
    std::vector<double> window; ///< for Delivery::newest, the newest sample last
    int windowFill = 0;
    std::array<double, MVDisplaySource::maxFrames> block {};
    double rate = 44100.0;
    std::atomic<std::thread::id> busyThread {};
    std::atomic<std::uint32_t> lastSignal { 0 };
    std::atomic<bool> hadSignal { false };
    double paintMilliseconds = 0.0; ///< since the last tick
    bool wasSilent = true;
    bool active = false;
    Look look { *this };
    MVShowingWatch watch { *this, [this] (bool showing) { showingChanged (showing); } };
};

} // namespace morvanelab
