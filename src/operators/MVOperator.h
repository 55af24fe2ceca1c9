// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVRiffPacker.h"
#include "foundation/MVSmartPtr.h"
#include "foundation/MVString.h"
#include "foundation/MVVector.h"
#include "network/MVNetNode.h"
#include "operators/MVOpExecDesc.h"
#include "operators/MVOpMonitors.h"
#include "operators/MVRenderEngineAttributes.h"
#include "operators/OperatorSpec.h"
#include "operators/PortControlTrack.h"

#include <memory>
#include <vector>

namespace morvanelab
{

/** Whether the stored "op  " list holds an attribute record that the class can read. */
bool hasStoredRecord (const OperatorSpec& spec, const MVSmartPtr<MVRiffPacker>& storedChunk);

/** A node of a patch that makes or shapes sound.

    Everything constant about a class stands in its OperatorSpec, which this class reads: texts, port names,
    parameters, the stored form. A concrete class adds its run-time state, process, and the few hooks it needs;
    see MVOpWithAttributes.

    Threads: process, noteEvent, noteStart, release, reset and isFinished belong to the audio thread. Everything
    else, the parameter setters included, is called while the audio is excluded. No operator takes a lock, and
    process allocates nothing. */
class MVOperator : public MVNetNode
{
public:
    /** A node of no class: no ports, no parameters, process serves the monitors only. */
    explicit MVOperator (MVRenderEngineAttributes* attributes);
    /** Copies parameters, ports, state and monitors. The copy takes a fresh identity. */
    MVOperator (const MVOperator& other);
    ~MVOperator() override;

    MVOperator* clone() const override { return new MVOperator (*this); }
    const char* className() const override { return operatorSpec->className; }
    std::uint32_t typeId() const override { return operatorSpec->typeId; }
    /** Returns the run-time state to its start; parameters stay. */
    void reset() override {}
    /** Stores the flag, clears released and looks the tracked controls up; a concrete class prepares its
        run-time state for the current sample rate. */
    void setActive (bool flag) override;

    const OperatorSpec& getSpec() const { return *operatorSpec; }
    const char* shortName() const { return operatorSpec->shortName; }
    const char* description() const { return operatorSpec->description; }

    /** The attribute record, byte for byte what a patch stores; null and 0 for a class without one. */
    virtual void* attributeData() { return nullptr; }
    const void* attributeData() const { return const_cast<MVOperator*> (this)->attributeData(); }
    virtual int attributeSize() const { return 0; }
    /** Takes over a record of attributeSize bytes (null: keeps the present one), folds every value into its
        limits and computes what derives from them. Never fails. */
    virtual void setAttributes (const void* block);

    // Ports. Direction is 1 for inputs and 2 for outputs.

    /** A new text, or null for no such port. */
    virtual MVSmartPtr<MVString> portName (int direction, int port) const;
    MVSmartPtr<MVString> getPortDesc (int direction, int port) const override { return portName (direction, port); }
    /** Asks for a number of ports; false if the class refuses. */
    virtual bool setPortCount (int, int) { return false; }
    bool setNumPorts (int direction, int count) override { return setPortCount (direction, count); }
    int portCount (int direction) const { return getNumPorts (direction); }
    /** Whether the number of ports is up to the user and may still grow. */
    virtual bool canSetPortCount (int) const { return false; }
    /** Whether process reads only the first sample of the input's block, or takes it as control data. */
    virtual bool isControlInput (int port) const;
    virtual bool isSinkNode() const { return false; }

    // Run time.

    /** Renders one block: every output is fully written. inputs and outputs hold one array of frames doubles a
        port, never null; frames is at most 256 and above 0. desc tells which inputs are connected. A concrete
        class ends with this base operation, which serves the monitors.
        An output operator is given the mix channels as outputs and adds to them; an input operator is given the
        host's channels as inputs. */
    virtual void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                          int frames, const MVOpExecDesc& desc);
    /** The control values that the inputs' control entries index; not owned, may be null. */
    virtual void setControlValues (const MVVector<MVControlValue*>* values);
    /** Looks up the controls of tracked inputs again, after input controls or their vector changed. Tracks of an
        inactive operator have none. Keeps the tracked values. */
    virtual void refreshControls() {}
    virtual void setPitchBendControl (MVControlValue*) {}
    /** A MIDI key event of this voice; velocity 0 is a note off. */
    virtual void noteEvent (int key, double velocity);
    virtual void noteStart (double velocity);
    /** The voice was released. */
    virtual void release() { released = true; }
    /** Whether this operator lets its voice end. */
    virtual bool isFinished() const { return true; }

