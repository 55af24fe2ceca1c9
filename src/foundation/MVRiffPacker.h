// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVDataBlock.h"
#include "foundation/MVSmartPtr.h"
#include "foundation/MVVector.h"

#include <cstdint>
#include <memory>

namespace morvanelab
{

/** A tree of chunks, each with a 32-bit id, a payload and children; the base of every stored format.

    Packed form, little-endian: "FRVM" 1 4 0 hasChecksum, id, totalSize, payloadSize, childCount, the children,
    the payload, four bytes of trailer. The root's trailer holds the checksum if there is one, all others zeros.

    Parsing takes any bytes: a malformed buffer gives an empty chunk that is not well formed. Nesting deeper than
    maxDepth is malformed, and memory taken stays a small multiple of the bytes given. One thread at a time. */
class MVRiffPacker : public MVObject
{
public:
    static constexpr std::uint32_t classType = 0xC0000E;
    static constexpr int maxDepth = 64;
    static constexpr int headerSize = 24;
    static constexpr int trailerSize = 4;

    explicit MVRiffPacker (std::uint32_t newId);
    /** A chunk with a copy of the bytes as payload. */
    MVRiffPacker (std::uint32_t newId, const void* bytes, int size);
    /** Parses the packed form, or the older form that has no magic. Look at isWellFormed afterwards. */
    MVRiffPacker (const void* bytes, int size, bool verifyChecksum);
    /** Deep copy. A copy of a chunk that has children keeps the payload's size but not its bytes. */
    MVRiffPacker (const MVRiffPacker& other);
    ~MVRiffPacker() override;

    MVRiffPacker* clone() const override { return new MVRiffPacker (*this); }
    const char* className() const override { return "MVRiffPacker"; }
    std::uint32_t typeId() const override { return classType; }

    std::uint32_t getChunkId() const { return chunkId; }
    void setChunkId (std::uint32_t newId) { chunkId = newId; }
    /** The payload's bytes, or null. */
    const std::uint8_t* getPayload() const { return payload.get(); }
    int getPayloadSize() const { return payloadSize; }
    /** Payload bytes that may be read: the size, or 0 where the bytes were not copied. */
    int readablePayload() const { return payload != nullptr ? payloadSize : 0; }
    bool isWellFormed() const { return wellFormed; }

    /** Bytes of the packed form; 0 if the tree cannot be packed (deeper than maxDepth or 2 GiB and above). */
    int packedSize() const;
    /** Bytes that this chunk took in the older form. */
    int legacySize() const;
    /** Writes the packed form to a buffer of at least packedSize() bytes. False if the tree cannot be packed. */
    bool pack (void* buffer, bool withChecksum) const;
    /** The packed form in a new block; null if the tree cannot be packed. */
    MVSmartPtr<MVDataBlock> packToBlock (bool withChecksum) const;

    /** Adds at the end and releases the argument; null is ignored. */
    void addChild (MVSmartPtr<MVRiffPacker>& child);
    void addChild (MVSmartPtr<MVRiffPacker>&& child);
    int childCount() const { return children.size(); }
    /** The child at index, or null. For long lists walk by index: findChild starts from the front each time. */
    MVSmartPtr<MVRiffPacker> childAt (int index) const;
    /** How many direct children have that id. */
    int countChildren (std::uint32_t wanted) const;
    /** The direct child with that id at a zero-based occurrence, or null. */
    MVSmartPtr<MVRiffPacker> findChild (std::uint32_t wanted, int occurrence = 0) const;
    /** The first direct child with that id, else the first found in the children, depth first; or null. */
    MVSmartPtr<MVRiffPacker> findDeep (std::uint32_t wanted) const;

    /** Checksum of the packed form over size bytes. */
    static std::uint32_t checksum (const std::uint8_t* bytes, std::uint32_t size);

private:
    MVRiffPacker() = default;
    static MVSmartPtr<MVRiffPacker> copyOf (const MVRiffPacker& other, int depth);
    void copyContents (const MVRiffPacker& other, int depth);

    bool parseAny (const std::uint8_t* bytes, std::int64_t limit, bool verify, int depth);
    bool parseCurrent (const std::uint8_t* bytes, std::int64_t limit, bool verify, int depth);
    bool parseCurrentChildren (const std::uint8_t* bytes, std::int64_t limit, std::int64_t totalSize,
                               std::uint32_t count, int depth, std::int64_t& offset);
    bool parseLegacy (const std::uint8_t* bytes, std::int64_t limit, bool verify, int depth);
    void takePayload (const std::uint8_t* bytes, std::int64_t size);
    void fail();

    bool measure (std::int64_t& size, int depth) const;
    std::int64_t measureLegacy (int depth) const;
    std::uint8_t* packAt (std::uint8_t* out, bool withChecksum) const;
    MVSmartPtr<MVRiffPacker> findDeep (std::uint32_t wanted, int depth) const;

    std::uint32_t chunkId = 0;
    MVVector<MVSmartPtr<MVRiffPacker>> children;
    std::unique_ptr<std::uint8_t[]> payload;
    std::int32_t payloadSize = 0;
    bool wellFormed = false;
};

} // namespace morvanelab
