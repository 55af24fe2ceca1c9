// SPDX-License-Identifier: GPL-3.0-or-later

// The list of banks. The bytes become a manager file, which is loaded, changed and saved; the first one chooses how the
// user answers, and what is done. A path in it may name anything, so "@" stands for a folder of the run's own, with two
// banks "@/a" and "@/b".

#include "FuzzInput.h"
#include "banks/MVBankBytes.h"
#include "banks/MVBankFileManager.h"
#include "banks/MVFileSwap.h"
#include "foundation/MVException.h"

#include <juce_core/juce_core.h>

using namespace morvanelab;

namespace
{

/** Answers every question the same way. */
class Scripted : public MVUserPrompt
{
public:
    explicit Scripted (bool answerToGive) : answer (answerToGive) {}
    void tell (const std::string&, const std::string&, const std::string&) override {}
    bool askYesNo (const std::string&, const std::string&) override { return answer; }
    void askText (const std::string&, const std::string&, const std::string&, TextAnswer reply) override { reply ({}); }

private:
    bool answer;
};

/** The run's own folder, in memory where the system has such a place: every save waits for the disk. */
struct Folder
{
    Folder()
    {
        folder.createDirectory();
        MVBankFile().createBank (first);
        MVBankFile().createBank (second);
    }
    ~Folder() { folder.deleteRecursively(); }

    static juce::File choose()
    {
        const juce::File memory ("/dev/shm");
        const auto parent = memory.isDirectory() ? memory : juce::File::getSpecialLocation (juce::File::tempDirectory);
        return parent.getNonexistentChildFile ("sordelin-fuzz-" + juce::String (juce::Time::getHighResolutionTicks()),
                                               {});
    }

    const juce::File folder = choose();
    const juce::File first = folder.getChildFile ("a");
    const juce::File second = folder.getChildFile ("b");
    const juce::File list = folder.getChildFile ("list.mv_bankmgr");
    const juce::File backup = backupSiblingOf (list);
};

juce::MemoryBlock contentsOf (const juce::File& file)
{
    juce::MemoryBlock bytes;
    readFileContents (file, bytes);
    return bytes;
}

/** Writes the list, its paths led into the folder and its sum made right, so that something comes through now and then.
    What is no list is written as it is. */
void writeList (const Folder& at, const std::uint8_t* data, std::size_t size)
{
    MVBankList list;
    juce::MemoryBlock bytes (data, size);
    constexpr std::size_t checksumFlag = 7;
    if (size > checksumFlag)
        bytes[checksumFlag] = 0;
    if (MVBankList::parse (bytes, list))
    {
        for (auto& entry : list.entries)
            if (entry.file.getFileName().startsWithChar ('@'))
                entry = MVBankListEntry::make (at.folder.getChildFile (entry.file.getFileName().substring (1, 2)),
                                               entry.uuid, entry.selected, {});
        const auto packed = list.pack();
        if (packed->totalSize() > 0)
            bytes = juce::MemoryBlock (bytesOf (packed).data(), bytesOf (packed).size());
    }
    else
        bytes = juce::MemoryBlock (data, size);
    at.list.replaceWithData (bytes.getData(), bytes.getSize());
}

void use (const Folder& at, std::uint8_t choice)
{
    const bool answer = (choice & 1) != 0;
    const auto before = contentsOf (at.list);
    MVBankList parsed;
    const bool damaged = MVBankList::read (at.list, parsed) == MVBankListState::damaged;

    Scripted prompt (answer);
    MVBankFileManager manager (prompt);
    manager.setManagerFile (at.list);
    const bool good = manager.loadBanks();
    fuzz::require (! damaged || ! good, "a damaged list does not load");
    fuzz::require (! damaged || contentsOf (answer ? at.backup : at.list) == before, "a damaged list is kept");

    if ((choice & 2) != 0)
        manager.addBankFile (choice >> 4, at.second);
    if ((choice & 4) != 0)
        manager.moveBank (choice >> 5, choice >> 4 & 1);
    const int bank = choice >> 6;
    if ((choice & 8) != 0 && bank < manager.getBankCount()
        && manager.getBank (bank)->bank.getPath().isAChildOf (at.folder))
    {
        auto bytes = makeSmart<MVDataBlock> ("patch", 5);
        manager.setPatch (bank, choice >> 2, {}, bytes);
        manager.removeBank (bank);
    }
    const bool saved = manager.saveBanks();
    fuzz::require (saved == (! damaged || answer), "what can be saved is");
    fuzz::require (saved || contentsOf (at.list) == before, "what is not saved stays");

    // What was saved loads again and saves as the same bytes.
    if (! saved)
        return;
    const auto written = contentsOf (at.list);
    MVBankFileManager again (prompt);
    again.setManagerFile (at.list);
    fuzz::require (again.loadBanks() && again.saveBanks(), "what is saved loads");
    fuzz::require (again.getBankCount() == manager.getBankCount(), "no bank is lost");
    fuzz::require (contentsOf (at.list) == written, "saving is repeatable");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    if (size < 1)
        return 0;
    static const Folder folder;
    folder.list.deleteFile();
    folder.backup.deleteFile();
    writeList (folder, data + 1, size - 1);
    use (folder, data[0]);
    return 0;
}