    /** Bytes that this operator takes while active, itself included; the bound on a patch's memory counts them
        before anything is activated. */
    virtual std::size_t runtimeBytes() const { return 0; }

    /** A new "op  " list: class, record, identity, version and inputs. */
    virtual MVSmartPtr<MVRiffPacker> pack() const;

    // Parameters. Indices outside 0 to parameterCount() - 1, and a parameter of another kind, give the value
    // stated: type None, texts null, numbers 0, setters 17.

    int parameterCount() const { return static_cast<int> (operatorSpec->parameters.size()); }
    const char* parameterName (int index) const;
    const char* parameterDescription (int index) const;
    MVParameterType parameterType (int index) const;
    MVIRange parameterIntRange (int index) const;
    MVFRange parameterFloatRange (int index) const;
    /** Every scalar parameter has a default; a sequence or curve has none, nor has a choice without choices. */
    bool parameterHasDefault (int index) const;
    /** The value of a new operator (of a choice its stored value); -1.0 without a default. */
    double parameterDefault (int index) const;
    /** Number of choices; all bits set if the parameter is no choice. */
    std::uint32_t choiceCount (int index) const;
    /** Stored value of the choice at a position. */
    int choiceValue (int index, int position) const;
    const char* choiceName (int index, int position) const;

    int intParameter (int index) const;
    double floatParameter (int index) const;
    bool boolParameter (int index) const;
    /** Position in the list of choices, not the stored value. */
    int choiceParameter (int index) const;
    /** Gives the points of a curve as pairs x, y, and returns their number. The values stay valid until the next
        call of either getter. */
    int curveParameter (int index, const double*& values) const;
    /** Gives the values of a sequence and returns their number, 16. */
    int sequenceParameter (int index, const double*& values) const;

    // Setters return 1, or 17 (the class may have a code of its own) and change nothing. A value must not be
    // below the lower limit and must be below the upper limit, which itself is refused.

    int setIntParameter (int index, int value);
    int setFloatParameter (int index, double value);
    int setBoolParameter (int index, bool value);
    /** Chooses by position. */
    int setChoiceParameter (int index, int position);
    /** count points as pairs x, y; 2 to 16. */
    int setCurveParameter (int index, int count, const double* points);
    /** The first count values; at most 16. */
    int setSequenceParameter (int index, int count, const double* values);

    void setMonitorsEnabled (bool flag) { monitorsEnabled = flag; }
    /** The callback tables; made at the first call, which allocates. */
    MVOpMonitors& getMonitors();

    bool isReleased() const { return released; }
    bool isEvolving() const { return evolving; }

protected:
    /** For concrete classes: ports of a new operator, then identity, scales and control entries of the chunk. */
    MVOperator (const OperatorSpec& spec, MVRenderEngineAttributes* attributes,
                const MVSmartPtr<MVRiffPacker>& storedChunk);

    /** Fills the record from the chunk's "attr", or with initial values. */
    void readRecord (const MVSmartPtr<MVRiffPacker>& storedChunk, void* record) const;
    /** Computes what derives from the record; runs at the end of setAttributes. May allocate. */
    virtual void attributesChanged() {}

    /** Stores a number of ports, taken into 0 to 16, without asking. */
    void changePortCount (int direction, int count);

    /** The control of an input, or null. Two reads; fit for every block. */
    const MVControlValue* controlOfInput (int port) const;
    /** Its current value, or 1.0 without a control. */
    double controlFactor (int port) const;
    /** The control that a track of the input follows: none while inactive. */
    const MVControlValue* trackedControl (int port) const { return isActive() ? controlOfInput (port) : nullptr; }

    double sampleRate() const { return attributes->sampleRate; }

    MVRenderEngineAttributes* attributes; ///< not owned
    const MVVector<MVControlValue*>* controlValues = nullptr;
    bool released = false;
    bool evolving = false;

private:
    const ParameterSpec* parameterOf (int index, MVParameterType type) const;
    int storeNumber (const ParameterSpec& parameter, double value);
    int storeList (int index, MVParameterType type, int count, const double* values, int lowest);
    int exchangeList (int index, MVParameterType type, const double*& values) const;
    void readInputs (const MVRiffPacker& chunk);

    const OperatorSpec* operatorSpec;
    bool monitorsEnabled = true;
    std::unique_ptr<MVOpMonitors> monitors;
    mutable std::vector<double> exchangedList;
};

} // namespace morvanelab
