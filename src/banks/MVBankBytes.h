// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVDataBlock.h"
#include "foundation/MVRiffPacker.h"
#include "foundation/MVSmartPtr.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace morvanelab
{

/** Bytes and chunk trees as banks hand them about. */

/** The flat bytes of a block; none for null. */
inline std::span<const std::uint8_t> bytesOf (const MVSmartPtr<MVDataBlock>& block)
{
    if (! block)
        return {};
    const auto* const bytes = block->flatBytes();
    return { bytes, bytes != nullptr ? static_cast<std::size_t> (block->getUsed()) : 0 };
}

/** The chunk tree in the bytes, its checksum unread; null if it is not well formed. */
inline MVSmartPtr<MVRiffPacker> parseChunks (std::span<const std::uint8_t> bytes)
{
    if (bytes.size() > static_cast<std::size_t> (INT32_MAX))
        return {};
    auto packer = makeSmart<MVRiffPacker> (bytes.data(), static_cast<int> (bytes.size()), false);
    if (! packer->isWellFormed())
        packer.clear();
    return packer;
}

/** The tree packed with a root checksum; an empty block for null, never null. */
inline MVSmartPtr<MVDataBlock> packChunks (const MVSmartPtr<MVRiffPacker>& packer)
{
    MVSmartPtr<MVDataBlock> block;
    if (packer)
        block = packer->packToBlock (true);
    return block ? block : makeSmart<MVDataBlock>();
}

} // namespace morvanelab
