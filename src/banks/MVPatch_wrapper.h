// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVMetaData.h"
#include "foundation/MVSmartPtr.h"

namespace morvanelab
{

/** One slot of the selected bank, as the librarian shows it. Message thread. */
struct MVPatch_wrapper final
{
    MVSmartPtr<MVMetaData> metadata; ///< never null
    bool selected = false;
    bool occupied = false; ///< the slot holds a patch
};

} // namespace morvanelab
