// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/MVPolyPatchInfo.h"
#include "foundation/MVDataBlock.h"
#include "foundation/MVRiffPacker.h"
#include "foundation/MVString.h"
#include "foundation/MVVector.h"
#include "network/MVNetwork.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace morvanelab
{

class MVControlValue;
class MVOpExecDesc;
class MVOperator;
class MVRenderEngineAttributes;

/** State of one layer of one voice. */
enum PATCH_STATE_t : int
{
    PATCH_RUNNING = 0,  ///< its operators run on every block
    PATCH_STOPPING = 1, ///< it no longer counts after the next block's end
    PATCH_STOPPED = 2   ///< idle, and what a new layer starts with
};

/** One voice: a network of operators whose sub-networks are layers, each holding one patch.

    A voice owns the sample memory of its layers. Every output port has a buffer of 512 doubles whose two halves
    take turns block by block, and every port pointer is bound once, at activation: in one block an ordinary input
    points at the half that its source writes in that block, a feedback input at the half written in the block
    before. Routes therefore move no samples, and every edge marked as feedback is exactly one block late.

    The last layer is the back buffer of patch loads: it plays only while an old patch fades out in it.

    Threads: render, noteOn, releaseOperators, allOperatorsFinished and resetPatchStates belong to whoever holds
    the audio lock of the attributes. So do all changes to a layer that is not stopped. A stopped last layer is
    not touched by the audio thread, so it may be loaded and activated while the other layers play; whoever reads
    or writes it takes the voice lock of the renderer. Editing nodes or routes of an active layer is followed by
    activateLayer before the audio may run again. */
class MVPolyPatch : public MVNetwork
{
public:
    static constexpr int maxLayers = 4;
    static constexpr int maxOutputChannels = 8;
    static constexpr int blockSize = 256;
    static constexpr int bufferSize = 2 * blockSize;
    static constexpr int numVariables = 16;
    static constexpr int maxVariableNameLength = 18;
    static constexpr int maxOperators = 4096;

    /** A voice of as many empty layers as the attributes say, 1 to 4. The attributes are not owned. */
    explicit MVPolyPatch (MVRenderEngineAttributes* renderAttributes);
    ~MVPolyPatch() override;
    MVPolyPatch (const MVPolyPatch&) = delete;

    const char* className() const override { return "MVPolyPatch"; }
    /** Resets operators and routes, silences all signal memory and starts again with phase 0. */
    void reset() override;

    // Extensions of MVNetwork ---------------------------------------------------------------------------------

    /** Empties the layer: nodes, routes, description, root, fade and texts; frees its signal memory. */
    void clearSubnet (int layer) override;
    MVSmartPtr<MVNetworkInfo> createNetworkInfo() override;
    /** Exchanges two layers with everything they hold: a running layer runs on under its new number. */
    void swapSubnets (int a, int b) override;
    /** Frees the layer's signal memory; with on and a description, allocates and binds it anew (zeroed) and
        activates the operators. May throw std::bad_alloc. */
    void setSubnetActive (int layer, bool on) override;

    // Preparing and loading -----------------------------------------------------------------------------------

    /** With false, notes which layers run and frees the fade buffers. With true, allocates those (one per output
        channel of the attributes, 8 at most) and starts the layers noted as running. Starts with phase 0. */
    virtual void prepareBuffers (bool on);
    /** Ends a fade's counting and zeroes the layer's signal memory, if it has any. */
    virtual void clearSignalBuffers (int layer);

    /** Loads a patch from an MVDataBlock (with checksum) or an MVRiffPacker and takes over the reference.
        Returns 14 for empty data, else 1. A damaged tree or another object leaves the layer as it was, so callers
        look at hasPatch afterwards; throws MVException as parsePatch does. */
    virtual int loadPatch (MVSmartPtr<MVObject>& data, int layer);
    /** Prepares a layer to be started: activates it if this voice is active or the layer has no description, and
        deals out controls where the patch asks for that. */
    virtual void activateLayer (int layer);
    /** Mends a patch whose connections were lost: wires a node into an output that has no audio input, and stray
        nodes into free inputs until at least minNodes are reached. Returns whether the patch can play. */
    virtual bool repairPatch (int layer, int rootNodeIndex, int minNodes, bool assign);
    /** Deals parameter controls 0, 1, 2 ... out to the control inputs with a scale of at least 0.05, from the root
        on; an input scaled below 0.05 loses its control. The operators then look their controls up again. */
    virtual void assignInputControls (int layer);
    /** The layer as a new tree "ptch"; an empty pointer if it has no nodes. */
    virtual MVSmartPtr<MVRiffPacker> savePatch (int layer);
    virtual bool hasPatch (int layer) const { return numNodes (layer) > 0; }

    // Running -------------------------------------------------------------------------------------------------

    /** Runs one block of every running layer and adds their outputs into out. numSamples is at most 256.
        extra is passed on by callers and read by nobody. Takes no lock and allocates nothing. Audio thread. */
    virtual void render (int numIn, const double* const* in, int numOut, double* const* out, int numSamples,
                         std::int64_t extra);
    /** Lets the operators serve their level and block callbacks or not. */
    virtual void setMonitoringEnabled (bool on);
    /** Passes a key and a velocity (0 to 1; 0 is a note off) to every operator of each running layer. */
    virtual void noteOn (int key, double velocity);
    /** The operators that are there look their controls up again. The audio is excluded, and the vectors stay
        owned by the renderer. */
    virtual void setActivatorControl (MVControlValue* control);
    virtual void setLayerFadeControls (MVVector<MVControlValue*>* controls) { layerFadeControls = controls; }
    virtual void setParameterControls (MVVector<MVControlValue*>* controls);

    /** Whether an input of a layer that is not stopped is driven by the parameter control; the last layer does
        not count. */
    virtual bool isControlInUse (int controlId) const;
    virtual bool isControlUsedInLayer (int layer, int controlId) const;
    /** Moves the layer's inputs onto the lowest parameter controls, in order, so that no unused one stands
        before a used one. */
    virtual void compactControls (int layer);
    /** Tells every operator that the voice was released. A stopped last layer is left alone. */
    virtual void releaseOperators();
    /** True when every operator that runs in a described layer allows the voice to end. A stopped last layer does
        not count: it may be under construction. */
    virtual bool allOperatorsFinished() const;
    /** Reads a tree "ptch" into the layer and takes over the reference. Returns 1. Throws MVException with code 9
        and the text for the user on bad structure, leaving the layer partly filled. */
    virtual int parsePatch (MVSmartPtr<MVRiffPacker>& riff, int layer);

    // Layers --------------------------------------------------------------------------------------------------

    int numLayers() const { return layerCount; }
    /** Index of the layer's output operator, -1 if it has none. */
    int rootNode (int layer) const;
    PATCH_STATE_t patchState (int layer) const;
    bool hasDescription (int layer) const;
    /** Starts a layer, stops it at once (fadeBlocks 0) or fades it out over blocks of 256 samples.
        A layer without a description is always stopped. */
    void setPatchPlaying (int layer, int fadeBlocks, bool play);
    /** Starts to fade out over a number of blocks. During a fade it only shortens what is left, from the present
        gain. */
    void beginFade (int layer, int fadeBlocks);
    /** Marks every layer that holds a description as running. The last layer keeps its state: what fades out
        there must not start again. */
    void resetPatchStates();
    void clearLayer (int layer);
    int getLastKey() const { return lastKey; }

    /** The texts a patch gives its variables; empty for an index or layer that does not exist. */
    MVString variableName (int layer, int index) const;
    MVString variableDescription (int layer, int index) const;

    /** Bytes of heap that a layer takes once it is active: its signal memory (counted from its description) and
        what the operators take while they are active. */
    std::size_t memoryNeeded (int layer) const;

    // Operators -----------------------------------------------------------------------------------------------

    /** Sets one parameter of the operator with that identity; a negative layer means any. kind is a MVParameterType;
       curves and sequences take their doubles from data, the others value. Returns the setter's code, 31 for an unknown
       kind, 1 if there is no such operator. */
    int setOperatorAttribute (int layer, std::uint64_t nodeId, int attribute, int kind, double value,
                              MVDataBlock* data);

    /** Level settings of the output operator: the getters read the first layer that is not stopped and has an
        output (0.0 if there is none), the setters write the outputs of all layers. */
    double getOutputVolume() const;
    void setOutputVolume (double value);
    double getCompressorRollOff() const;
    void setCompressorRollOff (double value);
    double getCompressorThreshold() const;
    void setCompressorThreshold (double value);

private:
    struct Fade
    {
        bool fading = false;
        int blocksLeft = -1; ///< -1 when idle
        double step = 1.0;   ///< gain per block left
    };

    struct Texts
    {
        std::array<MVString, numVariables> names;
        std::array<MVString, numVariables> descriptions;
    };

    /** How a step's operator is connected beyond its own ports. */
    enum STEP_KIND_t : int
    {
        stepPlain,
        stepOutput, ///< writes to the renderer's channels
        stepInput   ///< reads the host's channels
    };

    /** One bound entry of the execution list. */
    struct Step
    {
        MVOperator* op;
        MVOpExecDesc* desc;
        STEP_KIND_t kind;
    };

    /** What a layer holds beyond its nodes and routes; it moves with the layer when two are swapped. */
    struct Content
    {
        int root = -1;
        Fade fade;
        std::unique_ptr<double[]> signalMemory;
        int signalMemorySize = 0; ///< in doubles
        /** The description whose pointers point into signalMemory, and its entries in order. Empty while nothing is
            bound, whatever description the network has stored. */
        MVSmartPtr<MVNetworkInfo> bound;
        std::vector<Step> steps;
        std::unique_ptr<Texts> texts = std::make_unique<Texts>();
    };

    struct Layer
    {
        std::atomic<PATCH_STATE_t> state { PATCH_STOPPED };
        Content content;
    };

    bool isLayer (int layer) const { return layer >= 0 && layer < layerCount; }
    Layer& layerAt (int layer) { return layers[static_cast<std::size_t> (layer)]; }
    const Layer& layerAt (int layer) const { return layers[static_cast<std::size_t> (layer)]; }
    bool isIdleBackBuffer (int layer) const;
    MVOperator* operatorAt (int layer, int index) const;
    MVOperator* playingOutput() const;
    double outputParameter (int parameter) const;
    void setOutputParameter (int parameter, double value);

    void bindBuffers (int layer, bool on);
    void bindOutputs (const Content& content, MVOpExecDesc& desc) const;
    void bindInputs (const Content& content, MVOpExecDesc& desc, const std::vector<const MVNodeExecDesc*>& byNode);
    void renderFadingOutput (Layer& layer, const Step& step, int numOut, double* const* out, int frames);
    static void endFade (Layer& layer);
    void passControls();
    void passControlsTo (MVOperator& op) const;
    void refreshControls (int layer);
    void assignControl (int layer, const MVNetRoute& route, int& next);

    void readTexts (const MVRiffPacker& riff, Texts& texts) const;
    void readOperators (const std::vector<MVSmartPtr<MVRiffPacker>>& chunks, int layer);
    std::unique_ptr<MVOperator> makeOperator (const MVSmartPtr<MVRiffPacker>& chunk, int layer, int index);
    void readRoutes (const MVRiffPacker& chunk, int layer, int index);
    bool hasSignalPath (int layer, int root) const;
    bool connectNeighbour (int layer, int root);

    MVRenderEngineAttributes* attributes;
    const int layerCount;
    std::array<Layer, maxLayers> layers;
    std::array<PATCH_STATE_t, maxLayers> savedStates;
    /** Layers run one after the other, so one set serves the fades of all. */
    std::array<std::unique_ptr<double[]>, maxOutputChannels> fadeBuffers;
    std::array<double*, maxOutputChannels> fadeChannels {};
    int numFadeChannels = 0;
    int phase = 0;
    int lastKey = 0;
    std::int32_t autoAssignControls = 0;
    MVControlValue* activatorControl = nullptr;
    MVVector<MVControlValue*>* layerFadeControls = nullptr;
    MVVector<MVControlValue*>* parameterControls = nullptr;
};

} // namespace morvanelab
