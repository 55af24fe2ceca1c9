// SPDX-License-Identifier: GPL-3.0-or-later
#include "network/MVNetNode.h"

#include <algorithm>

namespace morvanelab
{

MVNetNode::MVNetNode()
{
    inputScales.setDefault (1.0);
    inputControls.setDefault (-1);
}

MVNetNode::MVNetNode (const MVNetNode& other)
    : MVObject (other), numOutputs (other.numOutputs), numInputs (other.numInputs), inputScales (other.inputScales),
      inputControls (other.inputControls)
{
}

MVObject* MVNetNode::clone() const { return new MVNetNode (*this); }

void MVNetNode::setVisited (bool mark) { visited = mark; }

MVSmartPtr<MVString> MVNetNode::getPortDesc (int, int) const { return {}; }

bool MVNetNode::setNumPorts (int direction, int count)
{
    const int limited = std::clamp (count, 0, maxPorts);

    if (direction == portsIn)
    {
        numInputs = limited;
        inputScales.resize (limited);
        inputControls.resize (limited);
    }
    else if (direction == portsOut)
    {
        numOutputs = limited;
    }

    return true;
}

int MVNetNode::getNumPorts (int direction) const
{
    if (direction == portsIn)
        return numInputs;
    return direction == portsOut ? numOutputs : 0;
}

void MVNetNode::setInputScale (int input, double scale)
{
    if (input < maxPorts)
        inputScales.setItem (input, scale);
}

double MVNetNode::getInputScale (int input) const { return inputScales.itemAt (input); }

void MVNetNode::setInputControl (int input, int controlId)
{
    if (input < maxPorts)
        inputControls.setItem (input, controlId);
}

int MVNetNode::getInputControl (int input) const { return inputControls.itemAt (input); }

} // namespace morvanelab
