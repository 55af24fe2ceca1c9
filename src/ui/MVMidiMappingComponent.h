// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVKnob.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace morvanelab
{

/** Who keeps the controller mappings: the engine's side of MVMidiMappingComponent. Message thread. */
class MVMidiMappingTarget
{
public:
    struct Mapping
    {
        int channel = -1; ///< 0 to 15, -1 if none
        int controller = -1;

        bool exists() const { return channel >= 0 && controller >= 0; }
        bool operator== (const Mapping&) const = default;
    };

    virtual ~MVMidiMappingTarget() = default;

    /** Takes the MIDI bytes that have arrived since the last call, at most room of them. */
    virtual int takeMidiData (std::uint8_t* out, int room) = 0;
    /** Whether arriving MIDI goes to takeMidiData instead of the engine. Switching on forgets what came
        before. */
    virtual void setMappingActive (bool on) = 0;
    /** Lets the first controller message in the bytes drive this control value and nothing else. Returns whether there
        was one. */
    virtual bool mapControlFromData (std::uint16_t controlId, const std::uint8_t* bytes, int count) = 0;
    virtual void unmapControl (std::uint16_t controlId) = 0;
    /** The mapping of a control value; none exists if it has none. */
    virtual Mapping mappingOf (std::uint16_t controlId) const = 0;
};

/** A component whose knobs can be driven by MIDI controllers. In mapping mode a click on a knob chooses it, and the
   first controller that moves from then on drives it; each knob shows the controller that is mapped to it. Message
   thread. */
class MVMidiMappingComponent : public juce::Component, private juce::Timer
{
public:
    /** The target outlives the component. */
    explicit MVMidiMappingComponent (MVMidiMappingTarget& target);
    ~MVMidiMappingComponent() override;

    /** Enters a knob that drives a control value. A knob entered again changes its control value. Neither the control
        value nor the knob is looked at before it is used; the knob must outlive the component or be released. */
    void registerChildCCReceiver (std::uint16_t controlId, MVKnob& knob);
    void releaseChildCCReceivers();

    /** 1 starts the mapping mode, 0 ends it. It ends by itself when the component is no longer showing. */
    void setMappingMode (int mode);
    bool isMapping() const { return mapping; }
    /** Chooses the knob that waits for a controller, and starts the mapping mode if need be. */
    void learn (MVKnob& knob);
    /** The knob that waits, or null. */
    MVKnob* waitingKnob() const { return waiting; }

    /** Maps the waiting knob to the first controller message in the bytes. Returns whether it was mapped. */
    bool performMappingFromMidiData (const std::uint8_t* bytes, int count);
    void unmap (MVKnob& knob);
    /** Removes the mappings of all entered knobs. */
    void clearAllMappedMidi();

    struct Row
    {
        MVKnob* knob = nullptr;
        MVMidiMappingTarget::Mapping mapping;
    };
    /** The mapped ones among the entered knobs, in the order they were entered. */
    std::vector<Row> mappings() const;
    /** Shows on every knob what is mapped to it now: call when mappings may have changed elsewhere. */
    void refreshMappingBadges();
    /** "CC 74", or with its channel "CC 74 / 2" where that is not the first. */
    static juce::String badgeText (const MVMidiMappingTarget::Mapping& mapping);

    /** Called after a mapping or the mode has changed. */
    std::function<void()> onMappingChanged;

    void visibilityChanged() override { endIfHidden(); }
    void parentHierarchyChanged() override { endIfHidden(); }

private:
    struct Receiver
    {
        std::uint16_t controlId = 0;
        MVKnob* knob = nullptr;
    };

    void timerCallback() override;
    void endIfHidden();
    void showLearnStates();
    void changed();
    const Receiver* receiverOf (const MVKnob& knob) const;

    MVMidiMappingTarget& mappingTarget;
    std::vector<Receiver> receivers;
    MVKnob* waiting = nullptr;
    bool mapping = false;
};

} // namespace morvanelab
