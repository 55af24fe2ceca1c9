// SPDX-License-Identifier: GPL-3.0-or-later
#include "PatchFile.h"

#include "CommandFailure.h"

#include "foundation/MVException.h"
#include "foundation/MVMath.h"

namespace morvanelab
{

MVSmartPtr<MVRiffPacker> parsePatch (const Bytes& bytes)
{
    auto tree = makeSmart<MVRiffPacker> (bytes.data(), static_cast<int> (bytes.size()), true);
    if (! tree->isWellFormed())
        throw badData ("Error:  Invalid patch data.");
    if (tree->getChunkId() != fourCC ("ptch"))
        throw badData ("Error:  Not a well-formed patch.");
    return tree;
}

MVSmartPtr<MVRiffPacker> readPatchFile (const std::string& path) { return parsePatch (readWholeFile (path)); }

Bytes patchFileBytes (const MVRiffPacker& patch)
{
    Bytes bytes (static_cast<std::size_t> (patch.packedSize()));
    if (bytes.empty() || ! patch.pack (bytes.data(), true))
        throw badData ("Error:  Invalid patch data.");
    return bytes;
}

MVPatchText::Compiled compilePatchSource (const std::string& path)
{
    const Bytes bytes = readWholeFile (path);
    return MVPatchText::compile ({ reinterpret_cast<const char*> (bytes.data()), bytes.size() }, path);
}

} // namespace morvanelab
