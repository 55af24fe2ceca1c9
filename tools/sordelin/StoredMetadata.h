// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "OutputFile.h"

#include "engine/PatchTextChunks.h"
#include "foundation/MVMetaData.h"

namespace morvanelab
{

/** Metadata as a bank stores them, in the list of a bank: every field, so that nothing is lost. */

/** The fields that hold something, in a fixed order. Texts that are no UTF-8 stand as {"stored": hex}; lock and image
   as chunks. Bytes that are no metadata give no field. */
patchText::Json metadataFields (const Bytes& stored);

/** The fields if they give back exactly these bytes, else {"stored": hex} of the whole. */
patchText::Json metadataToList (const Bytes& stored);

/** The bytes of what metadataToList wrote, or a user. Fields that are not named keep the value they have in base.
    Raises MVException with the place. */
Bytes metadataFromList (const patchText::Json& json, const MVMetaData& base, const TextPlace& place);

} // namespace morvanelab
