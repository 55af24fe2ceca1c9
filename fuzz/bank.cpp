// SPDX-License-Identifier: GPL-3.0-or-later

// Bank files. The bytes become a file that is opened, judged, repaired if need be, read whole and changed. The first
// byte chooses whether the checksum is verified, and what is changed.

#include "FuzzInput.h"
#include "banks/MVBankFile.h"
#include "foundation/MVException.h"

#include <juce_core/juce_core.h>

using namespace morvanelab;

namespace
{

/** Answers every question with yes, so that repair is tried. */
class Willing : public MVUserPrompt
{
public:
    void tell (const std::string&, const std::string&, const std::string&) override {}
    bool askYesNo (const std::string&, const std::string&) override { return true; }
    void askText (const std::string&, const std::string&, const std::string&, TextAnswer) override {}
};

void readAll (MVBankFile& bank)
{
    (void)bank.getBankMeta();
    for (int slot = -1; slot <= MVBankFile::maxPatchesPerBank; ++slot)
    {
        const auto meta = bank.getPatchMeta (slot);
        const auto bytes = bank.getPatchData (slot);
        (void)MVBankFile::buildPatchStream (meta, bytes);
        (void)MVBankFile::unpackSlot (bytes);
    }
}

void useBank (const juce::File& file, std::uint8_t choice)
{
    Willing prompt;
    MVBankFile bank;
    if (bank.openFile (file, (choice & 1) != 0) != 1)
        return;

    if (bank.getFileType() == MVBankFile::bankFileType && bank.validateAndRepair (prompt) == 1)
    {
        readAll (bank);
        (void)bank.setPatchData (choice >> 2, makeSmart<MVDataBlock> ("patch", 5));
        (void)bank.clearSlot (choice >> 3);
    }

    // What was written must be a file that verifies.
    if ((choice & 2) != 0)
    {
        (void)bank.setBankMeta (makeSmart<MVMetaData>());
        MVBankFile again;
        fuzz::require (again.openFile (file, true) == 1, "what is written verifies");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    if (size < 1)
        return 0;

    const juce::TemporaryFile temporary (".mv_onbank");
    const juce::File file = temporary.getFile();
    file.replaceWithData (data + 1, size - 1);

    try
    {
        useBank (file, data[0]);
    }
    catch (const MVException&)
    {
        // Every failure of a file is told this way.
    }

    juce::File (file.getFullPathName() + "_mv_tmp").deleteFile();
    return 0;
}
