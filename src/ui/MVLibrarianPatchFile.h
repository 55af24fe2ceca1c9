// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVLibrarianWriter.h"

#include <juce_core/juce_core.h>

namespace morvanelab
{

/** Patch files as the librarian adds and exports them. */

/** What a slot is to hold for a patch file: the patch in a slot's stored form, and metadata named after the file. A
   file that holds a slot's stored form itself (patch, comment, panel, metadata) is taken over with all of it. Raises
   MVException: 15 "File read access not allowed.", 9 "Error:  Invalid patch data." for bytes that are no chunk tree or
   fail its checksum, 9 "Error:  Not a well-formed patch." for a tree that is no patch. */
MVSlotBytes readPatchFile (const juce::File& file);

/** Writes a slot's patch to a file, the way a full disk leaves the old one. Raises MVException: 9 "Error:  Invalid or
   corrupt patch." for a slot without a patch, 13 "Could not write to file". */
void writePatchFile (const MVSlotBytes& slot, const juce::File& file);

} // namespace morvanelab
