// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVRiffPacker.h"
#include "foundation/MVSmartPtr.h"

#include <array>
#include <cstdint>

namespace morvanelab
{

/** The identity of a bank in one manager: 16 bytes compared one by one. */
struct MVBankUuid
{
    std::array<std::uint8_t, 16> bytes {};

    bool operator== (const MVBankUuid&) const = default;

    /** 16 fresh random bytes from the operating system. */
    static MVBankUuid createRandom();
    /** A chunk of the given id with the 16 bytes as payload. */
    MVSmartPtr<MVRiffPacker> packRiff (std::uint32_t chunkId) const;
    /** Takes the first 16 bytes of the payload. A null or shorter chunk changes nothing and yields false. */
    bool unpackRiff (const MVSmartPtr<MVRiffPacker>& packer);
};

} // namespace morvanelab
