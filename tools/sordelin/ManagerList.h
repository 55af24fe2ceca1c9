// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVBankFile.h"
#include "banks/MVBankList.h"

#include <memory>
#include <optional>
#include <string>

namespace morvanelab
{

/** A list of banks as it stands in its file, and what there is to say of each bank. Nothing is created, mended or moved
    by looking. */

/** Throws badData: "File does not exist.", "Could not open banks file." or that the list is corrupt. */
MVBankList readManagerList (const std::string& path);
/** Asks on stderr, as the plug-in does, whether to start anew in place of a corrupt list; the answer is given
   beforehand. Throws badData for no. */
void askAboutDamagedList (bool answer);

/** One bank of the list. */
struct ListedBank
{
    std::string path;    ///< as stored, also if it names no file
    std::string uuid;    ///< hexadecimal; empty if none is stored
    std::string name;    ///< the bank's own; of a bank that does not open, the one that the list remembers
    std::string problem; ///< why the plug-in would drop it; empty if it would not
    bool selected;
    std::unique_ptr<MVBankFile> bank; ///< null if there is a problem

    static ListedBank of (const MVBankListEntry& entry);
};

/** The identity that is stored in an entry. */
std::optional<MVBankUuid> storedUuid (const MVBankListEntry& entry);

std::string managerListAsText (const MVBankList& list);
/** An array of objects: index, path, name, uuid, selected, opens, problem. */
std::string managerListAsJson (const MVBankList& list);

} // namespace morvanelab
