// SPDX-License-Identifier: GPL-3.0-or-later

// The text form of patches, as someone typed it. What compiles must come back from its own text.

#include "FuzzInput.h"
#include "engine/MVPatchText.h"
#include "foundation/MVException.h"

#include <cstring>
#include <string_view>

using namespace morvanelab;

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    MVPatchText::Compiled compiled;

    try
    {
        compiled = MVPatchText::compile ({ reinterpret_cast<const char*> (data), size }, "input");
    }
    catch (const MVException&)
    {
        return 0;
    }

    const auto first = compiled.patch->packToBlock (false);
    if (! first)
        return 0;

    const auto second = MVPatchText::compile (MVPatchText::write (*compiled.patch), "again").patch->packToBlock (false);
    fuzz::require (
        second && second->getUsed() == first->getUsed()
            && std::memcmp (second->flatBytes(), first->flatBytes(), static_cast<std::size_t> (first->getUsed())) == 0,
        "a compiled text comes back from its own text");
    return 0;
}
