// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinMidiMapping.h"

#include "foundation/MVResult.h"
#include "plugin/SordelinMainComponent.h"

namespace morvanelab
{

int SordelinMidiMapping::takeMidiData (std::uint8_t* out, int room) { return main.getLearnQueue().pull (out, room); }

void SordelinMidiMapping::setMappingActive (bool on)
{
    if (on && ! main.midiMappingActive)
        main.getLearnQueue().clear();
    main.midiMappingActive = on;
}

bool SordelinMidiMapping::mapControlFromData (std::uint16_t controlId, const std::uint8_t* bytes, int count)
{
    bool mapped = false;
    main.withEngine (
        [&] (MVRenderEngine& running)
        {
            int channel = -1;
            int controller = -1;
            int value = 0;
            int used = 0;
            if (running.mapMidiContinousControllerFromData (controlId, bytes, count, channel, controller, value, used)
                != resultDone)
                return;
            // Neither drives anything else any more: the parameter no other controller, the controller no other one.
            running.unmapControlId (controlId);
            mapped = running.getMidiManager().setMidiControlToValueId (channel, controller, controlId);
        });
    return mapped;
}

void SordelinMidiMapping::unmapControl (std::uint16_t controlId)
{
    main.withEngine ([&] (MVRenderEngine& running) { running.unmapControlId (controlId); });
}

MVMidiMappingTarget::Mapping SordelinMidiMapping::mappingOf (std::uint16_t controlId) const
{
    Mapping mapping;
    main.withEngine (
        [&] (MVRenderEngine& running)
        { running.getMidiManager().getMidiControlForValueId (controlId, mapping.channel, mapping.controller); });
    return mapping;
}

} // namespace morvanelab
