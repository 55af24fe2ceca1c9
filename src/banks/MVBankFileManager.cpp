// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/MVBankFileManager.h"

#include "banks/MVAppPersistentProps.h"
#include "foundation/MVException.h"
#include "foundation/MVLog.h"
#include "foundation/MVMath.h"
#include "foundation/MVResult.h"

#include <algorithm>

namespace morvanelab
{

namespace
{

constexpr const char* formerManagerFileName = "Sordelin_Banks_1.0.mv_bankmgr";
constexpr std::uint32_t oldestBankVersion = 100000;

void logFailure (const char* function, const MVException& failure)
{
    mvLog ("ERROR", function, "%u: %s", failure.getCode(), failure.text());
}

/** Counts the flagged ones; index is the only one, else -1. */
template <typename Wrappers>
int countSelected (const Wrappers& wrappers, int& index)
{
    int count = 0;
    index = -1;
    for (int i = 0; i < wrappers.size(); ++i)
    {
        if (wrappers[i]->selected)
        {
            index = i;
            ++count;
        }
    }
    if (count != 1)
        index = -1;
    return count;
}

template <typename Wrappers>
void clearSelection (Wrappers& wrappers)
{
    for (auto& wrapper : wrappers)
        wrapper->selected = false;
}

} // namespace

MVBankFileManager::MVBankFileManager (MVUserPrompt& userPrompt) : prompt (userPrompt)
{
    for (int i = 0; i < MVBankFile::maxPatchesPerBank; ++i)
    {
        auto wrapper = makeSmart<MVPatch_wrapper>();
        wrapper->metadata = makeSmart<MVMetaData>();
        patches.add (wrapper);
    }
}

juce::File MVBankFileManager::findManagerFile (MVAppPersistentProps& properties)
{
    const auto settings = properties.getFile().getParentDirectory();
    const auto override = properties.getString ("banks_path");
    const auto directory = override.isNotEmpty() ? settings.getChildFile (override) : settings;
    const auto file = directory.getChildFile (managerFileName);

    const auto former = settings.getChildFile (formerManagerFileName);
    if (former.existsAsFile() && ! file.exists() && directory.createDirectory().wasOk())
        former.copyFileTo (file);
    return file;
}

void MVBankFileManager::setManagerFile (const juce::File& file)
{
    managerFile = file;
    selectionFile = file == juce::File() ? juce::File() : file.getSiblingFile (selectionFileName);
    deleteSelectionFile();
    if (selectionFile != juce::File())
        selectionFile.create();
}

void MVBankFileManager::deleteSelectionFile()
{
    if (selectionFile.existsAsFile())
        selectionFile.deleteFile();
}

bool MVBankFileManager::addBankFile (int position, const juce::File& path)
{
    auto wrapper = makeSmart<MVBankFile_wrapper>();
    auto& bank = wrapper->bank;

    if (! MVFilePacker::recoverLeftover (path))
        MVBankFile().createBank (path);

    if (bank.openFile (path, true) == resultDone)
        bank.validateAndRepair (prompt);
    if (bank.getFileType() != MVBankFile::bankFileType)
        throw MVException (resultFailed, "Error:  Not a bank file.");

    const auto version = bank.getVersion();
    if (versionCode (version[0], version[1], version[2]) < oldestBankVersion)
        throw MVException (resultFailed, "Error:  Incompatible version.");

    wrapper->metadata = bank.getBankMeta();
    banks.insert (position < 0 ? banks.size() : position, wrapper);
    return saveBanks();
}

bool MVBankFileManager::createBankFile (int position, const juce::File& path)
{
    MVBankFile().createBank (path);
    return addBankFile (position, path);
}

void MVBankFileManager::removeBank (int index)
{
    if (index < 0 || index >= banks.size())
        return;
    banks.removeAt (index);
    saveBanks();
}

MVSmartPtr<MVBankFile_wrapper> MVBankFileManager::getBank (int index) const
{
    return index >= 0 && index < banks.size() ? banks[index] : MVSmartPtr<MVBankFile_wrapper>();
}

MVSmartPtr<MVPatch_wrapper> MVBankFileManager::getPatch (int index) const
{
    return index >= 0 && index < patches.size() ? patches[index] : MVSmartPtr<MVPatch_wrapper>();
}

int MVBankFileManager::findBankByUuid (const MVBankUuid& uuid) const
{
    for (int i = 0; i < banks.size(); ++i)
        if (banks[i]->uuid == uuid)
            return i;
    return -1;
}

MVBankUuid MVBankFileManager::getBankUuid (int index) const
{
    const auto wrapper = getBank (index);
    return wrapper ? wrapper->uuid : MVBankUuid::createRandom();
}

bool MVBankFileManager::isBankPathLoaded (const juce::File& path) const
{
    return std::any_of (banks.begin(), banks.end(),
                        [&] (const auto& wrapper) {
                            return wrapper->bank.getPath().getFullPathName().equalsIgnoreCase (path.getFullPathName());
                        });
}

MVSmartPtr<MVDataBlock> MVBankFileManager::getPatchData (int bank, int patch) const
{
    const auto wrapper = getBank (bank);
    return wrapper ? wrapper->bank.getPatchData (patch) : makeSmart<MVDataBlock>();
}

MVSmartPtr<MVMetaData> MVBankFileManager::getPatchMeta (int bank, int patch) const
{
    const auto wrapper = getBank (bank);
    return wrapper ? wrapper->bank.getPatchMeta (patch) : makeSmart<MVMetaData>();
}

MVSmartPtr<MVDataBlock> MVBankFileManager::buildPatchStream (const MVSmartPtr<MVMetaData>& meta,
                                                             const MVSmartPtr<MVDataBlock>& bytes) const
{
    return MVBankFile::buildPatchStream (meta, bytes);
}

bool MVBankFileManager::setSelectedBankPatch (int patch, MVSmartPtr<MVDataBlock>& bytes)
{
    const auto data = std::move (bytes);
    int bankIndex = -1;
    const auto slot = getPatch (patch);
    if (getSelectedBankIndex (bankIndex) != 1 || ! slot)
        return false;

    const auto wrapper = banks[bankIndex];
    try
    {
        if (wrapper->bank.setPatchData (patch, data) != resultDone)
            return false;
        slot->metadata = wrapper->bank.getPatchMeta (patch);
    }
    catch (const MVException& failure)
    {
        logFailure ("morvanelab::MVBankFileManager::setSelectedBankPatch", failure);
        removeBank (bankIndex);
        prompt.tell ("File I/O Exception", "Failed to access.  File moved?");
        return false;
    }

    slot->selected = true;
    slot->occupied = true;
    wrapper->uuid = MVBankUuid::createRandom();
    saveBanks();
    return true;
}

int MVBankFileManager::getSelectedBankIndex (int& index) const { return countSelected (banks, index); }

int MVBankFileManager::getSelectedPatchIndex (int& index) const { return countSelected (patches, index); }

void MVBankFileManager::setBankSelected (int index, bool on, bool alwaysRefresh)
{
    const auto wrapper = getBank (index);
    if (! wrapper)
        return;

    int before = -1;
    int after = -1;
    getSelectedBankIndex (before);
    wrapper->selected = on;
    getSelectedBankIndex (after);

    if (alwaysRefresh || before != after)
        refreshPatches();
}

void MVBankFileManager::refreshPatches()
{
    int bankIndex = -1;
    if (getSelectedBankIndex (bankIndex) != 1)
        return;

    auto& bank = banks[bankIndex]->bank;
    for (int i = 0; i < patches.size(); ++i)
    {
        auto& slot = *patches[i];
        slot.selected = false;
        slot.occupied = false;
        slot.metadata = makeSmart<MVMetaData>();

        try
        {
            slot.metadata = bank.getPatchMeta (i);
            slot.occupied = MVBankFile::isOccupied (bank.getPatchData (i));
        }
        catch (const MVException& failure)
        {
            logFailure ("morvanelab::MVBankFileManager::refreshPatches", failure);
        }
    }
}

void MVBankFileManager::selectPatch (int patch, bool on)
{
    int bankIndex = -1;
    const auto slot = getPatch (patch);
    if (getSelectedBankIndex (bankIndex) != 1 || ! slot)
        return;

    slot->selected = on;
    int patchIndex = -1;
    getSelectedPatchIndex (patchIndex);

    deleteSelectionFile();
    if (selectionFile == juce::File())
        return;
    const std::int32_t record[] { bankIndex, patchIndex };
    selectionFile.appendData (record, sizeof (record));
}

bool MVBankFileManager::takeSelection (int& bank, int& patch)
{
    bank = -1;
    patch = -1;

    // Eight bytes are read however large the file is.
    std::int32_t record[] { -1, -1 };
    {
        juce::FileInputStream stream (selectionFile);
        if (stream.openedOk() && stream.read (record, sizeof (record)) == static_cast<int> (sizeof (record)))
        {
            bank = record[0];
            patch = record[1];
        }
    }

    deleteSelectionFile();
    return bank >= 0 && patch >= 0;
}

void MVBankFileManager::clearPatchSelection()
{
    clearSelection (patches);
    deleteSelectionFile();
}

void MVBankFileManager::clearBankSelection()
{
    clearSelection (banks);
    deleteSelectionFile();
    refreshPatches();
}

int MVBankFileManager::firstEmptySlot() const
{
    for (int i = 0; i < patches.size(); ++i)
        if (! patches[i]->occupied)
            return i;
    return MVBankFile::maxPatchesPerBank;
}

} // namespace morvanelab
