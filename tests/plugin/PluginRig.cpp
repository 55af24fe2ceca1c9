// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/PluginRig.h"

#include "banks/MVBankFile.h"
#include "engine/MVPatchText.h"
#include "host/BankList.h"
#include "host/LevelReport.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace morvanelab::test
{

namespace
{

constexpr const char* bankName = "Rig.mv_onbank";

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

double Take::peak() const { return host::measureLevel (left, right, 0, left.size()).peak; }

PluginRig::PluginRig (const RigSettings& settings)
{
    unsetenv ("DISPLAY");
    setenv ("SORDELIN_HOME", folder.file ("home").c_str(), 1);
    std::filesystem::create_directories (folder.path() / "vst");
    std::filesystem::create_directories (folder.path() / "home");
    std::filesystem::copy_file (SORDELIN_PLUGIN_FILE, folder.path() / "vst" / "iSordelin64.so");
    writeSettings (settings);
    writeBank();
    plugin = std::make_unique<host::VstLibrary> (folder.file ("vst/iSordelin64.so"));
}

void PluginRig::writeSettings (const RigSettings& settings) const
{
    std::ofstream file (folder.path() / "home" / "MorvaneLab_Sordelin_1.props");
    file << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<PROPERTIES>\n"
         << "<VALUE name=\"play_host_notes\" val=\"" << settings.playHostNotes << "\"/>\n"
         << "<VALUE name=\"play_mode\" val=\"" << settings.playMode << "\"/>\n"
         << "<VALUE name=\"voices\" val=\"" << settings.voices << "\"/>\n</PROPERTIES>\n";
}

void PluginRig::writeBank() const
{
    MVBankFile bank;
    bank.createBank (juce::File (folder.file (std::string ("vst/") + bankName)));
    putPatch (bank, slotSine, sinePatch);
    putPatch (bank, slotSquare, squarePatch);
    putPatch (bank, slotInput, inputPatch);
}

std::unique_ptr<host::VstInstance> PluginRig::open()
{
    auto instance = std::make_unique<host::VstInstance> (*plugin);
    instance->setOffline (true);
    return instance;
}

std::unique_ptr<host::VstInstance> PluginRig::openWithPatch (int slot, double rate, int block)
{
    auto instance = open();
    instance->start (rate, block);
    instance->setState (stateFor (slot));
    return instance;
}

std::vector<std::uint8_t> PluginRig::stateFor (int slot) const
{
    return host::makeState (host::readBankList (folder.file ("home/Sordelin_Banks.mv_bankmgr")), bankName, slot);
}

Take render (host::VstInstance& instance, int frames, const std::vector<int>& blocks,
             const std::vector<host::MidiBytes>& messages)
{
    Take take;
    if (! messages.empty())
        instance.send (messages);
    for (std::size_t turn = 0; frames > 0; ++turn)
    {
        const int block = std::min (frames, blocks[turn % blocks.size()]);
        instance.render (block, take.left, take.right);
        frames -= block;
    }
    return take;
}

host::MidiBytes noteOn (int key, int velocity)
{
    return { 0, { 0x90, static_cast<unsigned char> (key), static_cast<unsigned char> (velocity) } };
}

template <typename Number>
Number stateField (const std::vector<std::uint8_t>& state, std::size_t offset)
{
    Number value {};
    if (offset + sizeof value <= state.size())
        std::memcpy (&value, state.data() + offset, sizeof value);
    return value;
}

template double stateField (const std::vector<std::uint8_t>&, std::size_t);
template std::int32_t stateField (const std::vector<std::uint8_t>&, std::size_t);

} // namespace morvanelab::test
