// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "control/MVControlManager.h"
#include "operators/MVOperator.h"
#include "operators/MVOperatorTable.h"
#include "operators/MVRenderEngineAttributes.h"

#include <array>
#include <memory>
#include <vector>

namespace morvanelab::test
{

/** Stands in for the engine: control values, and the buffers and descriptor of one operator. Input n of a rig counts
    as connected once a signal was given for it. */
class OperatorRig
{
public:
    static constexpr int controlCount = 20;

    explicit OperatorRig (const OperatorSpec& spec, const MVSmartPtr<MVRiffPacker>& storedChunk = {});
    /** Runs a clone of the host's operator on the same signals; the clone brings its own controls. */
    OperatorRig (OperatorRig& host, MVOperator* cloneToOwn);

    MVOperator& op() { return *owned; }
    MVRenderEngineAttributes& attributes() { return *shared; }

    /** Sets the signal of an input for all further blocks and connects it. */
    void setInput (int port, double value);
    void setInput (int port, const std::vector<double>& block);
    void connect (int port, bool connected);
    /** Writes a control value and makes it current. */
    void setControl (int index, double value);
    MVControlValue* control (int index) { return (*controls)[index]; }
    /** Lets an input follow a control. */
    void follow (int port, int controlIndex);

    void activate() { owned->setActive (true); }
    /** One block into fresh outputs: not-a-number where the operator has to write, zero where it adds. */
    void process (int frames = blockFrames);
    const double* output (int port) const { return outputBuffers[static_cast<std::size_t> (port)].data(); }
    /** The next blocks, all outputs one after another. */
    std::vector<double> render (int blocks, int frames = blockFrames);
    bool allFinite (int frames = blockFrames) const;
    int numOutputs() const;

    double* const* inputPointers() { return inputs.data(); }
    double* const* outputPointers() { return outputs.data(); }
    MVOpExecDesc& descriptor() { return desc; }
    /** What process is given as inputs and outputs: ports, or the channels of an input or output operator. */
    int numInputs() const;

private:
    using Buffer = std::array<double, blockFrames>;

    void prepare();

    std::shared_ptr<MVRenderEngineAttributes> shared;
    std::shared_ptr<MVControlManager> manager;
    std::shared_ptr<MVVector<MVControlValue*>> controls;
    std::unique_ptr<MVOperator> owned;
    std::array<Buffer, maxOperatorPorts> inputBuffers {};
    std::array<Buffer, maxOperatorPorts> outputBuffers {};
    std::array<double*, maxOperatorPorts> inputs {};
    std::array<double*, maxOperatorPorts> outputs {};
    MVOpExecDesc desc;
};

constexpr std::uint32_t outputTypeId = 0xA70006;
constexpr std::uint32_t inputTypeId = 0xA7000C;

/** The OperatorSpec of a class that the table holds. */
const OperatorSpec& specOf (const char* className);

/** A stored operator list with these chunks; a null record leaves "attr" out, a negative number "ver ". */
MVSmartPtr<MVRiffPacker> storedOperator (std::uint32_t typeId, const void* record, int recordSize, int major = 1,
                                         int minor = 4, int revision = 0);

} // namespace morvanelab::test
