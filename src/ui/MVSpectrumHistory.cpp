// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVSpectrumHistory.h"

#include "foundation/MVMath.h"

#include <algorithm>

namespace morvanelab
{

void MVSpectrumHistory::add (const Ridge& ridge)
{
    ++added;
    auto& newest = ridges[static_cast<std::size_t> (slotOf (0))];
    newest = ridge;
    for (float& height : newest.heights)
        height = static_cast<float> (limitTo (height, 0.0, 1.0));
}

int MVSpectrumHistory::slotOf (int age) const
{
    const int newest = static_cast<int> (added % numRidges);
    return (newest - std::clamp (age, 0, numRidges - 1) + numRidges) % numRidges;
}

const MVSpectrumHistory::Ridge& MVSpectrumHistory::ridge (int age) const
{
    return ridges[static_cast<std::size_t> (slotOf (age))];
}

float MVSpectrumHistory::strengthOf (int age)
{
    const auto depth = static_cast<float> (depthOf (std::clamp (age, 0, numRidges - 1)));
    return 1.0F - 0.85F * depth;
}

} // namespace morvanelab
