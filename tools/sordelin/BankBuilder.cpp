// SPDX-License-Identifier: GPL-3.0-or-later
#include "BankBuilder.h"

#include "CommandFailure.h"
#include "PatchFile.h"
#include "ProgressBar.h"

#include "banks/MVFileSwap.h"
#include "engine/PatchTextMetadata.h"
#include "foundation/MVException.h"
#include "foundation/MVResult.h"

#include <array>
#include <filesystem>
#include <random>

namespace morvanelab
{

using patchText::Json;
using patchText::member;

namespace
{

juce::File workingFileBeside (const juce::File& target)
{
    std::random_device source;
    return target.getSiblingFile (target.getFileName() + ".edit" + juce::String (source()));
}

void stored (int result)
{
    if (result != resultDone)
        throw badData ("Could not write to file");
}

} // namespace

BankEdit::BankEdit (juce::File targetFile, std::unique_ptr<MVBankFile> workingCopy)
    : target (std::move (targetFile)), bank (std::move (workingCopy))
{
}

BankEdit::BankEdit (const std::string& path) : target (fileAt (path))
{
    openBank (path).reset();
    const juce::File copy = workingFileBeside (target);
    if (! target.hasWriteAccess())
        throw badData ("File permission problem");
    if (! target.copyFileTo (copy))
        throw badData ("Could not create file");

    bank = std::make_unique<MVBankFile>();
    bank->openFile (copy, false);
}

BankEdit BankEdit::ofNewBank (const std::string& path)
{
    const juce::File target = fileAt (path);
    if (target.isDirectory())
        throw badData ("Could not create file");

    auto created = std::make_unique<MVBankFile>();
    created->createBank (workingFileBeside (target));
    return { target, std::move (created) };
}

BankEdit::~BankEdit()
{
    if (bank != nullptr && bank->isOpen())
        bank->getPath().deleteFile();
}

void BankEdit::put (int slot, const Bytes& patch, const MVSmartPtr<MVMetaData>& metadata)
{
    stored (bank->setPatchData (slot, MVBankFile::packSlot (blockOf (patch), bank->getPatchData (slot))));
    if (! bank->setPatchMeta (slot, metadata))
        throw badData ("Could not write to file");
}

void BankEdit::clear (int slot) { stored (bank->clearSlot (slot)); }

void BankEdit::setBankMeta (const MVSmartPtr<MVMetaData>& metadata)
{
    if (! bank->setBankMeta (metadata))
        throw badData ("Could not write to file");
}

void BankEdit::commit()
{
    const juce::File working = bank->getPath();
    if (! swapInFile (working, target))
        throw badData ("Unexpected file switch failure.");
    bank->closeFile();
}

namespace
{

struct SlotSource
{
    int slot;
    Bytes patch;
    MVSmartPtr<MVMetaData> metadata;
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

/** A slot's patch: a text source, or a patch file. The list's own metadata stand over the source's. */
SlotSource readSlot (const Json& json, const std::filesystem::path& folder, const TextPlace& place)
{
    const Json* const slot = member (json, "slot");
    const Json* const patch = member (json, "patch");
    if (slot == nullptr || ! slot->is_number_integer() || slot->get<std::int64_t>() < 0
        || slot->get<std::int64_t>() > 63)
        (place / "slot").expected ("a slot from 0 to 63");
    if (patch == nullptr || ! patch->is_string())
        (place / "patch").expected ("the path of a patch source or patch file");
    for (const auto& [key, value] : json.items())
        if (key != "slot" && key != "patch" && key != "metadata")
            (place / key).expected (R"(one of the keys "slot", "patch", "metadata")");

    const std::string path = (folder / patch->get<std::string>()).string();
    SlotSource source { slot->get<int>(), {}, makeSmart<MVMetaData>() };

    if (path.ends_with (".json"))
    {
        const auto compiled = compilePatchSource (path);
        source.patch = patchFileBytes (*compiled.patch);
        source.metadata = compiled.metadata;
    }
    else
    {
        source.patch = readWholeFile (path);
        (void)parsePatch (source.patch);
    }

    if (const Json* const metadata = member (json, "metadata"); metadata != nullptr)
        patchText::metadataFromJson (*metadata, *source.metadata, place / "metadata");
    return source;
}

} // namespace

void buildBank (const std::string& listPath, const std::string& outPath)
{
    const Json list = readList (listPath);
    const TextPlace place (listPath);
    const Json* const slots = member (list, "slots");
    if (slots == nullptr || ! slots->is_array())
        (place / "slots").expected ("an array of slots");
    for (const auto& [key, value] : list.items())
        if (key != "$schema" && key != "format" && key != "metadata" && key != "slots")
            (place / key).expected (R"(one of the keys "format", "metadata", "slots")");

    std::vector<SlotSource> sources;
    std::array<bool, 64> taken {};
    for (std::size_t i = 0; i < slots->size(); ++i)
    {
        sources.push_back (readSlot ((*slots)[i], std::filesystem::path (listPath).parent_path(), place / "slots" / i));
        if (std::exchange (taken[static_cast<std::size_t> (sources.back().slot)], true))
            (place / "slots" / i / "slot").expected ("each slot once");
    }

    auto bankMeta = makeSmart<MVMetaData>();
    if (const Json* const metadata = member (list, "metadata"); metadata != nullptr)
        patchText::metadataFromJson (*metadata, *bankMeta, place / "metadata");

    BankEdit edit = BankEdit::ofNewBank (outPath);
    ProgressBar progress ("building", static_cast<std::int64_t> (sources.size()));
    edit.setBankMeta (bankMeta);
    for (std::size_t i = 0; i < sources.size(); ++i)
    {
        edit.put (sources[i].slot, sources[i].patch, sources[i].metadata);
        progress.update (static_cast<std::int64_t> (i) + 1);
    }
    edit.commit();
}

} // namespace morvanelab
