// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>

namespace morvanelab
{

class MVSignalFeed;

/** Where a display gets its samples from: the consumer's end of what the audio thread hands over. Message thread. */
class MVDisplaySource
{
public:
    /** Samples of a block at most. */
    static constexpr int maxFrames = 256;

    virtual ~MVDisplaySource() = default;

    /** Switches the flow on or off: while off nothing is gathered. Switching on begins with an empty queue. */
    virtual void attachSource (bool on) = 0;
    /** Takes the oldest block waiting into out, room for maxFrames samples, and returns how many it has; 0 when none
        is left. Never waits. */
    virtual int pull (double* out) = 0;
};

/** The source that empties a signal feed. The feed outlives it. */
class MVFeedDisplaySource : public MVDisplaySource
{
public:
    explicit MVFeedDisplaySource (MVSignalFeed& feedToUse) : feed (feedToUse) {}

    void attachSource (bool on) override;
    int pull (double* out) override;

private:
    MVSignalFeed& feed;
};

} // namespace morvanelab
