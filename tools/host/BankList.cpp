// SPDX-License-Identifier: GPL-3.0-or-later
#include "host/BankList.h"

#include "banks/SordelinState.h"
#include "foundation/MVMath.h"
#include "foundation/MVRiffPacker.h"
#include "foundation/MVString.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace morvanelab::host
{

std::vector<ListedBank> readBankList (const std::string& managerFile)
{
    std::ifstream file (managerFile, std::ios::binary);
    const std::string bytes { std::istreambuf_iterator<char> (file), {} };
    const MVRiffPacker list (bytes.data(), static_cast<int> (bytes.size()), false);
    if (! list.isWellFormed())
        throw std::runtime_error ("no list of banks in " + managerFile);

    std::vector<ListedBank> banks;
    for (int i = 0; i < list.childCount(); ++i)
    {
        const auto form = list.childAt (i);
        const auto uuid = form->findChild (fourCC ("uuid"));
        const auto path = form->findChild (fourCC ("path"));
        ListedBank bank {};
        if (uuid == nullptr || path == nullptr || uuid->readablePayload() < static_cast<int> (bank.uuid.size()))
            continue;
        std::memcpy (bank.uuid.data(), uuid->getPayload(), bank.uuid.size());
        MVString text;
        text.unpackRiff (*path);
        bank.path = text.toStdString();
        banks.push_back (bank);
    }
    return banks;
}

std::vector<std::uint8_t> makeState (const std::vector<ListedBank>& banks, const std::string& bankPath, int slot)
{
    const auto wanted = std::filesystem::path (bankPath).filename();
    const auto found =
        std::find_if (banks.begin(), banks.end(),
                      [&] (const ListedBank& bank) { return std::filesystem::path (bank.path).filename() == wanted; });
    if (found == banks.end())
        throw std::runtime_error ("the plug-in knows no bank " + wanted.string());

    // As a new plug-in would write it after loading the patch: sound controls at their defaults, nothing mapped.
    SordelinState state;
    state.compressorThreshold = static_cast<double> (0.9F);
    state.compressorRollOff = 1.0;
    state.preCompressionVolume = 1.0;
    state.bankUuid = found->uuid;
    state.patchIndex = slot;
    state.parameterValues.fill (0.5);
    state.midiControllers.fill (-1);
    state.midiChannels.fill (-1);
    std::vector<std::uint8_t> bytes (sizeof state);
    std::memcpy (bytes.data(), &state, sizeof state);
    return bytes;
}

} // namespace morvanelab::host
