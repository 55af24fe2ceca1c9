// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVParameterManager.h"

#include "control/MVControlManager.h"
#include "foundation/MVByteReader.h"
#include "foundation/MVChunks.h"
#include "foundation/MVEventManager.h"
#include "foundation/MVResult.h"

namespace morvanelab
{

namespace
{

/** As it lies in a "pmap" chunk. Only the identifier is read. */
struct StoredMapping
{
    std::uint16_t controlId;
    std::uint16_t unused[3];
};
static_assert (sizeof (StoredMapping) == 8);

} // namespace

MVParameterManager::MVParameterManager (MVControlManager* controls, MVEventManager* events)
    : MVEventHandler (events), controlManager (controls)
{
}

void MVParameterManager::reset()
{
    for (auto& value : values)
        value.store (0.0);
}

void MVParameterManager::handleThreadMsg (std::uint32_t) {}

void MVParameterManager::clear()
{
    for (auto& list : controlLists)
        list.clear();
}

int MVParameterManager::loadRiff (const MVRiffPacker& riff)
{
    if (riff.getChunkId() != fourCC ("pmgr"))
        return resultWrongForm;

    clear();
    const auto version = storedVersionCode (riff);
    const auto mappings = riff.findChild (fourCC ("cmap"));

    if (! version || *version > currentVersionCode || ! mappings)
        return resultDone;

    int parameter = 0;
    for (int i = 0; i < mappings->childCount() && parameter < numParameters; ++i)
        if (const auto chunk = mappings->childAt (i); chunk && chunk->getChunkId() == fourCC ("parm"))
            loadParameter (parameter++, *chunk);

    return resultDone;
}

void MVParameterManager::loadParameter (int parameter, const MVRiffPacker& chunk)
{
    // The value is stored under "pval": the tag read here is that of an older writer, so today's is not found.
    if (const auto value = childNumber<double> (chunk, fourCC ("pVal")))
        values[static_cast<std::size_t> (parameter)].store (*value);

    for (int i = 0; i < chunk.childCount(); ++i)
        if (const auto entry = chunk.childAt (i); entry && entry->getChunkId() == fourCC ("pmap"))
            if (const auto id = chunkNumber<std::uint16_t> (entry))
                listAt (parameter).add (*id);
}

MVSmartPtr<MVRiffPacker> MVParameterManager::saveRiff() const
{
    auto root = makeSmart<MVRiffPacker> (fourCC ("pmgr"));
    auto mappings = makeSmart<MVRiffPacker> (fourCC ("cmap"));
    addVersionChunk (*root);

    for (int i = 0; i < numParameters; ++i)
    {
        auto chunk = makeSmart<MVRiffPacker> (fourCC ("parm"));
        addChunk (*chunk, fourCC ("pval"), values[static_cast<std::size_t> (i)].load());
        listAt (i).forEach ([&] (std::uint16_t id) { addChunk (*chunk, fourCC ("pmap"), StoredMapping { id, {} }); });
        mappings->addChild (chunk);
    }

    root->addChild (mappings);
    return root;
}

int MVParameterManager::setValue (int parameter, double value)
{
    if (! isValidIndex (parameter))
        return resultOutOfRange;

    auto& stored = values[static_cast<std::size_t> (parameter)];
    if (value == stored.load (std::memory_order_relaxed))
        return resultDone;

    listAt (parameter).forEach ([&] (std::uint16_t id) { controlManager->setControlValue (id, value); });
    stored.store (value, std::memory_order_relaxed);
    return resultDone;
}

int MVParameterManager::getValue (int parameter, double& out) const
{
    if (! isValidIndex (parameter))
        return resultOutOfRange;

    out = values[static_cast<std::size_t> (parameter)].load (std::memory_order_relaxed);
    return resultDone;
}

int MVParameterManager::setControl (int parameter, std::uint16_t id)
{
    if (! isValidIndex (parameter))
        return resultOutOfRange;

    listAt (parameter).clear();
    return addControl (parameter, id);
}

int MVParameterManager::addControl (int parameter, std::uint16_t id)
{
    if (! isValidIndex (parameter))
        return resultOutOfRange;

    listAt (parameter).add (id);
    return resultDone;
}

void MVParameterManager::removeControl (std::uint16_t id)
{
    for (auto& list : controlLists)
        list.removeIf ([id] (std::uint16_t entry) { return entry == id; });
}

bool MVParameterManager::isMapped (int parameter, std::uint16_t id) const
{
    return isValidIndex (parameter) && listAt (parameter).contains (id);
}

bool MVParameterManager::findParameter (std::uint16_t id, int& index) const
{
    for (index = 0; index < numParameters; ++index)
        if (listAt (index).contains (id))
            return true;

    index = -1;
    return false;
}

void MVParameterManager::pruneInvalidControls()
{
    for (auto& list : controlLists)
        list.removeIf ([this] (std::uint16_t id) { return ! controlManager->controlExists (id); });
}

} // namespace morvanelab
