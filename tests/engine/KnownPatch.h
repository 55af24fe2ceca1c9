// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/PatchBuilder.h"

#include <cstdint>

namespace morvanelab::test
{

/** The identity of the first node below; the others follow. */
inline constexpr std::uint64_t firstNodeId = 7001;

/** Key and constant into a sum, from there through a tone and a product, whose output also comes back into the sum:
    identities firstNodeId onwards, parameter 3 on the product's second input, texts for some variables. */
inline PatchBuilder knownPatch()
{
    PatchBuilder patch;
    const int keys = patch.node (PatchBuilder::midiKeyIn);
    const int level = patch.constantNode (0.5);
    const int sum = patch.node (PatchBuilder::sum);
    const int tone = patch.node (PatchBuilder::oscillator);
    const int product = patch.node (PatchBuilder::product);
    const int output = patch.node (PatchBuilder::output);

    patch.route (keys, 0, sum, 0);
    patch.route (level, 0, sum, 1);
    patch.route (sum, 0, tone, 0);
    patch.route (tone, 0, product, 0);
    patch.route (keys, 1, product, 1);
    patch.route (product, 0, sum, 2);
    patch.route (product, 0, output, 0);

    patch.inputEntry (product, 1, 0.25, 3);
    patch.names = { "Cutoff", "", "Colour" };
    patch.descriptions = { "", "How wide" };
    for (int index = 0; index <= output; ++index)
        patch.identity (index, firstNodeId + static_cast<std::uint64_t> (index));
    return patch;
}

} // namespace morvanelab::test
