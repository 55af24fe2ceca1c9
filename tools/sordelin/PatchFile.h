// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "OutputFile.h"

#include "engine/MVPatchText.h"
#include "foundation/MVRiffPacker.h"
#include "foundation/MVSmartPtr.h"

#include <string>

namespace morvanelab
{

/** The tree of a patch file, its root checksum verified as the player does. Throws badData:
    "Error:  Invalid patch data." for bytes that are no chunk tree or fail the checksum,
    "Error:  Not a well-formed patch." for a tree that is no patch. */
MVSmartPtr<MVRiffPacker> readPatchFile (const std::string& path);
MVSmartPtr<MVRiffPacker> parsePatch (const Bytes& bytes);

/** The bytes of a patch file: the packed tree with its root checksum. */
Bytes patchFileBytes (const MVRiffPacker& patch);

/** Compiles a text source. Throws badData with file, place and what was expected. */
MVPatchText::Compiled compilePatchSource (const std::string& path);

} // namespace morvanelab
