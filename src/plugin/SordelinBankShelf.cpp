// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinBankShelf.h"

#include "foundation/MVException.h"

namespace morvanelab
{

namespace
{

constexpr int slotsPerBank = 64;
constexpr int emptySlotBytes = 8; ///< a slot must hold more than this to be a patch

constexpr const char* mediaDownloadUrl = "https://morvane-lab.example/sordelin/banks";
constexpr const char* mediaForumUrl = "https://morvane-lab.example/sordelin/share";

std::string nameOr (const MVSmartPtr<MVMetaData>& metadata, const char* fallback)
{
    return metadata == nullptr || metadata->getName().isEmpty() ? fallback : metadata->getName().toStdString();
}

} // namespace

SordelinBankShelf::SordelinBankShelf (MVUserPrompt& promptToUse)
    : prompt (promptToUse), properties (MVAppPersistentProps::defaultApplicationName, "Application Support", prompt),
      bankManager (prompt)
{
    bool directoryExisted = false;
    properties.getDataDirectory (directoryExisted);
    properties.setString ("app_media_download_url", mediaDownloadUrl);
    properties.setString ("app_media_share_forum_url", mediaForumUrl);
    properties.setString ("AppName", "Sordelin");

    const auto managerFile = MVBankFileManager::findManagerFile (properties);
    bankManager.setManagerFile (managerFile);
    bankManager.loadBanks();
    // A scanner constructs plug-ins and never starts them: until a list of banks was saved, it is still the first run.
    firstRun = ! directoryExisted || managerFile.getSize() == 0;
}

void SordelinBankShelf::addBanksOnFirstRun (const juce::File& directory)
{
    const MVScopedLock scope (lock);
    if (! firstRun)
        return;
    firstRun = false;
    auto files =
        directory.findChildFiles (juce::File::findFiles, true, "*.mv_onbank", juce::File::FollowSymlinks::noCycles);
    files.sort();
    for (int i = 0; i < files.size(); ++i)
    {
        try
        {
            bankManager.addBankFile (i, files[i]);
        }
        catch (const MVException& failure)
        {
            prompt.tell ("Bank Librarian", failure.text());
        }
    }
    properties.flush();
}

int SordelinBankShelf::findBank (const MVBankUuid& uuid)
{
    const MVScopedLock scope (lock);
    return bankManager.findBankByUuid (uuid);
}

bool SordelinBankShelf::readPatch (int bank, int slot, Patch& patch)
{
    const MVScopedLock scope (lock);
    const auto bytes = bankManager.getPatchData (bank, slot);
    if (bytes->totalSize() <= emptySlotBytes)
        return false;
    const auto metadata = bankManager.getPatchMeta (bank, slot);
    const auto stream = bankManager.buildPatchStream (metadata, bytes);
    if (stream == nullptr || stream->totalSize() <= 1)
        return false;
    const auto* first = stream->flatBytes();
    patch.stream = std::make_shared<const std::vector<std::uint8_t>> (first, first + stream->totalSize());
    patch.name = metadata != nullptr ? metadata->getName().toStdString() : "unnamed";
    patch.bankUuid = bankManager.getBankUuid (bank);
    patch.slot = slot;
    return true;
}

std::vector<SordelinBankShelf::BankNames> SordelinBankShelf::listBanks()
{
    const MVScopedLock scope (lock);
    std::vector<BankNames> banks;
    for (int bank = 0; bank < bankManager.getBankCount(); ++bank)
    {
        const auto wrapper = bankManager.getBank (bank);
        BankNames names { nameOr (wrapper->metadata, "Bank"), {} };
        for (int slot = 0; slot < slotsPerBank; ++slot)
        {
            const bool occupied = bankManager.getPatchData (bank, slot)->totalSize() > emptySlotBytes;
            names.slots.push_back (occupied ? nameOr (bankManager.getPatchMeta (bank, slot), "-----") : "");
        }
        banks.push_back (std::move (names));
    }
    return banks;
}

} // namespace morvanelab
