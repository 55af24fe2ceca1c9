// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVLibrarianCatalogue.h"

#include "foundation/MVException.h"
#include "foundation/MVLog.h"
#include "foundation/MVMath.h"
#include "ui/MVLibrarianText.h"

#include <algorithm>

namespace morvanelab
{

namespace
{

/** Size and first bytes of a file: enough to see that a container was written anew, since its checksum comes first. */
struct FileStamp
{
    static constexpr int headSize = 40;

    std::array<char, headSize> head {};
    juce::int64 size = -1;

    bool operator== (const FileStamp&) const = default;
};

FileStamp stampOf (const juce::File& file)
{
    FileStamp stamp;
    juce::FileInputStream stream (file);
    if (stream.openedOk())
    {
        stamp.size = stream.getTotalLength();
        stream.read (stamp.head.data(), FileStamp::headSize);
    }
    return stamp;
}

void readSlot (MVSlotInfo& slot, MVBankFile& bank, int index)
{
    slot.metadata = bank.getPatchMeta (index);
    // Pictures are large, and only one slot's is ever shown at a time.
    MVSmartPtr<MVRiffPacker> none;
    slot.metadata->setImage (none);

    slot.name = toShownText (slot.metadata->getName());
    slot.author = toShownText (slot.metadata->getAuthor());
    slot.genre = toShownText (slot.metadata->getGenre());
}

/** Which slots hold a patch, from the directory alone. */
void markOccupied (MVBankInfo& info, const MVBankFile& bank)
{
    std::size_t ordinal = 0;
    for (auto* node = bank.getCompartments().firstNode(); node != nullptr; node = node->next)
        if (node->value.type == fourCC ("pdat") && ordinal < info.slots.size())
            info.slots[ordinal++].occupied = node->value.size > 1;

    for (auto& slot : info.slots)
    {
        info.usedSlots += slot.occupied ? 1 : 0;
        if (slot.occupied && slot.name.isEmpty())
            slot.name = "unnamed";
    }
}

void readBank (MVBankInfo& info, MVBankFile& bank)
{
    try
    {
        for (int i = 0; i < MVBankFile::maxPatchesPerBank; ++i)
            readSlot (info.slots[static_cast<std::size_t> (i)], bank, i);
        markOccupied (info, bank);

        const auto metadata = bank.getBankMeta();
        info.name = toShownText (metadata->getName());
        info.author = toShownText (metadata->getAuthor());
        info.description = toShownText (metadata->getDescription());
        info.readable = true;
    }
    catch (const MVException& failure)
    {
        mvLog ("ERROR", "morvanelab::MVLibrarianCatalogue::update", "%s: %u %s",
               info.file.getFullPathName().toRawUTF8(), failure.getCode(), failure.text());
        for (auto& slot : info.slots)
            slot = {};
    }

    if (info.name.isEmpty())
        info.name = info.file.getFileNameWithoutExtension();
}

} // namespace

struct MVLibrarianCatalogue::Entry
{
    MVBankInfo info;
    FileStamp stamp;
    bool stale = false;
};

MVLibrarianCatalogue::MVLibrarianCatalogue() = default;
MVLibrarianCatalogue::~MVLibrarianCatalogue() = default;

bool MVLibrarianCatalogue::update (MVBankFileManager& manager)
{
    const auto known = banks;
    std::vector<std::shared_ptr<Entry>> current;
    bool changed = known.size() != static_cast<std::size_t> (manager.getBankCount());

    for (int i = 0; i < manager.getBankCount(); ++i)
    {
        const auto wrapper = manager.getBank (i);
        const auto file = wrapper->bank.getPath();
        const auto stamp = stampOf (file);
        const auto found = std::find_if (known.begin(), known.end(),
                                         [&] (const auto& entry) {
                                             return ! entry->stale && entry->info.file == file && entry->stamp == stamp
                                                    && entry->info.uuid == wrapper->uuid;
                                         });
        if (found != known.end())
        {
            changed = changed || found - known.begin() != i;
            current.push_back (*found);
            continue;
        }

        auto entry = std::make_shared<Entry>();
        entry->info.file = file;
        entry->info.uuid = wrapper->uuid;
        entry->stamp = stamp;
        readBank (entry->info, wrapper->bank);
        current.push_back (std::move (entry));
        ++reads;
        changed = true;
    }

    banks = std::move (current);
    return changed;
}

void MVLibrarianCatalogue::forget (const juce::File& bankFile)
{
    for (const auto& entry : banks)
        if (entry->info.file == bankFile)
            entry->stale = true;
}

const MVBankInfo& MVLibrarianCatalogue::bank (int index) const
{
    static const MVBankInfo empty;
    return index >= 0 && index < bankCount() ? banks[static_cast<std::size_t> (index)]->info : empty;
}

const MVSlotInfo& MVLibrarianCatalogue::slot (MVPatchAddress address) const
{
    static const MVSlotInfo empty;
    const auto& slots = bank (address.bank).slots;
    const bool exists = address.bank >= 0 && address.bank < bankCount() && address.slot >= 0
                        && address.slot < MVBankFile::maxPatchesPerBank;
    return exists ? slots[static_cast<std::size_t> (address.slot)] : empty;
}

int MVLibrarianCatalogue::indexOf (const juce::File& bankFile) const
{
    for (int i = 0; i < bankCount(); ++i)
        if (bank (i).file == bankFile)
            return i;
    return -1;
}

} // namespace morvanelab
