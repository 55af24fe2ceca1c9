// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVPolyPatchInfo.h"

#include "operators/MVOpExecDesc.h"

namespace morvanelab
{

MVNodeExecDesc* MVPolyPatchInfo::addExecDesc()
{
    auto* const desc = new MVOpExecDesc;
    insertAtFront (desc);
    return desc;
}

} // namespace morvanelab
