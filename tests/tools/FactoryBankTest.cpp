// SPDX-License-Identifier: GPL-3.0-or-later
// What a player may expect of every patch of the factory bank. All sound is that of the command line program.
#include "tests/tools/CommandLineFixture.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <set>

namespace morvanelab
{
namespace
{

using nlohmann::json;
using test::Outcome;
using test::textOf;

constexpr double inputPitch = 220.0;
constexpr int rate = 44100;

struct Level
{
    double peak = 0.0, rms = 0.0;
    double offset = 0.0; ///< the larger mean of the two sides
    bool finite = true;
};

Level levelOf (const std::vector<float>& samples)
{
    Level level;
    double mean[2] {};
    for (std::size_t i = 0; i < samples.size(); ++i)
    {
        const double sample = samples[i];
        level.finite = level.finite && std::isfinite (sample);
        level.peak = std::max (level.peak, std::abs (sample));
        level.rms += sample * sample;
        mean[i % 2] += sample;
    }
    const double count = std::max (1.0, static_cast<double> (samples.size()));
    level.rms = std::sqrt (level.rms / count);
    level.offset = std::max (std::abs (mean[0]), std::abs (mean[1])) * 2.0 / count;
    return level;
}

/** How far two sounds are apart, as a share of the louder one. */
double distance (const std::vector<float>& a, const std::vector<float>& b)
{
    std::vector<float> difference (std::min (a.size(), b.size()));
    for (std::size_t i = 0; i < difference.size(); ++i)
        difference[i] = a[i] - b[i];
    return levelOf (difference).rms / std::max ({ levelOf (a).rms, levelOf (b).rms, 1e-9 });
}

/** The share of the left side that no steady sine of a pitch accounts for. */
double shareBesideSine (const std::vector<float>& samples, double pitch)
{
    double sine = 0.0, cosine = 0.0, power = 0.0;
    const std::size_t frames = samples.size() / 2;
    for (std::size_t i = 0; i < frames; ++i)
    {
        const double angle = 2.0 * std::numbers::pi * pitch * static_cast<double> (i) / rate;
        const double sample = samples[2 * i];
        sine += sample * std::sin (angle);
        cosine += sample * std::cos (angle);
        power += sample * sample;
    }
    const double explained = 2.0 * (sine * sine + cosine * cosine) / static_cast<double> (frames);
    return power > 0.0 ? std::max (0.0, 1.0 - explained / power) : 0.0;
}

/** One channel of 16 bits: a sine of half scale. */
std::string sineWave (double pitch, int frames)
{
    const auto little = [] (std::uint32_t value, int bytes)
    {
        std::string text;
        for (int i = 0; i < bytes; ++i)
            text += static_cast<char> (value >> (8 * i) & 0xFF);
        return text;
    };
    const auto size = static_cast<std::uint32_t> (frames * 2);
    std::string wave = "RIFF" + little (36 + size, 4) + "WAVEfmt " + little (16, 4) + little (1, 2) + little (1, 2)
                       + little (rate, 4) + little (rate * 2, 4) + little (2, 2) + little (16, 2) + "data"
                       + little (size, 4);
    for (int i = 0; i < frames; ++i)
        wave += little (
            static_cast<std::uint32_t> (std::lround (16000.0 * std::sin (2.0 * std::numbers::pi * pitch * i / rate))),
            2);
    return wave;
}

struct Slot
{
    int number;
    json source;

    std::string name() const { return source["metadata"]["name"]; }
    bool isEffect() const { return source["metadata"]["genre"] == "Effects"; }
    std::size_t parameterCount() const { return source["parameters"].size(); }
};

class FactoryBank : public test::CommandLine
{
protected:
    void SetUp() override
    {
        const std::string sources = SORDELIN_SOURCE_DIR "/factory/";
        const Outcome outcome = run ("bank build '" + sources + "factory-bank.json' -o f.mv_onbank");
        ASSERT_EQ (outcome.status, 0) << outcome.err;
        write ("tone.wav", sineWave (inputPitch, rate * 3 / 2));

        const json list = json::parse (textOf (sources + "factory-bank.json"));
        for (const json& entry : list["slots"])
            slots.push_back ({ entry["slot"], json::parse (textOf (sources + entry["patch"].get<std::string>())) });
        ASSERT_EQ (slots.size(), 64U);
    }

    std::vector<float> play (const Slot& slot, const std::string& arguments, bool withInput)
    {
        return render ("--bank f.mv_onbank --seconds 1.1 --slot " + std::to_string (slot.number) + " " + arguments
                       + (withInput ? " --input tone.wav" : ""));
    }

    /** As a player would hear it: effects with something to work on. */
    std::vector<float> play (const Slot& slot, const std::string& arguments)
    {
        return play (slot, arguments, slot.isEffect());
    }

    static std::string allParametersAt (const Slot& slot, const std::string& value)
    {
        std::string arguments;
        for (std::size_t i = 0; i < slot.parameterCount(); ++i)
            arguments += " --param " + std::to_string (i) + "=" + value;
        return arguments;
    }

