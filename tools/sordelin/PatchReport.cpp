// SPDX-License-Identifier: GPL-3.0-or-later
#include "PatchReport.h"

#include "engine/MVPolyPatch.h"
#include "foundation/MVException.h"
#include "foundation/MVResult.h"
#include "operators/MVOperator.h"
#include "operators/MVOperatorTable.h"
#include "operators/MVRenderEngineAttributes.h"

namespace morvanelab
{

namespace
{

constexpr int layer = 0;
constexpr int numHostChannels = 2;

std::string number (int value) { return std::to_string (value); }

class Report
{
public:
    explicit Report (MVPolyPatch& loaded) : patch (loaded) {}

    std::string write()
    {
        writeOperators();
        writeRoutes();
        text += "root: "
                + (patch.rootNode (layer) < 0 ? std::string ("none: the patch has no output and never plays")
                                              : nodeText (patch.rootNode (layer)))
                + "\n";
        if (patch.rootNode (layer) >= 0)
            writeOrder();
        return text;
    }

private:
    MVOperator* operatorAt (int node) const { return dynamic_cast<MVOperator*> (patch.nodeAt (layer, node)); }

    std::string nodeText (int node) const
    {
        const MVOperator* const op = operatorAt (node);
        return number (node) + " " + (op != nullptr ? op->shortName() : "(missing)");
    }

    std::string portText (int node, int direction, int port) const
    {
        const MVOperator* const op = operatorAt (node);
        const auto name = op != nullptr ? op->portName (direction, port) : MVSmartPtr<MVString>();
        return number (port) + (name != nullptr ? " \"" + std::string (name->view()) + "\"" : "");
    }

    void writeOperators()
    {
        text += "operators: " + number (patch.numNodes (layer)) + "\n";
        for (int node = 0; node < patch.numNodes (layer); ++node)
        {
            const MVOperator* const op = operatorAt (node);
            text += "  " + nodeText (node);
            if (op != nullptr)
                text += "  inputs " + number (op->getNumPorts (portsIn)) + "  outputs "
                        + number (op->getNumPorts (portsOut));
            text += "\n";
        }
    }

    void writeRoutes()
    {
        text += "routes: " + number (patch.numRoutes (layer)) + "\n";
        for (int i = 0; i < patch.numRoutes (layer); ++i)
        {
            const MVNetRoute* const route = patch.routeAt (layer, i);
            text += "  " + nodeText (route->srcNode) + ", output " + portText (route->srcNode, portsOut, route->srcPort)
                    + " -> " + nodeText (route->dstNode) + ", input "
                    + portText (route->dstNode, portsIn, route->dstPort) + "\n";
        }
    }

    void writeOrder()
    {
        const auto info = patch.computeExecutionOrder (layer, patch.rootNode (layer));
        text += "execution order: " + number (info->numExecDescs()) + " of " + number (patch.numNodes (layer))
                + " operators, " + number (info->getBufferCount()) + " buffers\n";

        std::string feedback;
        for (int i = 0; i < info->numExecDescs(); ++i)
        {
            const MVNodeExecDesc* const desc = info->execDescAt (i);
            text += "  " + nodeText (desc->nodeIndex) + "\n";

            // As the voices bind them: flag number n belongs to port n.
            for (int port = 0; port < desc->inputSrcNode.size(); ++port)
                if (desc->inputSrcNode.itemAt (port) >= 0 && desc->inputFeedback.itemAt (port))
                    feedback += "  " + nodeText (desc->nodeIndex) + ", input "
                                + portText (desc->nodeIndex, portsIn, port) + " from "
                                + nodeText (desc->inputSrcNode.itemAt (port)) + "\n";
        }

        text += "feedback inputs, one block late:" + (feedback.empty() ? std::string (" none\n") : "\n" + feedback);
    }

    MVPolyPatch& patch;
    std::string text;
};

} // namespace

std::string patchReport (MVSmartPtr<MVRiffPacker> tree)
{
    MVRenderEngineAttributes attributes;
    attributes.numInputChannels = numHostChannels;
    attributes.numOutputChannels = numHostChannels;
    registerOperators (attributes);

    MVPolyPatch patch (&attributes);
    patch.parsePatch (tree, layer);
    if (! patch.hasPatch (layer))
        throw MVException (resultFailed, "Error:  Invalid patch data.");
    return Report (patch).write();
}

} // namespace morvanelab
