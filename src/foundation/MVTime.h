// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>

namespace morvanelab
{

/** The coarse clock behind object identities: wall time whose milliseconds pass through single precision. */
class MVTime
{
public:
    /** The one instance, made at first use and kept until the process ends. */
    static MVTime& instance();

    MVTime() = default;
    virtual ~MVTime() = default;
    virtual const char* className() const { return "MVTime"; }

    /** Nanoseconds since the start value, which is 0 (the epoch) until resetStart is called. Any thread. */
    std::int64_t elapsedNanos() const;
    /** From now on time is counted from here. */
    void resetStart();

    /** The sum of both parts of a wall-clock time: the milliseconds times 1000000000 are taken into single
        precision and multiplied by 0.001 there; stored identities rest on that rounding. */
    static std::int64_t toNanos (std::int64_t seconds, int milliseconds);

private:
    std::atomic<std::int64_t> start { 0 };
};

} // namespace morvanelab
