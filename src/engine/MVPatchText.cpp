// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVPatchText.h"

#include "engine/PatchTextReader.h"
#include "engine/PatchTextWriter.h"
#include "foundation/MVMath.h"

namespace morvanelab
{

MVPatchText::Compiled MVPatchText::compile (std::string_view text, const std::string& sourceName)
{
    patchText::Json root;

    try
    {
        root = patchText::Json::parse (text);
    }
    catch (const patchText::Json::exception& error)
    {
        // The parser tells line and column and what it expected.
        throw MVException (resultFailed, (sourceName + ": " + error.what()).c_str());
    }

    return PatchTextReader (root, sourceName).compile();
}

std::string MVPatchText::write (const MVRiffPacker& patch)
{
    if (patch.getChunkId() != fourCC ("ptch"))
        throw MVException (resultFailed, "Error:  Not a well-formed patch.");

    patchText::Json json;
    bool same = false;

    try
    {
        json = PatchTextWriter (patch).write();
        same = patchText::packed (*compile (json.dump(), "").patch) == patchText::packed (patch);
    }
    catch (const MVException&)
    {
        // More operators than a text may hold; kept as chunks below.
    }

    if (! same)
    {
        json = patchText::Json();
        json["format"] = "sordelin-patch";
        json["chunk"] = patchText::chunkToJson (patch);
    }

    return json.dump (2) + "\n";
}

} // namespace morvanelab
