// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVMetaData.h"
#include "foundation/MVRiffPacker.h"
#include "foundation/MVSmartPtr.h"

#include <string>
#include <string_view>

namespace morvanelab
{

/** The text form of patches: JSON that people write by hand. docs/patches.md tells it by example,
    resources/sordelin-patch.schema.json exactly.

    Nothing is lost between the two forms: a patch tree written as text and compiled again packs to the same
    bytes. What the text form has no words for (unknown operators, foreign chunks, values outside their limits)
    is kept as chunks, records or stored values. No instance; any thread. */
class MVPatchText
{
public:
    /** A compiled text. */
    struct Compiled
    {
        MVSmartPtr<MVRiffPacker> patch;  ///< the 'ptch' tree; never null
        MVSmartPtr<MVMetaData> metadata; ///< what the text says of itself; never null
    };

    /** Compiles a text. sourceName stands in front of every error, followed by the place and what was expected.
        A number must lie within its parameter's limits; one that equals a limit in single precision counts as that
        limit. Raises MVException with code resultFailed. */
    static Compiled compile (std::string_view text, const std::string& sourceName);

    /** The text form of a stored tree, as it stands in the file: nothing is folded into limits.
        Raises MVException resultFailed, "Error:  Not a well-formed patch.", if the root is no 'ptch'. */
    static std::string write (const MVRiffPacker& patch);
};

} // namespace morvanelab
