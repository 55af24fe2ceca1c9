// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVObject.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace morvanelab
{

/** A byte ring for one reader and one writer on different threads, without a lock: each side owns its position, and
    only the fill level is shared. Contiguous runs let either side work in place.

    A mirrored ring has spare room behind its end, so that a run of free space is always contiguous for the writer;
    what it wrote there is copied to the start when it commits. No request, whatever its size, leaves the ring: a side
    without room is told so by a shorter run, and a commit of more than there is counts as all there is.

    Threads: readPointer, commitRead on the reader's; writePointer, commitWrite on the writer's; fillLevel and freeSpace
    on both. Everything else only while neither side works. */
class MVCircularBuffer : public MVObject
{
public:
    explicit MVCircularBuffer (int sizeInBytes, bool isMirrored = false);
    /** Copies size and kind, and the content if active. */
    MVCircularBuffer (const MVCircularBuffer& other);

    MVObject* clone() const override { return new MVCircularBuffer (*this); }
    const char* className() const override { return "MVCircularBuffer"; }
    /** Allocates and zeroes the ring, or frees it. An inactive ring answers null pointers and counts of 0. */
    void setActive (bool on) override;

    /** The oldest data; bytes is cut to the contiguous run there. Null (bytes 0) for an inactive ring. */
    virtual const std::byte* readPointer (int& bytes) const;
    virtual void commitRead (int bytes);
    /** Free space; bytes is cut to what is free and, unless mirrored, to the end of the ring. */
    virtual std::byte* writePointer (int& bytes);
    virtual void commitWrite (int bytes);
    /** Bytes that wait to be read. */
    virtual int fillLevel() const { return fill.load (std::memory_order_acquire); }
    virtual int freeSpace() const { return data != nullptr ? size - fillLevel() : 0; }
    /** Zeroes the data and empties the ring. */
    virtual void clear();
    /** Starts anew with the given number of zero bytes waiting to be read. */
    virtual void prime (int bytes);
    void reset() override { clear(); }

    int getSize() const { return size; }
    bool isMirrored() const { return mirrored; }

private:
    std::size_t allocatedBytes() const;

    std::unique_ptr<std::byte[]> data;
    int size = 0;
    int readPosition = 0;
    int writePosition = 0;
    std::atomic<std::int32_t> fill { 0 };
    bool mirrored = false;
};

} // namespace morvanelab
