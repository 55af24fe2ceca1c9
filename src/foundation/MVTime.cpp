// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVTime.h"

#include <chrono>
#include <cstddef>
#include <new>

namespace morvanelab
{

namespace
{

std::int64_t wallClock()
{
    using namespace std::chrono;
    const std::int64_t total = duration_cast<milliseconds> (system_clock::now().time_since_epoch()).count();
    return MVTime::toNanos (total / 1000, static_cast<int> (total % 1000));
}

} // namespace

MVTime& MVTime::instance()
{
    // Never destroyed: objects with identities are made until the very end. In place, so that a plug-in that is
    // loaded and unloaded again and again leaves nothing behind.
    alignas (MVTime) static std::byte place[sizeof (MVTime)];
    static MVTime* const only = new (place) MVTime;
    return *only;
}

std::int64_t MVTime::elapsedNanos() const { return wallClock() - start.load (std::memory_order_relaxed); }

void MVTime::resetStart() { start.store (wallClock(), std::memory_order_relaxed); }

std::int64_t MVTime::toNanos (std::int64_t seconds, int milliseconds)
{
    const float scaled = static_cast<float> (std::int64_t { milliseconds } * 1000000000) * 0.001f;
    return static_cast<std::int64_t> (scaled) + seconds * 1000000000;
}

} // namespace morvanelab
