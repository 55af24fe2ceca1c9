// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace morvanelab::host
{

/** The plug-in's own list of banks, read from the file that it keeps in its settings directory. */
struct ListedBank
{
    std::string path;
    std::array<std::uint8_t, 16> uuid;
};

/** Reads a ".mv_bankmgr" file. Raises std::runtime_error if it is missing or damaged. */
std::vector<ListedBank> readBankList (const std::string& managerFile);

/** The 320 bytes that name a slot of a bank, everything else as in a new plug-in. Raises std::runtime_error if
    the list does not hold the bank; the file names are compared, not the directories. */
std::vector<std::uint8_t> makeState (const std::vector<ListedBank>& banks, const std::string& bankPath, int slot);

} // namespace morvanelab::host
