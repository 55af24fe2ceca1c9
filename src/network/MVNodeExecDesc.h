// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVObject.h"
#include "foundation/MVVector.h"

namespace morvanelab
{

/** One node's entry in an execution list: what feeds its inputs and which signal buffers it reads and writes.
    Plain data, filled while the order is computed. */
class MVNodeExecDesc : public MVObject
{
public:
    MVNodeExecDesc();
    /** The same contents under a fresh identity. In a copy, reads past the end of inputSrcNode and inputSrcPort
        yield -1. */
    MVNodeExecDesc (const MVNodeExecDesc& other);

    MVObject* clone() const override;
    const char* className() const override { return "MVNodeExecDesc"; }

    /** Index in the sub-network's node list; -1 until set. */
    int nodeIndex = -1;
    /** Per input port, the node that feeds it, or -1. */
    MVVector<int> inputSrcNode;
    /** Per input port, the output port that feeds it, or -1. */
    MVVector<int> inputSrcPort;
    /** Per input port, the number of the buffer it reads, or -1. */
    MVVector<int> inputBuffers;
    /** Whether the source had already been visited, so that the input hears it one block late. One entry for each
        connected input, in port order: unconnected inputs have none, so an entry lines up with its port only while
        no unconnected input stands before it. Readers index it by port number all the same. */
    MVVector<bool> inputFeedback;
    /** Per output port, the number of its buffer. */
    MVVector<int> outputBuffers;
};

} // namespace morvanelab
