// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/MVBankFileManager.h"

#include "banks/MVAppPersistentProps.h"
#include "banks/MVDirectoryLock.h"
#include "banks/MVFileSwap.h"
#include "foundation/MVException.h"
#include "foundation/MVMath.h"
#include "foundation/MVResult.h"

#include <algorithm>

namespace morvanelab
{

namespace
{

constexpr const char* formerManagerFileName = "Sordelin_Banks_1.0.mv_bankmgr";
constexpr std::uint32_t oldestBankVersion = 100000;

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
    juce::MemoryBlock list;
    if (former.existsAsFile() && ! file.exists() && readFileContents (former, list))
        replaceFileContents (file, list.getData(), list.getSize());
    return file;
}

bool MVBankFileManager::deleteListIn (const juce::File& settingsDirectory)
{
    const MVDirectoryLock others (settingsDirectory);
    const auto list = settingsDirectory.getChildFile (managerFileName);
    bool done = true;
    for (const auto& file : { list, backupSiblingOf (list), settingsDirectory.getChildFile (formerManagerFileName),
                              settingsDirectory.getChildFile (selectionFileName) })
        done = file.deleteFile() && done;
    return done;
}

void MVBankFileManager::setManagerFile (const juce::File& file)
{
    managerFile = file;
    knownBytes.reset();
    known = {};
    unopenedKeys.clear();

    selectionFile = file == juce::File() ? juce::File() : file.getSiblingFile (selectionFileName);
    deleteSelectionFile();
    if (selectionFile != juce::File())
        selectionFile.create();
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

bool MVBankFileManager::moveBank (int from, int to)
{
    const auto wrapper = getBank (from);
    if (! wrapper)
        return false;
    banks.removeAt (from);
    banks.insert (to, wrapper);
    return saveBanks();
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

} // namespace morvanelab
