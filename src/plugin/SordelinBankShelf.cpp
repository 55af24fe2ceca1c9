// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinBankShelf.h"

#include "foundation/MVException.h"
#include "plugin/SordelinPresetList.h"

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

SordelinPatchBytes copyOf (const std::uint8_t* bytes, int size)
{
    return std::make_shared<const std::vector<std::uint8_t>> (bytes, bytes + size);
}

SordelinPatchBytes imageOf (const MVSmartPtr<MVMetaData>& metadata)
{
    if (metadata == nullptr || metadata->getImage() == nullptr)
        return nullptr;
    const auto& chunk = *metadata->getImage();
    const int size = chunk.getPayload() != nullptr ? chunk.readablePayload() : 0;
    return size > 0 ? copyOf (static_cast<const std::uint8_t*> (chunk.getPayload()), size) : nullptr;
}

} // namespace

SordelinBankShelf::SordelinBankShelf (MVUserPrompt& promptToUse)
    : prompt (promptToUse), properties (MVAppPersistentProps::defaultApplicationName, "Application Support", prompt),
      bankManager (prompt)
{
    open();
}

void SordelinBankShelf::open()
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
    const MVScopedLock scope (getLock());
    if (! firstRun)
        return;
    firstRun = false;
    bankManager.syncWithFile(); // another instance may have had its first run meanwhile
    auto files =
        directory.findChildFiles (juce::File::findFiles, true, "*.mv_onbank", juce::File::FollowSymlinks::noCycles);
    files.sort();
    for (int i = 0; i < files.size(); ++i)
    {
        if (bankManager.isBankPathLoaded (files[i]))
            continue;
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

bool SordelinBankShelf::reset()
{
    const MVScopedLock scope (getLock());
    // The directory may hold presets, and on some systems the settings of other programs.
    const bool listGone = MVBankFileManager::deleteListIn (properties.getFile().getParentDirectory());
    const bool settingsGone = properties.removeAllBut ({ SordelinPresetList::listKey });
    open();
    firstRun = true;
    return listGone && settingsGone;
}

int SordelinBankShelf::findBank (const MVBankUuid& uuid)
{
    const MVScopedLock scope (getLock());
    const int bank = bankManager.findBankByUuid (uuid);
    return bank < 0 && bankManager.syncWithFile() ? bankManager.findBankByUuid (uuid) : bank;
}

bool SordelinBankShelf::takeSelection (int& bank, int& slot)
{
    const MVScopedLock scope (getLock());
    return bankManager.takeSelection (bank, slot);
}

bool SordelinBankShelf::readPatch (int bank, int slot, Patch& patch)
{
    const MVScopedLock scope (getLock());
    const auto bytes = bankManager.getPatchData (bank, slot);
    const auto metadata = bankManager.getPatchMeta (bank, slot);
    patch.image = imageOf (metadata);
    if (bytes->totalSize() <= emptySlotBytes)
        return false;
    const auto stream = bankManager.buildPatchStream (metadata, bytes);
    if (stream == nullptr || stream->totalSize() <= 1)
        return false;
    patch.stream = copyOf (stream->flatBytes(), stream->totalSize());
    patch.name = metadata != nullptr ? metadata->getName().toStdString() : "unnamed";
    if (metadata != nullptr)
    {
        patch.author = metadata->getAuthor().toStdString();
        patch.description = metadata->getDescription().toStdString();
        patch.genre = metadata->getGenre().toStdString();
    }
    patch.bankUuid = bankManager.getBankUuid (bank);
    patch.slot = slot;
    return true;
}

std::vector<SordelinBankShelf::BankNames> SordelinBankShelf::listBanks()
{
    const MVScopedLock scope (getLock());
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
