// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVRange.h"
#include "foundation/MVVector.h"

#include <cstdint>

namespace morvanelab
{

/** A 48-bit linear congruential source (multiplier 25214903917, increment 11), one owner thread at a time. */
class MVRandom
{
public:
    /** Starts from the clock, or from the state given to startAllFrom. */
    MVRandom();
    explicit MVRandom (std::uint64_t startState) : state (startState & stateMask) {}
    virtual ~MVRandom() = default;
    virtual const char* className() const { return "MVRandom"; }

    /** A process-wide source made at first use; for the message thread. */
    static MVRandom& instance();

    /** From now on every new source starts from this state, so that what it drives is the same each time.
        Sources that exist already are left alone. Any thread. */
    static void startAllFrom (std::uint64_t startState);
    /** New sources start from the clock again. */
    static void startAllFromClock();

    /** Starts again, by the rule of the constructor. */
    void restart();
    void setState (std::uint64_t newState) { state = newState & stateMask; }
    std::uint64_t getState() const { return state; }

    std::uint32_t next32()
    {
        state = (state * 25214903917ULL + 11ULL) & stateMask;
        return static_cast<std::uint32_t> (state >> 16);
    }

    bool nextBit() { return (next32() & 1) != 0; }
    /** -1 if the next bit is set, else 1. */
    int nextSign() { return nextBit() ? -1 : 1; }
    /** Uniform in 0 to 1. */
    double nextUniform() { return static_cast<double> (next32() & 0x7FFFFFFF) * scale; }
    /** 0 to 127. */
    int nextByte7() { return static_cast<int> (next32() & 127); }
    /** low to low + span; a span below 1 gives low and leaves the source where it is. */
    int nextInRange (const MVIRange& range);
    /** low to low + span. */
    double nextInFloatRange (const MVFRange& range)
    {
        return static_cast<double> (next32() & 0x7FFFFFFF) * range.span * scale + range.low;
    }
    /** True with that probability; 1 and more is always, 0 and below never, both without a draw. */
    bool chance (double probability);
    /** An index, chosen in proportion to its weight; -1 for no weights. */
    int weightedChoice (const MVVector<double>* weights);
    /** Inverts one bit of the buffer. */
    void flipRandomBit (void* buffer, int size);
    void zeroBuffer (void* buffer, int size);

private:
    static constexpr std::uint64_t stateMask = 0xFFFFFFFFFFFFULL;
    /** 1 / 2147483647, bit for bit 0x3E00000000200000: it scales every stored noise. */
    static constexpr double scale = 1.0 / 2147483647.0;

    std::uint64_t state;
};

} // namespace morvanelab
