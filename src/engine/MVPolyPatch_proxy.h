// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVSmartPtr.h"
#include "foundation/MVString.h"
#include "foundation/MVVector.h"
#include "network/MVNetwork.h"

#include <atomic>
#include <cstdint>

namespace morvanelab
{

class MVPolyPatch;

/** A snapshot of one layer of a voice: nodes, routes, texts and which parameters are in use, but no signal code.
    It shares nothing with the voice and keeps the operators' identities, so that a user interface can show a patch
    while it plays and name its nodes to setOperatorAttribute.

    Nothing changes a snapshot once it is made, so any thread may read it. Nodes and routes are in the sub-network
    getLayer(); those before it are empty. */
class MVPolyPatch_proxy : public MVNetwork
{
public:
    /** What getNodeType tells of a node that is not there. */
    static constexpr std::uint32_t unknownType = 0xA7001D;

    /** Copies a layer from 0 to numLayers() - 1 of a voice that nothing changes meanwhile. */
    MVPolyPatch_proxy (const MVPolyPatch& voice, int layerToCopy);
    MVPolyPatch_proxy (const MVPolyPatch_proxy&) = delete;

    MVObject* clone() const override { return nullptr; }
    const char* className() const override { return "MVPolyPatch_proxy"; }

    int getLayer() const { return layer; }
    /** Nodes of the layer. */
    int getNumNodes() const { return numNodes (layer); }
    /** The class of an operator, unknownType without such a node. */
    std::uint32_t getNodeType (std::uint64_t nodeId) const;
    /** 0 without such a node. */
    std::uint64_t getNodeIdAt (int index) const;
    /** Index of the output operator, -1 if the layer has none. */
    int getRootNode() const { return rootNode; }
    /** Whether an input of a playing layer listened to the parameter control; false out of range. */
    bool isParameterInUse (int index) const;
    /** The text that the patch gives a variable, and its length; null and 0 if it has none or past the end. The
        text lives as long as the snapshot. */
    const char* getVariableName (int index, int& length) const { return textAt (variableNames, index, length); }
    const char* getVariableDesc (int index, int& length) const { return textAt (variableDescs, index, length); }

    /** Whether somebody has acquired it and not released it since; counted, so that several may. Any thread. */
    bool inUse() const { return users.load (std::memory_order_relaxed) > 0; }
    void acquire() { users.fetch_add (1, std::memory_order_relaxed); }
    /** Without an acquire before does nothing. Acquire and release are not called at one time. */
    void release();

private:
    using Texts = MVVector<MVSmartPtr<MVString>>;

    static const char* textAt (const Texts& texts, int index, int& length);
    void copyVariables (const MVPolyPatch& voice);
    void copyNodes (const MVPolyPatch& voice);
    void copyRoutes (const MVPolyPatch& voice);

    const int layer;
    MVVector<unsigned char> parameterInUse;
    int rootNode = -1;
    std::atomic<int> users { 0 };
    Texts variableNames;
    Texts variableDescs;
};

} // namespace morvanelab
