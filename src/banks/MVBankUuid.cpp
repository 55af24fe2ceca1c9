// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/MVBankUuid.h"

#include "foundation/MVChunks.h"

#include <random>

namespace morvanelab
{

MVBankUuid MVBankUuid::createRandom()
{
    std::random_device source;
    MVBankUuid uuid;
    for (auto& byte : uuid.bytes)
        byte = static_cast<std::uint8_t> (source());
    return uuid;
}

MVSmartPtr<MVRiffPacker> MVBankUuid::packRiff (std::uint32_t chunkId) const { return makeChunk (chunkId, bytes); }

bool MVBankUuid::unpackRiff (const MVSmartPtr<MVRiffPacker>& packer) { return chunkRecord (packer, bytes); }

} // namespace morvanelab
