// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVControlIdList.h"

namespace morvanelab
{

MVControlIdList::~MVControlIdList()
{
    for (Segment* segment = first.next.load(); segment != nullptr;)
    {
        Segment* const next = segment->next.load();
        delete segment;
        segment = next;
    }
}

void MVControlIdList::add (std::uint16_t id)
{
    const int index = count();
    Segment* segment = &first;

    for (int i = 0; i < index / segmentSize; ++i)
    {
        Segment* next = segment->next.load (std::memory_order_relaxed);
        if (next == nullptr)
        {
            next = new Segment;
            segment->next.store (next, std::memory_order_release);
        }
        segment = next;
    }

    segment->ids[static_cast<std::size_t> (index % segmentSize)].store (id, std::memory_order_relaxed);
    used.store (index + 1, std::memory_order_release);
}

bool MVControlIdList::contains (std::uint16_t id) const
{
    bool found = false;
    forEach ([&] (std::uint16_t entry) { found = found || entry == id; });
    return found;
}

std::atomic<std::uint16_t>* MVControlIdList::slot (int index)
{
    Segment* segment = &first;
    for (int i = 0; i < index / segmentSize; ++i)
        segment = segment->next.load (std::memory_order_acquire);
    return &segment->ids[static_cast<std::size_t> (index % segmentSize)];
}

} // namespace morvanelab
