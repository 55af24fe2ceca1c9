// SPDX-License-Identifier: GPL-3.0-or-later
#include "network/MVNodeExecDesc.h"

namespace morvanelab
{

MVNodeExecDesc::MVNodeExecDesc()
{
    inputBuffers.setDefault (-1);
    inputFeedback.setDefault (false);
    outputBuffers.setDefault (-1);
}

MVNodeExecDesc::MVNodeExecDesc (const MVNodeExecDesc& other)
    : MVObject (other), nodeIndex (other.nodeIndex), inputSrcNode (other.inputSrcNode),
      inputSrcPort (other.inputSrcPort), inputBuffers (other.inputBuffers), inputFeedback (other.inputFeedback),
      outputBuffers (other.outputBuffers)
{
    inputSrcNode.setDefault (-1);
    inputSrcPort.setDefault (-1);
}

MVObject* MVNodeExecDesc::clone() const { return new MVNodeExecDesc (*this); }

} // namespace morvanelab
