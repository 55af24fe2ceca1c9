// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVOperator_proxy.h"

#include "operators/MVOperator.h"

namespace morvanelab
{

MVOperator_proxy::MVOperator_proxy (const MVOperator& op)
    : MVNetNode (op), operatorType (op.typeId()), inputDescs (describePorts (op, portsIn)),
      outputDescs (describePorts (op, portsOut))
{
    setId (op.getId());

    inputSources.setDefault (0);
    inputSources.resize (getNumPorts (portsIn));
    inputSourcePorts.setDefault (-1);
    inputSourcePorts.resize (getNumPorts (portsIn));
}

MVOperator_proxy::MVOperator_proxy (const MVOperator_proxy& other) = default;

MVOperator_proxy::PortDescs MVOperator_proxy::describePorts (const MVOperator& op, int direction)
{
    PortDescs descs;
    for (int port = 0; port < op.getNumPorts (direction); ++port)
        descs.add (op.getPortDesc (direction, port));
    return descs;
}

MVSmartPtr<MVString> MVOperator_proxy::getPortDesc (int direction, int port) const
{
    if ((direction != portsIn && direction != portsOut) || port < 0)
        return {};

    const PortDescs& descs = direction == portsIn ? inputDescs : outputDescs;
    if (port >= descs.size() || ! descs[port])
        return {};
    return makeSmart<MVString> (*descs[port]);
}

void MVOperator_proxy::setInputSource (int input, std::uint64_t sourceId, int sourcePort)
{
    if (input < 0 || input >= getNumPorts (portsIn))
        return;

    inputSources[input] = sourceId;
    inputSourcePorts[input] = sourcePort;
}

} // namespace morvanelab
