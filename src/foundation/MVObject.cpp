// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVObject.h"

#include "foundation/MVTime.h"

#include <cstring>

namespace morvanelab
{

namespace
{

std::atomic<std::int32_t> objectCounter { 0 };

/** Time makes identities differ between runs, the counter within one. */
std::uint64_t makeId()
{
    const auto number = static_cast<std::int64_t> (objectCounter.fetch_add (1, std::memory_order_relaxed) + 1);
    const auto nanos = static_cast<std::uint64_t> (MVTime::instance().elapsedNanos());
    return nanos * 1000U + static_cast<std::uint64_t> (number);
}

} // namespace

MVObject::MVObject() : objectId (makeId()) {}

MVObject::MVObject (const MVObject& other) : objectId (makeId()), enabled (other.enabled.load()) {}

bool MVObject::isClassNamed (const char* text) const
{
    const char* const name = className();
    return name != nullptr && text != nullptr && std::strcmp (name, text) == 0;
}

void MVObject::copyFrom (const MVObject& other)
{
    objectId = other.objectId;
    enabled = other.enabled.load();
}

} // namespace morvanelab
