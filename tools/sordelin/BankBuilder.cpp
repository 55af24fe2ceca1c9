// SPDX-License-Identifier: GPL-3.0-or-later
#include "BankBuilder.h"

#include "BankEdit.h"
#include "CommandFailure.h"
#include "PatchFile.h"
#include "ProgressBar.h"
#include "SlotForm.h"
#include "StoredMetadata.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>

namespace morvanelab
{

using patchText::Json;
using patchText::member;

namespace
{

struct SlotSource
{
    int slot;
    StoredSlot contents;
};

Json readList (const std::string& path)
{
    const Bytes bytes = readWholeFile (path);
    try
    {
        return Json::parse (std::string_view (reinterpret_cast<const char*> (bytes.data()), bytes.size()));
    }
    catch (const Json::exception& error)
    {
        throw badData (path + ": " + error.what());
    }
}

void expectKeys (const Json& json, std::initializer_list<const char*> keys, const TextPlace& place)
{
    if (! json.is_object())
        place.expected ("an object");
    for (const auto& [key, value] : json.items())
        if (std::ranges::find (keys, key) == keys.end())
        {
            std::string known;
            for (const char* const name : keys)
                known += std::string (known.empty() ? "" : ", ") + "\"" + name + "\"";
            (place / key).expected ("one of the keys " + known);
        }
}

int slotNumber (const Json& json, const TextPlace& place)
{
    const Json* const slot = member (json, "slot");
    if (slot == nullptr || ! slot->is_number_integer() || slot->get<std::int64_t>() < 0
        || slot->get<std::int64_t>() >= MVBankFile::maxPatchesPerBank)
        (place / "slot").expected ("a slot from 0 to 63");
    return slot->get<int>();
}

/** The bytes of a patch file. Those that the list itself holds are not looked at again: a damaged patch is kept. */
Bytes readPatch (const std::string& path, const SlotForm& form)
{
    Bytes patch = readWholeFile (path);
    try
    {
        if (! form.isStoredWith (patch))
            (void)parsePatch (patch);
    }
    catch (const CommandFailure& failure)
    {
        throw badData (path + ": " + failure.what());
    }
    return patch;
}

/** A slot's patch: a text source, a patch file, or null for none. The list's own metadata stand over the source's. */
SlotSource readSlot (const Json& json, const std::filesystem::path& folder, const TextPlace& place)
{
    expectKeys (json, { "slot", "patch", "metadata", "comment", "panel", "stored" }, place);
    const int slot = slotNumber (json, place);
    const Json* const source = member (json, "patch");
    if (source == nullptr || ! (source->is_string() || source->is_null()))
        (place / "patch").expected ("the path of a patch source or patch file, or null for an empty slot");

    const SlotForm form = SlotForm::fromJson (json, place);
    auto metadata = makeSmart<MVMetaData>();
    Bytes patch;

    if (source->is_string())
    {
        const std::string path = (folder / source->get<std::string>()).string();
        if (path.ends_with (".json"))
        {
            const auto compiled = compilePatchSource (path);
            patch = patchFileBytes (*compiled.patch);
            metadata = compiled.metadata;
        }
        else
            patch = readPatch (path, form);
    }

    const Json* const own = member (json, "metadata");
    return { slot,
             { form.slotData (patch),
               metadataFromList (own != nullptr ? *own : Json::object(), *metadata, place / "metadata") } };
}

} // namespace

void buildBank (const std::string& listPath, const std::string& outPath)
{
    const Json list = readList (listPath);
    const TextPlace place (listPath);
    const Json* const slots = member (list, "slots");
    if (slots == nullptr || ! slots->is_array())
        (place / "slots").expected ("an array of slots");
    expectKeys (list, { "$schema", "format", "metadata", "slots" }, place);

    std::vector<SlotSource> sources;
    std::array<bool, 64> taken {};
    for (std::size_t i = 0; i < slots->size(); ++i)
    {
        sources.push_back (readSlot ((*slots)[i], std::filesystem::path (listPath).parent_path(), place / "slots" / i));
        if (std::exchange (taken[static_cast<std::size_t> (sources.back().slot)], true))
            (place / "slots" / i / "slot").expected ("each slot once");
    }

    const Json* const own = member (list, "metadata");
    const Bytes bankMeta = metadataFromList (own != nullptr ? *own : Json::object(), {}, place / "metadata");

    BankEdit edit = BankEdit::ofNewBank (outPath);
    ProgressBar progress ("building", static_cast<std::int64_t> (sources.size()));
    edit.storeBankMeta (bankMeta);
    for (std::size_t i = 0; i < sources.size(); ++i)
    {
        edit.store (sources[i].slot, sources[i].contents);
        progress.update (static_cast<std::int64_t> (i) + 1);
    }
    edit.commit();
}

} // namespace morvanelab
