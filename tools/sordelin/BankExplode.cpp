// SPDX-License-Identifier: GPL-3.0-or-later
#include "BankExplode.h"

#include "BankSlots.h"
#include "CommandFailure.h"
#include "FileGroup.h"
#include "PatchFile.h"
#include "SafeText.h"
#include "SlotForm.h"
#include "StoredMetadata.h"

#include <array>
#include <cstdio>

namespace morvanelab
{

using patchText::Json;

namespace
{

constexpr const char* listName = "bank.json";

std::string patchFileName (int slot, const MVMetaData& metadata)
{
    std::array<char, 16> number {};
    std::snprintf (number.data(), number.size(), "%02d ", slot);
    const std::string name = fileNameText (metadata.getName().view());
    return number.data() + (name.empty() ? std::string ("Unnamed") : name) + ".mv_onpatch";
}

/** A patch that does not load has to stand in the list whole, or a list with it would be refused. */
void keepIfDamaged (const Bytes& patch, const Bytes& slotData, int slot, SlotForm& form)
{
    try
    {
        (void)parsePatch (patch);
    }
    catch (const CommandFailure& failure)
    {
        std::fprintf (stderr, "slot %d: %s\n", slot, failure.what());
        form.stored = slotData;
    }
}

/** The list's entry of a slot; null for one that a new bank has as well. */
Json entryOf (MVBankFile& bank, int slot, FileGroup& files)
{
    const StoredSlot stored = readStoredSlot (bank, slot);
    const bool plainMetadata = stored.metadata == emptySlot().metadata;
    if (! isOccupied (stored.data) && plainMetadata)
        return nullptr;

    Json entry { { "slot", slot }, { "patch", nullptr } };
    SlotForm form = SlotForm::of (stored.data);
    if (const Bytes patch = patchIn (stored.data); ! patch.empty())
    {
        const std::string name = patchFileName (slot, *bank.getPatchMeta (slot));
        files.add (name, patch);
        entry["patch"] = name;
        keepIfDamaged (patch, stored.data, slot, form);
    }
    else if (form.stored)
        std::fprintf (stderr, "slot %d: Error:  Invalid patch data.\n", slot);

    if (! plainMetadata)
        entry["metadata"] = metadataToList (stored.metadata);
    form.addTo (entry);
    return entry;
}

} // namespace

void explodeBank (const std::string& bankPath, const std::string& folder, bool overwrite)
{
    const auto bank = openBank (bankPath);
    FileGroup files (folder);

    Json list { { "format", "sordelin-bank" } };
    if (const Bytes metadata = readStoredBankMeta (*bank); metadata != emptySlot().metadata)
        list["metadata"] = metadataToList (metadata);
    list["slots"] = Json::array();
    for (int slot = 0; slot < MVBankFile::maxPatchesPerBank; ++slot)
        if (Json entry = entryOf (*bank, slot, files); ! entry.is_null())
            list["slots"].push_back (std::move (entry));

    files.add (listName, list.dump (2) + "\n");
    files.write (overwrite);
}

} // namespace morvanelab
