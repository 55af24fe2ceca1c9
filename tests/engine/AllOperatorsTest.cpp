// SPDX-License-Identifier: GPL-3.0-or-later
#include "VoiceRig.h"
#include "engine/MVPatchText.h"
#include "engine/PatchTextChunks.h"
#include "engine/StoredOperator.h"
#include "foundation/MVRandom.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace morvanelab::test
{
namespace
{

std::string inQuotes (const std::string& text) { return '"' + text + '"'; }

/** Every input of an operator fed by the tone, at a level that suits controls and signals alike. */
std::string inputsOf (const OperatorSpec& spec)
{
    std::string inputs;
    for (int port = 0; port < StoredOperator::ofClass (spec).portCount (portsIn); ++port)
        inputs += (port > 0 ? ", " : "") + inQuotes (std::string ("#").append (std::to_string (port)))
                  + R"(: {"from": "tone", "scale": 0.5})";
    return inputs;
}

/** A patch that holds one operator of every row, each fed by a tone and mixed into the output. */
std::string textWithEveryOperator()
{
    std::string operators = R"({"name": "keys", "operator": "Midi Key In"},
        {"name": "tone", "operator": "Oscillator", "inputs": {"#0": {"from": "keys", "output": "#0"}}})";
    std::string mixes[2];
    int mixed = 0;

    for (const OperatorRow& row : operatorTable())
    {
        if (row.spec->typeId == PatchBuilder::output)
            continue;
        operators += R"(, {"name": )" + inQuotes (row.spec->className) + R"(, "operator": )"
                     + inQuotes (row.spec->className) + R"(, "inputs": {)" + inputsOf (*row.spec) + "}}";
        std::string& mix = mixes[mixed / 13];
        mix += (mix.empty() ? "" : ", ") + inQuotes (std::string ("#").append (std::to_string (mixed % 13)))
               + R"(: {"output": "#0", "scale": 0.02, "from": )" + inQuotes (row.spec->className) + "}";
        ++mixed;
    }

    for (const char* name : { "0", "1" })
        operators += std::string (R"(, {"name": "mix )") + name
                     + R"(", "operator": "Sum", "settings": {"inputCount": 13}, "inputs": {)" + mixes[*name - '0']
                     + "}}";
    operators += R"(, {"name": "both", "operator": "Sum", "inputs": {"#0": "mix 0", "#1": "mix 1"}},
        {"name": "out", "operator": "Output", "inputs": {"#0": "both"}})";
    return R"({"operators": [)" + operators + "]}";
}

std::vector<double> soundOf (VoiceRig& rig)
{
    std::vector<double> sound;
    rig.voice->noteOn (57, 0.8);
    for (int block = 0; block < 60; ++block)
    {
        rig.block (0.25);
        sound.insert (sound.end(), rig.channels[0].begin(), rig.channels[0].end());
    }
    return sound;
}

TEST (AllOperators, onePatchOfThemAllSurvivesTextAndAVoice)
{
    const auto patch = MVPatchText::compile (textWithEveryOperator(), "all").patch;
    ASSERT_EQ (patch->countChildren (fourCC ("op  ")), static_cast<int> (operatorTable().size()) + 5);

    const auto again = MVPatchText::compile (MVPatchText::write (*patch), "again").patch;
    EXPECT_EQ (patchText::packed (*again), patchText::packed (*patch));

    MVRandom::startAllFrom (7);
    VoiceRig first (false);
    first.play (patch);
    const std::vector<double> sound = soundOf (first);

    const auto saved = first.voice->savePatch (0);
    ASSERT_TRUE (saved);
    EXPECT_EQ (patchText::packed (*saved), patchText::packed (*patch));

    VoiceRig second (false);
    second.play (saved);
    EXPECT_EQ (soundOf (second), sound);
    MVRandom::startAllFromClock();

    double peak = 0.0;
    for (const double sample : sound)
    {
        ASSERT_TRUE (std::isfinite (sample));
        peak = std::max (peak, std::abs (sample));
    }
    EXPECT_GT (peak, 0.01);
}

} // namespace
} // namespace morvanelab::test
