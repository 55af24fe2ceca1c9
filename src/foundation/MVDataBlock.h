// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVObject.h"
#include "foundation/MVVector.h"

#include <cstdint>
#include <memory>

namespace morvanelab
{

/** A byte buffer that appends cheaply: what does not fit is kept as pieces until the block is first read flat.
    Sizes are signed 32-bit byte counts; an append that would exceed them is refused. One thread at a time. */
class MVDataBlock : public MVObject
{
public:
    static constexpr std::uint32_t classType = 0xC00003;

    /** One appended piece: either the caller's bytes or a copy of its own. */
    struct MVAppendedDataBlock
    {
        virtual ~MVAppendedDataBlock() = default;
        MVAppendedDataBlock() = default;
        MVAppendedDataBlock (MVAppendedDataBlock&&) noexcept = default;
        MVAppendedDataBlock& operator= (MVAppendedDataBlock&&) noexcept = default;

        const std::uint8_t* bytes() const { return ownsCopy ? ownedCopy.get() : external; }

        const std::uint8_t* external = nullptr;
        std::unique_ptr<std::uint8_t[]> ownedCopy;
        std::int32_t size = 0;
        bool ownsCopy = false;
    };

    MVDataBlock() = default;
    /** An empty block with room; the room is not cleared. */
    explicit MVDataBlock (int capacityInBytes);
    /** A copy of count bytes. */
    MVDataBlock (const void* bytes, int count);
    /** A copy of the other's flat bytes; its pending pieces are not copied. */
    MVDataBlock (const MVDataBlock& other);
    ~MVDataBlock() override;

    MVDataBlock* clone() const override { return new MVDataBlock (*this); }
    const char* className() const override { return "MVDataBlock"; }
    std::uint32_t typeId() const override { return classType; }

    /** Appends; what has to wait is not copied, so the bytes must outlive the next flattening.
        The appends return false if nothing could be appended: null bytes, a negative count, or too large a sum. */
    virtual bool appendReference (const void* bytes, int count);
    /** Appends, taking a copy of what has to wait. */
    virtual bool appendCopy (const void* bytes, int count);
    virtual bool appendZeros (int count);

    /** Flattens. 0 puts all of the capacity in use; a count above the capacity gives null; else the used size
        becomes count. Returns the flat bytes. */
    virtual std::uint8_t* dataWithSize (int count);
    /** Flattens and returns the address of an element, or null if it lies outside. With remaining given, that
        receives the whole elements in use from there on, and none left gives null; without it, room that is
        not in use may be addressed too. */
    virtual std::uint8_t* pointerAt (int index, int elementSize, int* remaining = nullptr);
    /** Bytes in use and pending, without flattening. */
    virtual int totalSize() const { return used + pendingBytes; }
    virtual int getCapacity() const { return capacity; }

    /** Copies count elements out of the used bytes taken as a ring, from element position on. Does not flatten. */
    virtual void readRing (void* dest, std::int64_t position, int count, int elementSize) const;
    /** Flattens, then copies count elements into the ring of the used bytes. */
    virtual void writeRing (const void* source, std::int64_t position, int count, int elementSize);

    /** Flattens, zeroes the whole capacity and puts it in use. */
    virtual void zeroFill();
    /** Drops everything; with releaseBuffer also the buffer. */
    virtual void clear (bool releaseBuffer);

    /** Flattens; a count from 0 to below the capacity becomes the used size. Returns the resulting used size. */
    int setSize (int count);

    /** Flattens and returns the used bytes; null while there is no buffer. */
    const std::uint8_t* flatBytes();
    /** Bytes in use, pending ones not counted. */
    int getUsed() const { return used; }

private:
    void flatten();
    bool fitsDirectly (int count) const;
    bool mayAppend (int count) const;
    void defer (MVAppendedDataBlock&& piece);

    std::unique_ptr<std::uint8_t[]> data;
    std::int32_t used = 0;
    std::int32_t capacity = 0;
    MVVector<MVAppendedDataBlock> pending;
    std::int32_t pendingBytes = 0;
};

} // namespace morvanelab
