// SPDX-License-Identifier: GPL-3.0-or-later
// The stored form of the MIDI mappings.
#include "control/MVMidiManager.h"

#include "foundation/MVByteReader.h"
#include "foundation/MVChunks.h"
#include "foundation/MVMath.h"
#include "foundation/MVResult.h"

#include <map>

namespace morvanelab
{

namespace
{

constexpr std::uint32_t rootId = fourCC ("midm");
constexpr std::uint32_t controllerFormId = fourCC ("cmap");
constexpr std::uint32_t controllerId = fourCC ("cnth");
constexpr std::uint32_t keyFormId = fourCC ("kmap");
constexpr std::uint32_t keyId = fourCC ("keyh");

/** Stored byte for byte. */
struct StoredController
{
    std::int32_t channel;
    std::int32_t controller;
    std::uint64_t unused;
    std::uint16_t valueId;
    std::uint16_t padding;
    std::uint32_t zero;
};
static_assert (sizeof (StoredController) == 24);

struct StoredKey
{
    std::int32_t channel;
    std::int32_t key;
    std::uint64_t handler;
    std::uint32_t enabled;
    std::uint32_t zero;
};
static_assert (sizeof (StoredKey) == 24);

MVByteReader readerOf (const MVRiffPacker& chunk)
{
    return { chunk.getPayload(), static_cast<std::size_t> (chunk.readablePayload()) };
}

} // namespace

MVSmartPtr<MVRiffPacker> MVMidiManager::saveMidiMap()
{
    auto root = makeSmart<MVRiffPacker> (rootId);
    auto keyForm = makeSmart<MVRiffPacker> (keyFormId);
    auto controllerForm = makeSmart<MVRiffPacker> (controllerFormId);
    const MVScopedLock lock (mappingLock);

    forEachKeyList (
        [&] (const MVMidiMapList& list, int channel, int key)
        {
            for (const _mv_midi_map& map : list.copy())
                if (controlManager->controlExists (static_cast<std::uint16_t> (map.handler)))
                    addChunk (*keyForm, keyId, StoredKey { channel, key, map.handler, map.enabled ? 1u : 0u, 0 });
        });

    forEachControllerList (
        [&] (const MVMidiMapList& list, int channel, int controller)
        {
            for (const _mv_midi_map& map : list.copy())
                if (const auto valueId = static_cast<std::uint16_t> (map.valueId);
                    controlManager->controlExists (valueId))
                    addChunk (*controllerForm, controllerId,
                              StoredController { channel, controller, 0, valueId, 0, 0 });
        });

    addVersionChunk (*root);
    root->addChild (keyForm);
    root->addChild (controllerForm);
    return root;
}

int MVMidiManager::loadMidiMap (MVSmartPtr<MVRiffPacker>& packer)
{
    const MVSmartPtr<MVRiffPacker> root = packer;
    packer.clear();

    if (! root || root->getChunkId() != rootId)
        return resultWrongForm;

    clearAllMappings();

    const auto version = storedVersionCode (*root);
    if (! version || *version > currentVersionCode)
        return resultDone;

    if (const auto form = root->findChild (controllerFormId))
        readControllerMaps (*form);
    if (const auto form = root->findChild (keyFormId))
        readKeyMaps (*form);

    return resultDone;
}

/** Collects the records of each list before publishing: a list is copied once, however many chunks name it. */
template <typename Reader>
void MVMidiManager::readMaps (const MVRiffPacker& form, std::uint32_t chunkId, Reader&& readChunk)
{
    std::map<MVMidiMapList*, Records> collected;

    for (int index = 0; index < form.childCount(); ++index)
    {
        const MVSmartPtr<MVRiffPacker> chunk = form.childAt (index);
        if (chunk->getChunkId() != chunkId)
            continue;

        _mv_midi_map record;
        if (MVMidiMapList* const list = readChunk (*chunk, record); list != nullptr)
            collected[list].push_back (record);
    }

    for (const auto& [list, records] : collected)
        appendAll (*list, records);
}

void MVMidiManager::readControllerMaps (const MVRiffPacker& form)
{
    readMaps (form, controllerId,
              [this] (const MVRiffPacker& chunk, _mv_midi_map& record)
              {
                  MVByteReader reader = readerOf (chunk);
                  const auto channel = reader.read<std::int32_t>();
                  const auto controller = reader.read<std::int32_t>();
                  reader.skip (sizeof (StoredController::unused));
                  record.valueId = reader.read<std::uint16_t>();
                  return reader.hasFailed() ? nullptr : controllerList (channel, controller);
              });
}

void MVMidiManager::readKeyMaps (const MVRiffPacker& form)
{
    readMaps (form, keyId,
              [this] (const MVRiffPacker& chunk, _mv_midi_map& record)
              {
                  MVByteReader reader = readerOf (chunk);
                  const auto channel = reader.read<std::int32_t>();
                  const auto key = reader.read<std::int32_t>();
                  record.handler = reader.read<std::uint64_t>();
                  return reader.hasFailed() ? nullptr : keyList (channel, key);
              });
}

} // namespace morvanelab
