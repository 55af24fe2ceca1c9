// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVChunks.h"

#include "foundation/MVMath.h"

namespace morvanelab
{

namespace
{

constexpr std::uint32_t versionChunk = fourCC ("ver ");

} // namespace

void addTextChunk (MVRiffPacker& parent, std::uint32_t chunkId, const MVString& text)
{
    parent.addChild (text.packRiff (chunkId));
}

std::optional<MVString> childText (const MVRiffPacker& parent, std::uint32_t chunkId, int occurrence)
{
    const MVSmartPtr<MVRiffPacker> chunk = parent.findChild (chunkId, occurrence);
    if (! chunk)
        return std::nullopt;

    MVString text ("");
    text.unpackRiff (*chunk);
    return text;
}

MVSmartPtr<MVRiffPacker> makeVersionChunk()
{
    struct Numbers
    {
        std::uint32_t major = 1, minor = 4, revision = 0, fourth = 1;
    };
    static_assert (sizeof (Numbers) == 16);
    return makeChunk (versionChunk, Numbers {});
}

void addVersionChunk (MVRiffPacker& parent) { parent.addChild (makeVersionChunk()); }

std::optional<std::uint32_t> storedVersionCode (const MVRiffPacker& parent)
{
    const MVSmartPtr<MVRiffPacker> chunk = parent.findChild (versionChunk);
    const auto major = chunkNumber<std::uint32_t> (chunk, 0);
    const auto minor = chunkNumber<std::uint32_t> (chunk, 1);
    const auto revision = chunkNumber<std::uint32_t> (chunk, 2);

    if (! revision)
        return std::nullopt;
    return versionCode (*major, *minor, *revision);
}

} // namespace morvanelab
