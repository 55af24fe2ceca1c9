// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVSmartPtr.h"
#include "foundation/MVString.h"
#include "foundation/MVVector.h"
#include "network/MVNetNode.h"

#include <cstdint>

namespace morvanelab
{

class MVOperator;

/** A node of a patch snapshot: what can be told of an operator without its signal code. It has the operator's
    identity, ports, scales and controls. Once its patch is built nothing changes it, so any thread may read it. */
class MVOperator_proxy : public MVNetNode
{
public:
    /** Copies an operator that nothing changes meanwhile. No source is known yet. */
    explicit MVOperator_proxy (const MVOperator& op);
    MVOperator_proxy (const MVOperator_proxy& other);

    MVObject* clone() const override { return new MVOperator_proxy (*this); }
    const char* className() const override { return "MVOperator_proxy"; }
    /** The operator's. */
    std::uint32_t typeId() const override { return operatorType; }
    /** A new text, so that readers on several threads share nothing; empty for no such port. */
    MVSmartPtr<MVString> getPortDesc (int direction, int port) const override;

    /** The identity of the node that feeds an input, 0 for none or no such input. */
    std::uint64_t getInputSource (int input) const { return inputSources.itemAt (input); }
    /** The output port of that node, -1 where there is none. */
    int getInputSourcePort (int input) const { return inputSourcePorts.itemAt (input); }
    /** While the snapshot is built. An input that does not exist is ignored. */
    void setInputSource (int input, std::uint64_t sourceId, int sourcePort);

private:
    using PortDescs = MVVector<MVSmartPtr<MVString>>;

    static PortDescs describePorts (const MVOperator& op, int direction);

    std::uint32_t operatorType;
    PortDescs inputDescs;
    PortDescs outputDescs;
    MVVector<std::uint64_t> inputSources;
    MVVector<int> inputSourcePorts;
};

} // namespace morvanelab
