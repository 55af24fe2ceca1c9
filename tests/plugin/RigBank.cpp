// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/RigBank.h"

#include "banks/MVBankFile.h"
#include "engine/MVPatchText.h"

#include <fstream>

namespace morvanelab::test
{

namespace
{

constexpr const char* sinePatch = R"({ "format": "sordelin-patch",
  "metadata": { "name": "Rig Sine" },
  "parameters": [ { "name": "Level", "description": "How loud the sine is" },
                  { "name": "Unused", "description": "Nobody listens" },
                  { "name": "", "description": "" } ],
  "operators": [
    { "name": "key", "operator": "Midi Key In" },
    { "name": "sine", "operator": "Oscillator", "parameters": { "Function Type": "Sine" },
      "inputs": { "Frequency Signal": { "from": "key", "output": "Output Pitch in Hz" } } },
    { "name": "level", "operator": "Product", "settings": { "inputCount": 3 },
      "inputs": { "#0": { "from": "sine", "control": "Level" },
                  "#1": { "from": "key", "output": "Output Midi Key Velocity" },
                  "#2": { "from": "one", "control": 2 } } },
    { "name": "one", "operator": "Constant", "parameters": { "value": 1.0 } },
    { "name": "out", "operator": "Output", "inputs": { "CH 0 Panned Mix Input": "level" } } ] })";

constexpr const char* squarePatch = R"({ "format": "sordelin-patch",
  "metadata": { "name": "Rig Square" },
  "operators": [
    { "name": "key", "operator": "Midi Key In" },
    { "name": "square", "operator": "Oscillator", "parameters": { "Function Type": "Square" },
      "inputs": { "Frequency Signal": { "from": "key", "output": "Output Pitch in Hz", "scale": 2.0 } } },
    { "name": "level", "operator": "Product", "settings": { "inputCount": 2 },
      "inputs": { "#0": { "from": "square", "scale": 0.25 },
                  "#1": { "from": "key", "output": "Output Midi Key Velocity" } } },
    { "name": "out", "operator": "Output", "inputs": { "CH 0 Panned Mix Input": "level" } } ] })";

constexpr const char* inputPatch = R"({ "format": "sordelin-patch",
  "metadata": { "name": "Rig Input" },
  "operators": [
    { "name": "in", "operator": "Input" },
    { "name": "out", "operator": "Output", "inputs": { "CH 0 Panned Mix Input": { "from": "in", "output": "#0" } } } ] })";

void putPatch (MVBankFile& bank, int slot, const char* text)
{
    const auto compiled = MVPatchText::compile (text, "rig");
    bank.setPatchData (slot, MVBankFile::packSlot (compiled.patch->packToBlock (true)));
    bank.setPatchMeta (slot, compiled.metadata);
}

} // namespace

void writeRigSettings (const std::filesystem::path& home, const RigSettings& settings)
{
    std::filesystem::create_directories (home);
    std::ofstream file (home / "MorvaneLab_Sordelin_1.props");
    file << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<PROPERTIES>\n"
         << "<VALUE name=\"play_host_notes\" val=\"" << settings.playHostNotes << "\"/>\n"
         << "<VALUE name=\"show_help_buttons\" val=\"" << settings.showHelp << "\"/>\n"
         << "<VALUE name=\"play_mode\" val=\"" << settings.playMode << "\"/>\n"
         << "<VALUE name=\"voices\" val=\"" << settings.voices << "\"/>\n</PROPERTIES>\n";
}

void writeRigBank (const std::filesystem::path& path)
{
    MVBankFile bank;
    bank.createBank (juce::File (juce::String (path.string())));
    putPatch (bank, slotSine, sinePatch);
    putPatch (bank, slotSquare, squarePatch);
    putPatch (bank, slotInput, inputPatch);
}

} // namespace morvanelab::test
