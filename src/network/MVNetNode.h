// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVObject.h"
#include "foundation/MVSmartPtr.h"
#include "foundation/MVString.h"
#include "foundation/MVVector.h"

namespace morvanelab
{

/** Directions of a port, as the port operations take them. Any other number names no ports. */
enum PORT_DIRECTION_t : int
{
    portsIn = 1,
    portsOut = 2
};

/** One vertex of a network: port counts, and for each input a scale and a control. Knows nothing about audio.

    No operation fails on a bad index: reads yield the default, writes are ignored. No lock: a node is changed
    only while its network is not being run. */
class MVNetNode : public MVObject
{
public:
    /** Port counts come from stored data; no more than this many ports exist in one direction. */
    static constexpr int maxPorts = 64;

    MVNetNode();
    /** The same ports, scales and controls under a fresh identity; the copy is not visited. */
    MVNetNode (const MVNetNode& other);

    MVObject* clone() const override;
    const char* className() const override { return "MVNetNode"; }

    /** Scratch mark of graph walks. */
    virtual void setVisited (bool mark);
    /** Name of a port, or an empty pointer. The base class describes none. */
    virtual MVSmartPtr<MVString> getPortDesc (int direction, int port) const;
    /** Sets a port count, taken into 0 to maxPorts. New inputs get scale 1.0 and no control; the entries of
        inputs that no longer exist are dropped. Returns true, also for an unknown direction, which changes nothing. */
    virtual bool setNumPorts (int direction, int count);
    /** 0 for an unknown direction. */
    virtual int getNumPorts (int direction) const;
    /** Stores the scale of an input; the list grows up to maxPorts, beyond which nothing happens. */
    virtual void setInputScale (int input, double scale);
    /** 1.0 for an input that has no entry. */
    virtual double getInputScale (int input) const;
    /** Stores the control of an input, -1 for none; grows as setInputScale does. */
    virtual void setInputControl (int input, int controlId);
    /** -1 for an input that has no entry. */
    virtual int getInputControl (int input) const;
    /** Always false. */
    virtual bool nodeQuery() { return false; }

    bool isVisited() const { return visited; }

private:
    int numOutputs = 0;
    int numInputs = 0;
    MVVector<double> inputScales;
    MVVector<int> inputControls;
    bool visited = false;
};

} // namespace morvanelab
