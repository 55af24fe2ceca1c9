// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "network/MVNodeExecDesc.h"
#include "operators/OperatorSpec.h"

namespace morvanelab
{

class MVOperator;

/** A descriptor of the execution list with the operator and the signal buffers bound to it. Each port has two
    buffers, one a phase; phases alternate block by block. Filled and cleared while the audio is excluded.

    While it is bound every pointer below numInputs and numOutputs is valid: an unconnected input points at
    256 zeros. */
class MVOpExecDesc : public MVNodeExecDesc
{
public:
    MVOpExecDesc() = default;
    /** A copy keeps the binding; the owner of the copy has to bind it anew. */
    MVOpExecDesc (const MVOpExecDesc&) = default;

    MVOpExecDesc* clone() const override { return new MVOpExecDesc (*this); }
    const char* className() const override { return "MVOpExecDesc"; }

    /** Whether a route leads into the input. */
    bool isInputConnected (int port) const
    {
        return port >= 0 && port < inputSrcNode.size() && inputSrcNode[port] >= 0;
    }

    MVOperator* op = nullptr; ///< not owned
    int numInputs = 0;
    double* inputPtrs[2][maxOperatorPorts] {};
    int numOutputs = 0;
    double* outputPtrs[2][maxOperatorPorts] {};
};

} // namespace morvanelab
