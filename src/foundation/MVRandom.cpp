// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVRandom.h"

#include "foundation/MVTime.h"

#include <atomic>
#include <cstring>

namespace morvanelab
{

namespace
{

/** States have 48 bits; the bit above says that one is given. */
constexpr std::uint64_t isGiven = 1ULL << 48;
std::atomic<std::uint64_t> givenState { 0 };

std::uint64_t startingState()
{
    const std::uint64_t given = givenState.load();
    return given != 0 ? given : static_cast<std::uint64_t> (MVTime::instance().elapsedNanos());
}

} // namespace

MVRandom::MVRandom() : state (startingState() & stateMask) {}

MVRandom& MVRandom::instance()
{
    static MVRandom only;
    return only;
}

void MVRandom::startAllFrom (std::uint64_t startState) { givenState.store ((startState & stateMask) | isGiven); }

void MVRandom::startAllFromClock() { givenState.store (0); }

void MVRandom::restart() { state = startingState() & stateMask; }

int MVRandom::nextInRange (const MVIRange& range)
{
    if (range.span < 1)
        return range.low;

    // Unsigned throughout: neither span + 1 nor the sum may overflow.
    const std::uint32_t step = next32() % (static_cast<std::uint32_t> (range.span) + 1U);
    return static_cast<int> (static_cast<std::uint32_t> (range.low) + step);
}

bool MVRandom::chance (double probability)
{
    if (probability >= 1.0)
        return true;
    if (probability <= 0.0)
        return false;
    return 1.0 - nextUniform() <= probability;
}

int MVRandom::weightedChoice (const MVVector<double>* weights)
{
    if (weights == nullptr || weights->isEmpty())
        return -1;

    double sum = 0.0;
    for (const double weight : *weights)
        sum += weight;

    double left = nextUniform() * sum;
    const int last = weights->size() - 1;

    for (int i = 0; i < last; ++i)
    {
        if (left < (*weights)[i])
            return i;
        left -= (*weights)[i];
    }

    return last;
}

void MVRandom::flipRandomBit (void* buffer, int size)
{
    if (buffer == nullptr || size < 1)
        return;
    const std::uint32_t byte = next32() % static_cast<std::uint32_t> (size);
    const std::uint32_t bit = next32() & 7;
    auto* const bytes = static_cast<unsigned char*> (buffer);
    bytes[byte] = static_cast<unsigned char> (bytes[byte] ^ (1U << bit));
}

void MVRandom::zeroBuffer (void* buffer, int size)
{
    if (buffer != nullptr && size > 0)
        std::memset (buffer, 0, static_cast<std::size_t> (size));
}

} // namespace morvanelab
