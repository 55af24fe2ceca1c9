// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVMidiMappingComponent.h"

#include <algorithm>
#include <array>

namespace morvanelab
{

namespace
{

constexpr int pollsPerSecond = 30;
constexpr int largestPoll = 4096;

} // namespace

MVMidiMappingComponent::MVMidiMappingComponent (MVMidiMappingTarget& target) : mappingTarget (target) {}

MVMidiMappingComponent::~MVMidiMappingComponent()
{
    if (mapping)
        mappingTarget.setMappingActive (false);
}

void MVMidiMappingComponent::registerChildCCReceiver (std::uint16_t controlId, MVKnob& knob)
{
    const auto known = std::find_if (receivers.begin(), receivers.end(),
                                     [&knob] (const Receiver& receiver) { return receiver.knob == &knob; });
    if (known != receivers.end())
        known->controlId = controlId;
    else
        receivers.push_back ({ controlId, &knob });
    knob.onLearnClick = [this, &knob] { learn (knob); };
    showLearnStates();
}

void MVMidiMappingComponent::releaseChildCCReceivers()
{
    setMappingMode (0);
    for (const auto& receiver : receivers)
        receiver.knob->onLearnClick = nullptr;
    receivers.clear();
}

void MVMidiMappingComponent::setMappingMode (int mode)
{
    const bool on = mode != 0;
    waiting = nullptr;
    if (on != mapping)
    {
        mapping = on;
        if (on)
            startTimerHz (pollsPerSecond);
        else
            stopTimer();
        mappingTarget.setMappingActive (on);
    }
    showLearnStates();
    changed();
}

void MVMidiMappingComponent::learn (MVKnob& knob)
{
    if (receiverOf (knob) == nullptr)
        return;
    if (! mapping)
        setMappingMode (1);
    waiting = waiting == &knob ? nullptr : &knob;
    showLearnStates();
    changed();
}

void MVMidiMappingComponent::timerCallback()
{
    std::array<std::uint8_t, largestPoll> bytes;
    for (int count = 0; (count = mappingTarget.takeMidiData (bytes.data(), largestPoll)) > 0;)
        performMappingFromMidiData (bytes.data(), count);
}

bool MVMidiMappingComponent::performMappingFromMidiData (const std::uint8_t* bytes, int count)
{
    const auto* receiver = waiting != nullptr ? receiverOf (*waiting) : nullptr;
    if (receiver == nullptr || ! mappingTarget.mapControlFromData (receiver->controlId, bytes, count))
        return false;
    waiting = nullptr;
    showLearnStates();
    refreshMappingBadges();
    changed();
    return true;
}

void MVMidiMappingComponent::unmap (MVKnob& knob)
{
    if (const auto* receiver = receiverOf (knob))
        mappingTarget.unmapControl (receiver->controlId);
    refreshMappingBadges();
    changed();
}

void MVMidiMappingComponent::clearAllMappedMidi()
{
    for (const auto& receiver : receivers)
        mappingTarget.unmapControl (receiver.controlId);
    refreshMappingBadges();
    changed();
}

std::vector<MVMidiMappingComponent::Row> MVMidiMappingComponent::mappings() const
{
    std::vector<Row> rows;
    for (const auto& receiver : receivers)
        if (const auto found = mappingTarget.mappingOf (receiver.controlId); found.exists())
            rows.push_back ({ receiver.knob, found });
    return rows;
}

void MVMidiMappingComponent::refreshMappingBadges()
{
    for (const auto& receiver : receivers)
        receiver.knob->setBadge (badgeText (mappingTarget.mappingOf (receiver.controlId)));
}

juce::String MVMidiMappingComponent::badgeText (const MVMidiMappingTarget::Mapping& mapping)
{
    if (! mapping.exists())
        return {};
    const auto controller = "CC " + juce::String (mapping.controller);
    return mapping.channel == 0 ? controller : controller + " / " + juce::String (mapping.channel + 1);
}

void MVMidiMappingComponent::endIfHidden()
{
    if (mapping && ! isShowing())
        setMappingMode (0);
}

void MVMidiMappingComponent::showLearnStates()
{
    for (const auto& receiver : receivers)
        receiver.knob->setLearn (! mapping                  ? MVKnob::Learn::off
                                 : receiver.knob == waiting ? MVKnob::Learn::waiting
                                                            : MVKnob::Learn::armed);
}

void MVMidiMappingComponent::changed()
{
    if (onMappingChanged)
        onMappingChanged();
}

const MVMidiMappingComponent::Receiver* MVMidiMappingComponent::receiverOf (const MVKnob& knob) const
{
    const auto found = std::find_if (receivers.begin(), receivers.end(),
                                     [&knob] (const Receiver& receiver) { return receiver.knob == &knob; });
    return found != receivers.end() ? &*found : nullptr;
}

} // namespace morvanelab
