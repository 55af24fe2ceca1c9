// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/PatchTextChunks.h"
#include "foundation/MVMetaData.h"

namespace morvanelab::patchText
{

/** Takes each field that the object names into metadata; the others stay. */
void metadataFromJson (const Json& json, MVMetaData& metadata, const TextPlace& place);

/** The fields that hold something. */
Json metadataToJson (const MVMetaData& metadata);

} // namespace morvanelab::patchText
