// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/MVMidiManager.h"

#include "foundation/MVException.h"
#include "foundation/MVLog.h"
#include "foundation/MVResult.h"

#include <algorithm>

namespace morvanelab
{

namespace
{

_mv_midi_map controlRecord (int valueId) { return { static_cast<std::uint16_t> (valueId), 0, true }; }

} // namespace

MVMidiManager::MVMidiManager (MVControlManager* controls, MVEventManager* events)
    : controlManager (controls), eventManager (events)
{
    if (eventManager != nullptr)
        eventManager->addHandler (this);
}

MVMidiManager::~MVMidiManager()
{
    if (eventManager != nullptr)
        eventManager->removeHandler (getId());
    detach();
}

void MVMidiManager::reset()
{
    for (MVMidiChannel& channel : channels)
        channel.clearNotes();
}

int MVMidiManager::handleEvent (MVEvent* event)
{
    // An event whose target has gone reaches every handler.
    if (event == nullptr || (event->getTargetId() != 0 && event->getTargetId() != getId()))
        return resultDone;

    if (event->getType() == midiEventPruneMappings)
    {
        pruneInvalidMappings();
    }
    else if (event->getType() == midiEventLoadMap)
    {
        const MVSmartPtr<MVObject>& object = event->getObjectA();
        if (object && ! object->isClassNamed ("MVRiffPacker"))
            throw MVException (resultFailed, "Error:  Bad midi preset.");

        MVSmartPtr<MVRiffPacker> packer = object.castTo<MVRiffPacker>();
        if (loadMidiMap (packer) == resultBusy)
            return resultBusy;
    }

    return resultDone;
}

// Lists -------------------------------------------------------------------------------------------------------------

MVMidiMapList* MVMidiManager::controllerList (int channel, int controller)
{
    if (channel < 0 || channel >= numChannels || controller < 0 || controller >= MVMidiChannel::numControllers)
        return nullptr;
    return &channels[static_cast<std::size_t> (channel)].controllerMaps[static_cast<std::size_t> (controller)];
}

MVMidiMapList* MVMidiManager::keyList (int channel, int key)
{
    if (channel < 0 || channel >= numChannels || key < 0 || key >= MVMidiChannel::numKeys)
        return nullptr;
    return &channels[static_cast<std::size_t> (channel)].keyMaps[static_cast<std::size_t> (key)];
}

bool MVMidiManager::replace (MVMidiMapList* list, const _mv_midi_map& record)
{
    if (list == nullptr)
        return false;

    const MVScopedLock lock (mappingLock);
    list->publish ({ record }, reclaimer);
    return true;
}

bool MVMidiManager::append (MVMidiMapList* list, const _mv_midi_map& record)
{
    return list != nullptr && appendAll (*list, { record });
}

bool MVMidiManager::appendAll (MVMidiMapList& list, const Records& added)
{
    const MVScopedLock lock (mappingLock);
    Records records = list.copy();
    const std::size_t room = static_cast<std::size_t> (maxRecords) - records.size();
    const std::size_t taken = std::min (room, added.size());

    records.insert (records.end(), added.begin(), added.begin() + static_cast<std::ptrdiff_t> (taken));
    list.publish (std::move (records), reclaimer);
    return taken == added.size();
}

template <typename Test>
bool MVMidiManager::anyRecord (MVMidiMapList* list, Test&& test)
{
    // Most of the 4096 controllers are mapped to nothing: those cost no lock.
    if (list == nullptr || list->isEmpty())
        return false;

    const MVScopedLock lock (mappingLock);
    const Records* const records = list->get();
    return records != nullptr && std::any_of (records->begin(), records->end(), test);
}

template <typename Test>
void MVMidiManager::removeRecords (MVMidiMapList& list, Test&& test)
{
    if (list.isEmpty())
        return;

    const MVScopedLock lock (mappingLock);
    const Records* const present = list.get();

    if (present == nullptr || std::none_of (present->begin(), present->end(), test))
        return;

    Records records = *present;
    std::erase_if (records, test);
    list.publish (std::move (records), reclaimer);
}

// Mappings ----------------------------------------------------------------------------------------------------------

void MVMidiManager::clearAllMappings()
{
    const MVScopedLock lock (mappingLock);
    const auto empty = [this] (MVMidiMapList& list, int, int) { list.publish ({}, reclaimer); };

    forEachKeyList (empty);
    forEachControllerList (empty);
}

bool MVMidiManager::setMidiControlToValueId (int channel, int controller, int valueId)
{
    mvLog ("MIDI", "morvanelab::MVMidiManager::setMidiControlToValueId", "chan %d cc %% resets to var id %d", channel,
           valueId);
    return replace (controllerList (channel, controller), controlRecord (valueId));
}

bool MVMidiManager::addMidiControlToValueId (int channel, int controller, int valueId)
{
    mvLog ("MIDI", "morvanelab::MVMidiManager::addMidiControlToValueId", "chan %d cc %% adds to var id %d", channel,
           valueId);
    return append (controllerList (channel, controller), controlRecord (valueId));
}

void MVMidiManager::unmapControlValueId (int valueId)
{
    const auto isMapped = [wanted = controlRecord (valueId).valueId] (const _mv_midi_map& map)
    { return map.isControl (wanted); };

    forEachControllerList ([&] (MVMidiMapList& list, int, int) { removeRecords (list, isMapped); });
    mvLog ("MIDI", "morvanelab::MVMidiManager::unmapControlValueId", "unmapping var id %d", valueId);
}

void MVMidiManager::enableMappedControlValueId (int valueId, bool flag)
{
    mvLog ("MIDI", "morvanelab::MVMidiManager::enableMappedControlValueId", "set enabled mapping of val id %d to %d",
           valueId, flag ? 1 : 0);

    const auto isMapped = [wanted = controlRecord (valueId).valueId] (const _mv_midi_map& map)
    { return map.isControl (wanted); };
    const MVScopedLock lock (mappingLock);

    forEachControllerList (
        [&] (MVMidiMapList& list, int, int)
        {
            if (! anyRecord (&list, isMapped))
                return;

            Records records = list.copy();
            std::find_if (records.begin(), records.end(), isMapped)->enabled = flag;
            list.publish (std::move (records), reclaimer);
        });
}

bool MVMidiManager::isKeyMappedToHandler (std::uint64_t handler, int channel, int key)
{
    return anyRecord (keyList (channel, key), [=] (const _mv_midi_map& map) { return map.isHandler (handler); });
}

bool MVMidiManager::isControlMappedToValueId (int valueId, int channel, int controller)
{
    return anyRecord (controllerList (channel, controller),
                      [wanted = controlRecord (valueId).valueId] (const _mv_midi_map& map)
                      { return map.isControl (wanted); });
}

bool MVMidiManager::getMidiControlForValueId (int valueId, int& channel, int& controller)
{
    bool found = false;

    forEachControllerList (
        [&] (MVMidiMapList&, int listChannel, int listController)
        {
            if (isControlMappedToValueId (valueId, listChannel, listController))
            {
                channel = listChannel;
                controller = listController;
                found = true;
            }
        });

    return found;
}

bool MVMidiManager::setMidiKeyHandler (int channel, int key, std::uint64_t handler)
{
    return replace (keyList (channel, key), { 0, handler, true });
}

bool MVMidiManager::addMidiKeyHandler (int channel, int key, std::uint64_t handler)
{
    return append (keyList (channel, key), { 0, handler, true });
}

bool MVMidiManager::setMidiKeyRangeHandler (int channel, MVIRange keys, std::uint64_t handler)
{
    for (std::int64_t offset = 0; offset <= keys.span; ++offset)
        if (! setMidiKeyHandler (channel, static_cast<int> (keys.low + offset), handler))
            return false;
    return true;
}

bool MVMidiManager::addMidiKeyRangeHandler (int channel, MVIRange keys, std::uint64_t handler)
{
    for (std::int64_t offset = 0; offset <= keys.span; ++offset)
        if (! addMidiKeyHandler (channel, static_cast<int> (keys.low + offset), handler))
            return false;
    return true;
}

bool MVMidiManager::addMidiCCtoControlValueRange (int channel, MVIRange controllers, const std::uint16_t* valueIds)
{
    // Only offsets that name a controller: the first and the last are clamped to the table.
    const std::int64_t low = controllers.low;
    const std::int64_t first = std::max<std::int64_t> (0, -low);
    const std::int64_t end = std::min<std::int64_t> (controllers.span, MVMidiChannel::numControllers - low);

    for (std::int64_t k = first; k < end && valueIds != nullptr; ++k)
    {
        const int controller = static_cast<int> (low + k);
        mvLog ("MIDI", "morvanelab::MVMidiManager::addMidiCCtoControlValueRange",
               "mapping chan %d cc %d to val index %d", channel, controller, int { valueIds[k] });
        append (controllerList (channel, controller), controlRecord (valueIds[k]));
    }

    return true;
}

void MVMidiManager::unmapKeyHandler (std::uint64_t handler)
{
    forEachKeyList ([&] (MVMidiMapList& list, int, int)
                    { removeRecords (list, [=] (const _mv_midi_map& map) { return map.isHandler (handler); }); });
}

void MVMidiManager::pruneInvalidMappings()
{
    forEachControllerList (
        [this] (MVMidiMapList& list, int channel, int controller)
        {
            const auto isInvalid = [&] (const _mv_midi_map& map)
            { return ! controlManager->controlExists (static_cast<int> (map.valueId)); };

            const MVScopedLock lock (mappingLock);
            for (const _mv_midi_map& map : list.copy())
                if (isInvalid (map))
                    mvLog ("MIDI", "morvanelab::MVMidiManager::pruneInvalidMappings",
                           "Unmapping chan %d cc %d from val id %d", channel, controller,
                           static_cast<int> (map.valueId));

            removeRecords (list, isInvalid);
        });
}

} // namespace morvanelab