    std::vector<Slot> slots;
};

TEST_F (FactoryBank, fillsItsSlotsWithPatchesThatTellWhatTheyAre)
{
    std::set<std::string> names;
    for (const Slot& slot : slots)
    {
        const json& metadata = slot.source["metadata"];
        EXPECT_TRUE (names.insert (slot.name()).second) << slot.name() << " occurs twice";
        EXPECT_EQ (metadata["author"], "Sordelin") << slot.name();
        EXPECT_GT (metadata["description"].get<std::string>().size(), 10U) << slot.name();
        EXPECT_GE (metadata.value ("tags", json::array()).size(), 2U) << slot.name();
        EXPECT_GE (slot.parameterCount(), 3U) << slot.name();
        EXPECT_LE (slot.parameterCount(), 8U) << slot.name();
        for (const json& parameter : slot.source["parameters"])
            EXPECT_FALSE (parameter["name"].get<std::string>().empty()
                          || parameter["description"].get<std::string>().empty())
                << slot.name();
    }

    const json listed = json::parse (run ("bank list f.mv_onbank --json").out);
    for (const Slot& slot : slots)
        EXPECT_EQ (listed.at (static_cast<std::size_t> (slot.number))["name"], slot.name());
}

TEST_F (FactoryBank, showsEveryOperatorAndEverySpectralAlgorithmAtWork)
{
    std::set<std::string> missing;
    std::size_t algorithms = 0;
    const json operators = json::parse (run ("operators --json").out);
    for (const json& kind : operators)
    {
        missing.insert (kind["name"]);
        for (const json& parameter : kind["parameters"])
            if (parameter["name"] == "Algorithm")
                for (const json& choice : parameter["choices"])
                    algorithms += missing.insert (choice["name"]).second ? 1 : 0;
    }
    ASSERT_GE (operators.size(), 26U);
    ASSERT_EQ (algorithms, 12U);

    for (const Slot& slot : slots)
    {
        ASSERT_EQ (run ("bank get f.mv_onbank --slot " + std::to_string (slot.number) + " -o p.mv_onpatch").status, 0);
        const json shown = json::parse (run ("patch show p.mv_onpatch").out);
        for (const json& node : shown["operators"])
        {
            ASSERT_TRUE (node.contains ("operator")) << slot.name();
            missing.erase (node["operator"].get<std::string>());
            if (node.contains ("parameters") && node["parameters"].contains ("Algorithm"))
                missing.erase (node["parameters"]["Algorithm"].get<std::string>());
        }
    }
    EXPECT_TRUE (missing.empty()) << json (missing).dump();
}

TEST_F (FactoryBank, isAsLoudOnEveryKeyAsAPlayerExpects)
{
    const double low = std::pow (10.0, -12.0 / 20.0), high = std::pow (10.0, -1.0 / 20.0);
    for (const Slot& slot : slots)
        for (const char* key : { "36", "48", "60", "72", "84" })
        {
            SCOPED_TRACE (slot.name() + ", key " + key);
            const Level level = levelOf (play (slot, std::string ("--note ") + key + ":0.8:0:1"));
            EXPECT_TRUE (level.finite);
            EXPECT_GE (level.peak, low);
            EXPECT_LE (level.peak, high);
            EXPECT_LT (level.offset, 0.01);
        }
}

TEST_F (FactoryBank, holdsTogetherUnderChordsAndParametersAtTheirEnds)
{
    for (const Slot& slot : slots)
    {
        const std::string note = "--note 60:0.8:0:1";
        for (const std::string& arguments :
             { note + " --note 67:0.8:0.3:1", note + allParametersAt (slot, "0"), note + allParametersAt (slot, "1") })
        {
            SCOPED_TRACE (slot.name() + ", " + arguments);
            const Level level = levelOf (play (slot, arguments));
            EXPECT_TRUE (level.finite);
            EXPECT_LT (level.peak, 2.0);
            EXPECT_GT (level.peak, 0.05);
            EXPECT_LT (level.offset, 0.02);
        }
    }
}

TEST_F (FactoryBank, letsEveryParameterBeHeard)
{
    for (const Slot& slot : slots)
        for (std::size_t i = 0; i < slot.parameterCount(); ++i)
        {
            const std::string set = "--note 60:0.8:0:1 --param " + std::to_string (i);
            EXPECT_GT (distance (play (slot, set + "=0"), play (slot, set + "=1")), 0.05)
                << slot.name() << ": " << slot.source["parameters"][i]["name"];
        }
}

TEST_F (FactoryBank, hasEffectsThatChangeTheHostsInputAndSoundWithoutIt)
{
    int effects = 0;
    for (const Slot& slot : slots)
    {
        if (! slot.isEffect())
            continue;
        ++effects;
        SCOPED_TRACE (slot.name());
        const std::string note = "--note 60:0.8:0:1";
        const auto alone = play (slot, note, false);
        const auto fed = play (slot, note, true);
        EXPECT_GT (levelOf (alone).peak, 0.05);
        EXPECT_GT (distance (alone, fed), 0.3);
        EXPECT_GT (shareBesideSine (fed, inputPitch), 0.05);
    }
    EXPECT_GE (effects, 6);
}

} // namespace
} // namespace morvanelab
