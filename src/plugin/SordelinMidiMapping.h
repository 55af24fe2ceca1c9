// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVMidiMappingComponent.h"

namespace morvanelab
{

class SordelinMainComponent;

/** The controller mappings of the engine, for the component that learns them. Message thread. */
class SordelinMidiMapping : public MVMidiMappingTarget
{
public:
    /** The owner outlives the object. */
    explicit SordelinMidiMapping (SordelinMainComponent& owner) : main (owner) {}

    int takeMidiData (std::uint8_t* out, int room) override;
    void setMappingActive (bool on) override;
    bool mapControlFromData (std::uint16_t controlId, const std::uint8_t* bytes, int count) override;
    void unmapControl (std::uint16_t controlId) override;
    Mapping mappingOf (std::uint16_t controlId) const override;

private:
    SordelinMainComponent& main;
};

} // namespace morvanelab
