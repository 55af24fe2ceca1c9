// SPDX-License-Identifier: GPL-3.0-or-later
#include "PresetReport.h"

#include "BankSlots.h"
#include "CommandFailure.h"
#include "ManagerList.h"
#include "SafeText.h"

#include "engine/PatchTextChunks.h"
#include "foundation/MVException.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace morvanelab
{

namespace
{

using Json = patchText::Json;

struct View
{
    std::int32_t number;
    const char* name;
};

/** As the view menu names them. */
constexpr View views[] { { 0, "Metadata Image" },   { 1, "Scroll Waveform" }, { 2, "Phase Lock Waveform" },
                         { 3, "Spectrum" },         { 4, "Spectrogram" },     { 5, "3d Spectrogram" },
                         { 7, "Strange Attractor" } };

const char* viewName (std::int32_t number)
{
    const auto* const view = std::ranges::find (views, number, &View::number);
    return view != std::end (views) ? view->name : nullptr;
}

std::string bankHex (const SordelinState& state)
{
    return patchText::hexOf (state.bankUuid.data(), state.bankUuid.size());
}

bool isMapped (std::int32_t controller, std::int32_t channel) { return controller >= 0 && channel >= 0; }

std::string line (const char* label, const std::string& text)
{
    std::string row = label;
    row.resize (std::max<std::size_t> (row.size() + 1, 24), ' ');
    return row + text + "\n";
}

std::string numberText (double number)
{
    std::array<char, 40> text {};
    std::snprintf (text.data(), text.size(), "%.9g", number);
    return text.data();
}

std::string patchRows (const PresetPatch& patch)
{
    std::string text;
    if (! patch.bankPath.empty())
        text += line ("bank file", printableText (patch.bankPath)) + line ("bank name", printableText (patch.bankName));
    if (! patch.patchName.empty())
        text += line ("patch name", printableText (patch.patchName));
    if (! patch.problem.empty())
        text += line ("patch does not load", patch.problem);
    return text;
}

} // namespace

PresetPatch PresetPatch::find (const SordelinState& state, const std::string& managerFile)
{
    const MVBankList list = readManagerList (managerFile);
    const auto entry = std::ranges::find_if (list.entries,
                                             [&state] (const MVBankListEntry& known)
                                             {
                                                 const auto uuid = storedUuid (known);
                                                 return uuid && uuid->bytes == state.bankUuid;
                                             });
    if (entry == list.entries.end())
        return { {}, {}, {}, "Cannot find the patch for this preset.  Check if bank was unloaded." };

    const ListedBank listed = ListedBank::of (*entry);
    PresetPatch patch { listed.path, listed.name, {}, listed.problem };
    if (listed.bank == nullptr)
        return patch;

    try
    {
        patch.patchName = listed.bank->getPatchMeta (state.patchIndex)->getName().toStdString();
        (void)readSlotPatch (*listed.bank, state.patchIndex);
    }
    catch (const CommandFailure& failure)
    {
        patch.problem = failure.what();
    }
    catch (const MVException& failure)
    {
        patch.problem = failure.text();
    }
    return patch;
}

std::string presetAsText (const SordelinState& state, const std::optional<PresetPatch>& patch)
{
    std::string text = line ("bank", bankHex (state)) + line ("slot", std::to_string (state.patchIndex));
    if (patch)
        text += patchRows (*patch);

    text += line ("output volume", numberText (state.outputVolume))
            + line ("pre-compression volume", numberText (state.preCompressionVolume))
            + line ("compressor threshold", numberText (state.compressorThreshold))
            + line ("compressor roll-off", numberText (state.compressorRollOff) + " s");

    for (std::size_t i = 0; i < state.parameterValues.size(); ++i)
    {
        const std::int32_t controller = state.midiControllers[i], channel = state.midiChannels[i];
        std::string row = numberText (state.parameterValues[i]);
        if (isMapped (controller, channel))
        {
            row.resize (std::max<std::size_t> (row.size() + 2, 14), ' ');
            row += "controller " + std::to_string (controller) + ", channel " + std::to_string (channel)
                   + (controller < 256 && channel < 16 ? "" : "  (out of range)");
        }
        text += line (("parameter " + std::to_string (i)).c_str(), row);
    }

    const char* const view = viewName (state.visualiser);
    return text
           + line ("view",
                   std::to_string (state.visualiser) + " " + (view != nullptr ? view : "(there is no such view)"))
           + line ("preset item", std::to_string (state.presetItem))
           + (state.unused != 0 ? line ("unused", std::to_string (state.unused)) : "");
}

std::string presetAsJson (const SordelinState& state, const std::optional<PresetPatch>& patch)
{
    Json json { { "bank", bankHex (state) }, { "slot", state.patchIndex } };
    const auto textOrNull = [] (const std::string& text) { return text.empty() ? Json() : Json (text); };
    if (patch)
    {
        json["bankPath"] = textOrNull (patch->bankPath);
        json["bankName"] = textOrNull (patch->bankName);
        json["patchName"] = textOrNull (patch->patchName);
        json["problem"] = textOrNull (patch->problem);
    }

    json["outputVolume"] = state.outputVolume;
    json["preCompressionVolume"] = state.preCompressionVolume;
    json["compressorThreshold"] = state.compressorThreshold;
    json["compressorRollOff"] = state.compressorRollOff;
    json["parameters"] = Json::array();
    for (std::size_t i = 0; i < state.parameterValues.size(); ++i)
        json["parameters"].push_back ({ { "index", i },
                                        { "value", state.parameterValues[i] },
                                        { "midiController", state.midiControllers[i] },
                                        { "midiChannel", state.midiChannels[i] } });

    const char* const view = viewName (state.visualiser);
    json["view"] = view != nullptr ? Json (view) : Json();
    json["viewNumber"] = state.visualiser;
    json["presetItem"] = state.presetItem;
    json["unused"] = state.unused;
    return Json::array ({ json }).dump (2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace morvanelab
