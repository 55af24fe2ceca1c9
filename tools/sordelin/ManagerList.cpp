// SPDX-License-Identifier: GPL-3.0-or-later
#include "ManagerList.h"

#include "BankSlots.h"
#include "CommandFailure.h"
#include "SafeText.h"
#include "StderrPrompt.h"

#include "banks/MVFileSwap.h"
#include "engine/PatchTextChunks.h"
#include "foundation/MVChunks.h"
#include "foundation/MVException.h"

#include <array>
#include <cstdio>

namespace morvanelab
{

namespace
{

using Json = patchText::Json;

/** Why a bank does not open, or nothing. The plug-in would also take a leftover of a write for a missing bank; but to
    open that would be to move it. */
std::string openListed (MVBankFile& bank, const juce::File& file)
{
    if (! file.exists())
        return "File does not exist.";
    if (! isPlainFile (file))
        return "File read access not allowed.";

    try
    {
        bank.openFile (file, true);
    }
    catch (const MVException& failure)
    {
        return failure.text();
    }
    if (const std::string problem = whyNoBank (bank); ! problem.empty())
        return problem;
    return bank.isLayoutValid() ? "" : "The bank file is damaged.";
}

std::string rememberedName (const MVBankListEntry& entry)
{
    MVMetaData metadata;
    if (const auto form = entry.form ? entry.form->findChild (MVMetaData::chunkType) : MVSmartPtr<MVRiffPacker>())
        metadata.unpackRiff (*form);
    return metadata.getName().toStdString();
}

/** What JSON may hold; stored texts are bytes of any kind. */
std::string dumped (const Json& json) { return json.dump (2, ' ', false, Json::error_handler_t::replace) + "\n"; }

} // namespace

void askAboutDamagedList (bool answer)
{
    StderrPrompt prompt (answer);
    if (! MVBankList::askToPurge (prompt))
        throw badData ("Some bank files failed to load.");
}

MVBankList readManagerList (const std::string& path)
{
    MVBankList list;
    switch (MVBankList::read (fileAt (path), list))
    {
        case MVBankListState::missing:
            throw badData ("File does not exist.  " + path);
        case MVBankListState::unreadable:
            throw badData ("Could not open banks file.  " + path);
        case MVBankListState::damaged:
            askAboutDamagedList (false);
            break;
        case MVBankListState::empty:
        case MVBankListState::good:
            break;
    }
    return list;
}

std::optional<MVBankUuid> storedUuid (const MVBankListEntry& entry)
{
    MVBankUuid uuid;
    if (entry.form && uuid.unpackRiff (entry.form->findChild (fourCC ("uuid"))))
        return uuid;
    return std::nullopt;
}

ListedBank ListedBank::of (const MVBankListEntry& entry)
{
    ListedBank listed { {}, {}, {}, {}, entry.selected, std::make_unique<MVBankFile>() };
    const auto stored = entry.form ? childText (*entry.form, fourCC ("path")) : std::nullopt;
    listed.path = stored ? stored->toStdString() : "";
    if (const auto uuid = storedUuid (entry))
        listed.uuid = patchText::hexOf (uuid->bytes.data(), uuid->bytes.size());

    listed.problem = openListed (*listed.bank, entry.file);
    if (listed.problem.empty())
        listed.name = listed.bank->getBankMeta()->getName().toStdString();
    else
    {
        listed.name = rememberedName (entry);
        listed.bank.reset();
    }
    return listed;
}

std::string managerListAsText (const MVBankList& list)
{
    std::string text;
    for (std::size_t index = 0; index < list.entries.size(); ++index)
    {
        const ListedBank listed = ListedBank::of (list.entries[index]);
        std::array<char, 64> start {};
        std::snprintf (start.data(), start.size(), "%2zu %c %-32s  ", index, listed.selected ? '*' : ' ',
                       listed.uuid.empty() ? "(no identity)" : listed.uuid.c_str());
        text += start.data() + printableText (listed.path) + "\n     ";
        text += listed.name.empty() ? "(no name)" : printableText (listed.name);
        if (! listed.problem.empty())
            text += "  does not open: " + listed.problem;
        text += "\n";
    }
    return text;
}

std::string managerListAsJson (const MVBankList& list)
{
    Json rows = Json::array();
    for (const MVBankListEntry& entry : list.entries)
    {
        const ListedBank listed = ListedBank::of (entry);
        rows.push_back ({ { "index", rows.size() },
                          { "path", listed.path },
                          { "name", listed.name },
                          { "uuid", listed.uuid.empty() ? Json() : Json (listed.uuid) },
                          { "selected", listed.selected },
                          { "opens", listed.problem.empty() },
                          { "problem", listed.problem.empty() ? Json() : Json (listed.problem) } });
    }
    return dumped (rows);
}

} // namespace morvanelab
