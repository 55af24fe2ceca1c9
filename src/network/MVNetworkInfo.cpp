// SPDX-License-Identifier: GPL-3.0-or-later
#include "network/MVNetworkInfo.h"

#include <algorithm>

namespace morvanelab
{

MVNetworkInfo::MVNetworkInfo() { execDescs.setDefault (nullptr); }

MVNetworkInfo::MVNetworkInfo (const MVNetworkInfo& other)
    : MVObject (other), signature (other.signature), reserved (other.reserved), bufferCount (other.bufferCount)
{
    execDescs.setDefault (nullptr);
    execDescs.reserve (other.execDescs.size());

    for (const MVNodeExecDesc* const desc : other.execDescs)
        execDescs.add (static_cast<MVNodeExecDesc*> (desc->clone()));
}

MVNetworkInfo::~MVNetworkInfo()
{
    for (MVNodeExecDesc* const desc : execDescs)
        delete desc;
}

MVObject* MVNetworkInfo::clone() const { return new MVNetworkInfo (*this); }

MVNodeExecDesc* MVNetworkInfo::addExecDesc()
{
    auto* const desc = new MVNodeExecDesc;
    insertAtFront (desc);
    return desc;
}

bool MVNetworkInfo::containsNode (int nodeIndex) const
{
    return std::any_of (execDescs.begin(), execDescs.end(),
                        [=] (const MVNodeExecDesc* desc) { return desc->nodeIndex == nodeIndex; });
}

} // namespace morvanelab
