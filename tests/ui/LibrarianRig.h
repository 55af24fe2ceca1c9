// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/banks/BankTestSupport.h"
#include "tests/support/PatchBuilder.h"
#include "ui/MVLibrarianModel.h"
#include "ui/MVLibrarianText.h"

#include <gtest/gtest.h>

namespace morvanelab::test
{

/** Banks on disk under a manager, and a model over them. */
class LibrarianRig
{
public:
    LibrarianRig() { manager.setManagerFile (folder.file ("Sordelin_Banks.mv_bankmgr")); }

    /** Patch bytes of their own for each seed, as a patch file holds them. */
    static Bytes patchFile (int seed)
    {
        PatchBuilder patch;
        const int level = patch.constantNode (seed * 0.001);
        const int out = patch.node (PatchBuilder::output);
        patch.route (level, 0, out, 0);
        return toBytes (patch.tree()->packToBlock (true));
    }

    struct Patch
    {
        int slot;
        std::string name;
        std::string author;
        std::string genre;
        std::string description;
    };

    /** A bank file with these patches, not yet in the list. The metadata carry a chunk that this program does not know.
     */
    juce::File makeBank (const char* fileName, const std::vector<Patch>& patches)
    {
        const auto file = folder.file (fileName);
        MVBankFile bank;
        bank.createBank (file);
        std::vector<std::pair<MVSmartPtr<MVDataBlock>, MVSmartPtr<MVDataBlock>>> contents;
        std::vector<MVFilePacker::Replacement> replacements;
        for (const auto& patch : patches)
        {
            MVMetaData metadata;
            metadata.setName (MVString (std::string_view (patch.name)));
            metadata.setAuthor (MVString (std::string_view (patch.author)));
            metadata.setGenre (MVString (std::string_view (patch.genre)));
            metadata.setDescription (MVString (std::string_view (patch.description)));
            auto riff = metadata.packRiff();
            addTextChunk (*riff, fourCC ("zzzz"), MVString ("from elsewhere"));
            contents.emplace_back (MVBankFile::packSlot (toBlock (patchFile (++seeds))), packChunks (riff));
            replacements.push_back ({ fourCC ("pdat"), patch.slot, 1, bytesOf (contents.back().first) });
            replacements.push_back ({ fourCC ("pmta"), patch.slot, 2, bytesOf (contents.back().second) });
        }
        bank.replaceCompartments (replacements);
        return file;
    }

    /** The same, in the list. */
    juce::File addBank (const char* fileName, const std::vector<Patch>& patches)
    {
        const auto file = makeBank (fileName, patches);
        manager.addBankFile (-1, file);
        return file;
    }

    /** All compartments of a bank as they lie on disk: type, index in the directory, bytes. */
    static std::vector<Bytes> compartments (const juce::File& file)
    {
        MVBankFile bank;
        bank.openFile (file, true);
        std::vector<Bytes> result;
        for (auto* node = bank.getCompartments().firstNode(); node != nullptr; node = node->next)
        {
            auto bytes = toBytes (bank.readCompartment (node->value));
            bytes.push_back (static_cast<std::uint8_t> (node->value.format));
            bytes.push_back (static_cast<std::uint8_t> (node->value.type));
            bytes.push_back (static_cast<std::uint8_t> (node->value.type >> 8U));
            result.push_back (std::move (bytes));
        }
        return result;
    }

    /** The names of the list's banks, without extension, as the manager's file holds them. */
    std::string listOnDisk() const
    {
        MVBankList list;
        MVBankList::read (manager.getManagerFile(), list);
        std::string names;
        for (const auto& entry : list.entries)
            names += entry.file.getFileNameWithoutExtension().toStdString() + " ";
        return names;
    }

    /** Numbers and names of a bank's patches, read from disk: "0 Bell, 3 Pad". */
    static std::string patchesOnDisk (const juce::File& file)
    {
        MVBankFile bank;
        bank.openFile (file, true);
        std::string text;
        for (int i = 0; i < MVBankFile::maxPatchesPerBank; ++i)
            if (MVBankFile::isOccupied (bank.getPatchData (i)))
                text += (text.empty() ? "" : ", ") + std::to_string (i) + " "
                        + bank.getPatchMeta (i)->getName().toStdString();
        return text;
    }

    static Bytes patchOnDisk (const juce::File& file, int slot)
    {
        MVBankFile bank;
        bank.openFile (file, true);
        return toBytes (MVBankFile::unpackSlot (bank.getPatchData (slot)));
    }

    TestFolder folder;
    ScriptedPrompt prompt;
    MVBankFileManager manager { prompt };
    MVLibrarianModel model { manager, prompt };

private:
    int seeds = 0;
};

inline MVSlotSet slotSet (std::initializer_list<int> slots)
{
    MVSlotSet result;
    for (const int slot : slots)
        result.set (static_cast<std::size_t> (slot));
    return result;
}

} // namespace morvanelab::test
