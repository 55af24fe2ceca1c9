// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/CountBank.h"

#include "banks/MVBankFile.h"
#include "engine/MVPatchText.h"

#include <array>
#include <iterator>
#include <sstream>

namespace morvanelab::test
{

namespace
{

std::string patchText (int parameters)
{
    std::ostringstream names;
    std::ostringstream factors;
    std::string last = "sine";
    for (int i = 0; i < parameters; ++i)
    {
        const auto level = "level" + std::to_string (i);
        names << (i > 0 ? "," : "") << R"({ "name": ")" << knobName (i) << R"(", "description": ")" << knobText (i)
              << R"(" })";
        factors << R"({ "name": ")" << level << R"(", "operator": "Product", "settings": { "inputCount": 2 },
                    "inputs": { "#0": { "from": ")"
                << last << R"(", "control": ")" << knobName (i) << R"(" }, "#1": "one" } },)";
        last = level;
    }
    std::ostringstream text;
    text << R"({ "format": "sordelin-patch", "metadata": { "name": ")" << nameOfCount (parameters)
         << R"(", "author": "Rig", "description": "Counts", "genre": "Tests" }, "parameters": [)" << names.str()
         << R"(], "operators": [ { "name": "key", "operator": "Midi Key In" },
             { "name": "sine", "operator": "Oscillator", "parameters": { "Function Type": "Sine" },
               "inputs": { "Frequency Signal": { "from": "key", "output": "Output Pitch in Hz" } } },
             { "name": "one", "operator": "Constant", "parameters": { "value": 1.0 } },)"
         << factors.str() << R"({ "name": "out", "operator": "Output", "inputs": { "CH 0 Panned Mix Input": ")" << last
         << R"(" } } ] })";
    return text.str();
}

} // namespace

int slotOfCount (int parameters)
{
    for (int slot = 0; slot < static_cast<int> (std::size (countsBySlot)); ++slot)
        if (countsBySlot[slot] == parameters)
            return slot;
    return -1;
}

std::string nameOfCount (int parameters) { return "Count " + std::to_string (parameters); }

std::string knobName (int index) { return "Knob " + std::to_string (index + 1); }

std::string knobText (int index) { return "Turns knob " + std::to_string (index + 1); }

void writeCountBank (const std::filesystem::path& path)
{
    MVBankFile bank;
    bank.createBank (juce::File (juce::String (path.string())));
    for (int slot = 0; slot < static_cast<int> (std::size (countsBySlot)); ++slot)
    {
        const auto compiled = MVPatchText::compile (patchText (countsBySlot[slot]), "counts");
        bank.setPatchData (slot, MVBankFile::packSlot (compiled.patch->packToBlock (true)));
        bank.setPatchMeta (slot, compiled.metadata);
    }
}

void writeBrokenBank (const std::filesystem::path& path)
{
    writeCountBank (path);
    MVBankFile bank;
    bank.openFile (juce::File (juce::String (path.string())), false);
    const std::array<char, 31> noPatch {};
    bank.setPatchData (0, MVBankFile::packSlot (makeSmart<MVDataBlock> (noPatch.data(), int { noPatch.size() })));
}

} // namespace morvanelab::test
