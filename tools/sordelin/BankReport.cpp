// SPDX-License-Identifier: GPL-3.0-or-later
#include "BankReport.h"

#include "BankSlots.h"
#include "CommandFailure.h"
#include "PatchFile.h"
#include "PatchReport.h"
#include "SafeText.h"

#include "foundation/MVException.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cstdio>

namespace morvanelab
{

namespace
{

using Json = nlohmann::ordered_json;

struct SlotRow
{
    int slot;
    int bytes; ///< 0 for an empty slot
    MVSmartPtr<MVMetaData> metadata;
};

SlotRow rowOf (MVBankFile& bank, int slot)
{
    const auto data = bank.getPatchData (slot);
    return { slot, MVBankFile::isOccupied (data) ? data->totalSize() : 0, bank.getPatchMeta (slot) };
}

std::string textOf (const MVString& text) { return std::string (text.view()); }

} // namespace

std::string bankListAsText (MVBankFile& bank)
{
    const std::string name = printableText (bank.getBankMeta()->getName().view());
    std::string text = name.empty() ? "" : name + "\n";

    for (int slot = 0; slot < MVBankFile::maxPatchesPerBank; ++slot)
    {
        const SlotRow row = rowOf (bank, slot);
        std::array<char, 160> line {};
        std::snprintf (line.data(), line.size(), "%2d  %-8s  %-28.60s  %-16.40s  ", slot,
                       row.bytes > 0 ? std::to_string (row.bytes).c_str() : "-",
                       printableText (row.metadata->getName().view()).c_str(),
                       printableText (row.metadata->getGenre().view()).c_str());
        std::string whole = line.data() + printableText (row.metadata->getAuthor().view());
        whole.erase (whole.find_last_not_of (' ') + 1);
        text += whole + "\n";
    }

    return text;
}

std::string bankListAsJson (MVBankFile& bank)
{
    Json list = Json::array();

    for (int slot = 0; slot < MVBankFile::maxPatchesPerBank; ++slot)
    {
        const SlotRow row = rowOf (bank, slot);
        list.push_back ({ { "slot", slot },
                          { "used", row.bytes > 0 },
                          { "bytes", row.bytes },
                          { "name", textOf (row.metadata->getName()) },
                          { "author", textOf (row.metadata->getAuthor()) },
                          { "description", textOf (row.metadata->getDescription()) },
                          { "genre", textOf (row.metadata->getGenre()) } });
    }

    // Stored texts are bytes of any kind; what is no UTF-8 is replaced.
    return list.dump (2, ' ', false, Json::error_handler_t::replace) + "\n";
}

void verifyBank (const std::string& path, bool repair)
{
    const auto bank = openBank (path, repair);
    if (! bank->isLayoutValid())
        throw badData ("The bank file is damaged beyond repair: it holds too many compartments.");

    int used = 0;
    int bad = 0;
    for (int slot = 0; slot < MVBankFile::maxPatchesPerBank; ++slot)
    {
        if (! MVBankFile::isOccupied (bank->getPatchData (slot)))
            continue;

        ++used;
        try
        {
            (void)patchReport (parsePatch (readSlotPatch (*bank, slot)));
        }
        catch (const MVException& failure)
        {
            ++bad;
            std::fprintf (stderr, "slot %d: %s\n", slot, failure.text());
        }
        catch (const CommandFailure& failure)
        {
            ++bad;
            std::fprintf (stderr, "slot %d: %s\n", slot, failure.what());
        }
    }

    std::printf ("%s: %d of 64 slots used, %d bad\n", path.c_str(), used, bad);
    if (bad > 0)
        throw badData ("Error:  Invalid or corrupt patch.");
}

} // namespace morvanelab
