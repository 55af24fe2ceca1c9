// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

namespace morvanelab
{

/** An ordered list of control identifiers that a reader on another thread may walk at any time without a lock.

    Entries lie in a chain of segments that only ever grows and is freed with the list, so a reader never meets
    memory that has gone, and adding after removing allocates nothing. One thread at a time may change it. */
class MVControlIdList
{
public:
    MVControlIdList() = default;
    MVControlIdList (const MVControlIdList&) = delete;
    MVControlIdList& operator= (const MVControlIdList&) = delete;
    ~MVControlIdList();

    int count() const { return used.load (std::memory_order_acquire); }
    /** Appends, with no test for duplicates. */
    void add (std::uint16_t id);
    void clear() { used.store (0, std::memory_order_release); }
    bool contains (std::uint16_t id) const;

    /** Removes every id for which gone (id) is true; the others keep their order. */
    template <typename Predicate>
    void removeIf (Predicate gone)
    {
        const int oldCount = count();
        int kept = 0;

        for (int i = 0; i < oldCount; ++i)
            if (const std::uint16_t id = slot (i)->load (std::memory_order_relaxed); ! gone (id))
                slot (kept++)->store (id, std::memory_order_relaxed);

        used.store (kept, std::memory_order_release);
    }

    /** Calls visit (id) for every entry in order. */
    template <typename Visitor>
    void forEach (Visitor visit) const
    {
        const Segment* segment = &first;

        for (int i = 0, end = count(); i < end; ++i)
        {
            if (i > 0 && i % segmentSize == 0)
                segment = segment->next.load (std::memory_order_acquire);
            visit (segment->ids[static_cast<std::size_t> (i % segmentSize)].load (std::memory_order_relaxed));
        }
    }

private:
    static constexpr int segmentSize = 32;

    struct Segment
    {
        std::array<std::atomic<std::uint16_t>, segmentSize> ids {};
        std::atomic<Segment*> next { nullptr };
    };

    /** The place of entry index, whose segment must exist. */
    std::atomic<std::uint16_t>* slot (int index);

    Segment first;
    std::atomic<int> used { 0 };
};

} // namespace morvanelab
