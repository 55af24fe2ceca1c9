// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVObject.h"
#include "foundation/MVVector.h"
#include "network/MVNodeExecDesc.h"

namespace morvanelab
{

/** A compiled sub-network: the nodes that can reach the root, in the order in which they run, with a numbered
    signal buffer for every output port. A snapshot: editing the network afterwards does not touch it. */
class MVNetworkInfo : public MVObject
{
public:
    MVNetworkInfo();
    /** Clones every descriptor in order; the copy starts to hand out buffers from 0 again. */
    MVNetworkInfo (const MVNetworkInfo& other);
    ~MVNetworkInfo() override;

    MVObject* clone() const override;
    const char* className() const override { return "MVNetworkInfo"; }

    /** Inserts a new descriptor at the front of the list and returns it; the list owns it. */
    virtual MVNodeExecDesc* addExecDesc();
    /** The network's route signature at the time of compiling. */
    virtual int getSignature() const { return signature; }
    virtual void setSignature (int value) { signature = value; }
    virtual int numExecDescs() const { return execDescs.size(); }
    /** The descriptor, or null out of range. */
    virtual MVNodeExecDesc* execDescAt (int index) const { return execDescs.itemAt (index); }
    virtual bool containsNode (int nodeIndex) const;
    virtual void addBuffers (int count) { bufferCount += count; }
    /** The next free buffer number; counts up from 0 in a new description and in a copy. */
    virtual int takeBuffer() { return nextBuffer++; }
    virtual int getBufferCount() const { return bufferCount; }

protected:
    /** Inserts at the front and takes ownership; for derived descriptions with descriptors of their own class. */
    void insertAtFront (MVNodeExecDesc* desc) { execDescs.insert (0, desc); }

private:
    MVVector<MVNodeExecDesc*> execDescs;
    int signature = 0;
    int reserved = 0;
    int bufferCount = 0;
    int nextBuffer = 0;
};

} // namespace morvanelab
