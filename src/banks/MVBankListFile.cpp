// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/MVBankBytes.h"
#include "banks/MVBankFileManager.h"
#include "banks/MVFileSwap.h"
#include "foundation/MVChunks.h"
#include "foundation/MVException.h"
#include "foundation/MVLog.h"
#include "foundation/MVMath.h"
#include "foundation/MVResult.h"

#include <cstring>

// The manager's file: reading, writing and backing up the list of banks.

namespace morvanelab
{

namespace
{

constexpr std::uint32_t listForm = fourCC ("bmgr");
constexpr std::uint32_t bankForm = fourCC ("bank");
constexpr std::uint32_t uuidChunk = fourCC ("uuid");
constexpr std::uint32_t pathChunk = fourCC ("path");
constexpr std::uint32_t selectedChunk = fourCC ("selc");

/** The file that a stored path names; an empty one unless it is valid UTF-8 and a whole path. */
juce::File toFile (const MVString& path)
{
    if (! juce::CharPointer_UTF8::isValidString (path.text(), path.length()))
        return {};
    const auto text = juce::String::fromUTF8 (path.text(), path.length());
    return juce::File::isAbsolutePath (text) ? juce::File (text) : juce::File();
}

/** Whether packed bytes say of themselves that they end in a checksum. */
bool carriesChecksum (const juce::MemoryBlock& bytes)
{
    constexpr std::size_t flagPosition = 7;
    return bytes.getSize() > flagPosition && std::memcmp (bytes.getData(), "FRVM", 4) == 0 && bytes[flagPosition] == 1;
}

juce::File backupOf (const juce::File& file)
{
    return file.getSiblingFile (file.getFileNameWithoutExtension() + "_bak" + file.getFileExtension());
}

} // namespace

bool MVBankFileManager::readManagerFile (juce::MemoryBlock& bytes) const
{
    return managerFile.getSize() <= INT32_MAX && managerFile.loadFileAsData (bytes);
}

bool MVBankFileManager::loadBanks()
{
    banks.clear();

    if (! managerFile.existsAsFile())
    {
        if (managerFile != juce::File())
            managerFile.create();
        return true;
    }

    juce::MemoryBlock bytes;
    if (! readManagerFile (bytes))
    {
        prompt.tell ("Bank Librarian", "Could not open banks file.");
        return true;
    }
    if (bytes.isEmpty())
        return true;

    const MVRiffPacker list (bytes.getData(), static_cast<int> (bytes.getSize()), carriesChecksum (bytes));
    if (! list.isWellFormed())
        return purgeManagerFile();

    bool allGood = true;
    for (int i = 0; i < list.childCount(); ++i)
    {
        const auto form = list.childAt (i);
        if (form->getChunkId() == bankForm)
            allGood = loadBankForm (*form) && allGood;
    }

    if (! allGood)
        saveAfterFailedLoad();
    return allGood;
}

bool MVBankFileManager::purgeManagerFile()
{
    if (prompt.askYesNo ("Load Banks Failure",
                         "Ondrelith has detected that persistent state for your loaded banks is corrupt.  "
                         "Do you wish to purge this state and load reload banks manually (recommended)?"))
    {
        managerFile.deleteFile();
        managerFile.create();
    }

    saveAfterFailedLoad();
    return false;
}

void MVBankFileManager::saveAfterFailedLoad()
{
    saveBanks();
    prompt.tell ("Bank Librarian", "Some bank files failed to load.");
}

bool MVBankFileManager::loadBankForm (const MVRiffPacker& form)
{
    const auto path = childText (form, pathChunk);
    const auto file = path ? toFile (*path) : juce::File();
    auto wrapper = makeSmart<MVBankFile_wrapper>();

    try
    {
        if (! MVFilePacker::recoverLeftover (file) || wrapper->bank.openFile (file, true) != resultDone
            || wrapper->bank.validateAndRepair (prompt) != resultDone)
            return false;
        wrapper->metadata = wrapper->bank.getBankMeta();
    }
    catch (const MVException& failure)
    {
        mvLog ("ERROR", "morvanelab::MVBankFileManager::loadBanks", "%s: %u %s", file.getFullPathName().toRawUTF8(),
               failure.getCode(), failure.text());
        return false;
    }

    wrapper->selected = childNumber<std::uint8_t> (form, selectedChunk).value_or (0) != 0;
    wrapper->uuid.unpackRiff (form.findChild (uuidChunk));
    banks.add (wrapper);
    return true;
}

bool MVBankFileManager::backUpManagerFile() const
{
    if (! managerFile.existsAsFile())
        return true;
    const auto backup = backupOf (managerFile);
    return backup.deleteFile() && managerFile.copyFileTo (backup);
}

bool MVBankFileManager::saveBanks()
{
    const auto tellNotSaved = [this]
    {
        prompt.tell ("Save Bank Librarian State", "Permissions or file path issue, could not save.");
        return false;
    };

    if (isWriteProtected (managerFile))
        return tellNotSaved();

    if (! backUpManagerFile())
        mvLog ("ERROR", "morvanelab::MVBankFileManager::saveBanks", "No backup of the bank list could be made");

    bool allPresent = true;
    const auto bytes = packChunks (packBanks (allPresent));
    if (bytesOf (bytes).empty() || ! replaceFileContents (managerFile, bytesOf (bytes).data(), bytesOf (bytes).size()))
        return tellNotSaved();

    if (! allPresent)
        prompt.tell ("Bank state mismatch", "Have you moved or deleted bank files?");
    return allPresent;
}

MVSmartPtr<MVRiffPacker> MVBankFileManager::packBanks (bool& allPresent) const
{
    auto list = makeSmart<MVRiffPacker> (listForm);
    for (const auto& wrapper : banks)
    {
        if (! wrapper->bank.getPath().existsAsFile())
        {
            allPresent = false;
            continue;
        }

        // A bank's metadata may be nested as deep as a tree may be, and would then make the list too deep to be
        // written. It is not read back.
        auto form = packBank (*wrapper, true);
        auto probe = makeSmart<MVRiffPacker> (listForm);
        probe->addChild (MVSmartPtr<MVRiffPacker> (form));
        list->addChild (probe->packedSize() > 0 ? form : packBank (*wrapper, false));
    }
    return list;
}

MVSmartPtr<MVRiffPacker> MVBankFileManager::packBank (const MVBankFile_wrapper& wrapper, bool withMetadata)
{
    auto form = makeSmart<MVRiffPacker> (bankForm);
    form->addChild (wrapper.uuid.packRiff (uuidChunk));
    addTextChunk (*form, pathChunk, MVString (wrapper.bank.getPath().getFullPathName().toRawUTF8()));
    if (withMetadata && wrapper.metadata)
        form->addChild (wrapper.metadata->packRiff());
    addChunk (*form, selectedChunk, static_cast<std::uint8_t> (wrapper.selected ? 1 : 0));
    return form;
}

} // namespace morvanelab
