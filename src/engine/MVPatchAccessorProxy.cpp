// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVPatchAccessorProxy.h"

namespace morvanelab
{

int patchNodeTypeNumber (std::uint32_t typeId)
{
    // The identifiers have one gap, which no class uses.
    constexpr std::uint32_t first = 0xA70001;
    constexpr std::uint32_t gap = 0xA7000A;
    constexpr std::uint32_t last = 0xA7001B;
    constexpr int firstNumber = 2;
    constexpr int unknownNumber = 1;

    if (typeId < first || typeId > last || typeId == gap)
        return unknownNumber;
    return static_cast<int> (typeId - first) + firstNumber - (typeId > gap ? 1 : 0);
}

} // namespace morvanelab
