// SPDX-License-Identifier: GPL-3.0-or-later

// Chunk trees of both forms. The first byte chooses whether the checksum is verified. A tree that was accepted must
// pack, and its packed form must be read back to the same bytes.

#include "FuzzInput.h"
#include "foundation/MVChunks.h"
#include "foundation/MVMetaData.h"
#include "foundation/MVRiffPacker.h"

#include <cstring>

using namespace morvanelab;

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    if (size < 1)
        return 0;

    const auto bytes = fuzz::exactCopy (data + 1, size - 1);
    const MVRiffPacker tree (bytes.data(), static_cast<int> (bytes.size()), (data[0] & 1) != 0);

    if (! tree.isWellFormed())
    {
        fuzz::require (tree.childCount() == 0 && tree.getPayload() == nullptr, "a bad tree is empty");
        return 0;
    }

    const auto packed = tree.packToBlock (true);
    if (! packed)
        return 0; // the older form may grow beyond what the current one can hold

    MVRiffPacker again (packed->flatBytes(), packed->getUsed(), true);
    fuzz::require (again.isWellFormed(), "what is packed is well formed");
    const auto twice = again.packToBlock (true);
    fuzz::require (
        twice->getUsed() == packed->getUsed()
            && std::memcmp (twice->flatBytes(), packed->flatBytes(), static_cast<std::size_t> (packed->getUsed())) == 0,
        "packing is lossless");

    const MVRiffPacker copy (tree);
    fuzz::require (copy.packedSize() == tree.packedSize(), "a copy is as large");
    (void)tree.findDeep (0x73747220);
    (void)storedVersionCode (tree);

    MVMetaData meta;
    meta.unpackRiff (tree);
    (void)meta.packRiff()->packedSize();
    return 0;
}
