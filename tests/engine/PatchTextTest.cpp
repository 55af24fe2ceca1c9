// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVPatchText.h"
#include "engine/PatchTextChunks.h"
#include "engine/StoredOperator.h"
#include "foundation/MVChunks.h"
#include "foundation/MVException.h"
#include "operators/MVOperatorTable.h"
#include "tests/support/TestRandom.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>

namespace morvanelab
{
namespace
{

using patchText::packed;

const std::string sourceFolder = SORDELIN_SOURCE_DIR;

std::string readText (const std::string& path)
{
    std::ifstream file (path);
    return { std::istreambuf_iterator<char> (file), {} };
}

/** A patch tree with the head that every writer makes and the given operators. */
MVSmartPtr<MVRiffPacker> patchOf (const std::vector<MVSmartPtr<MVRiffPacker>>& operators)
{
    auto patch = MVPatchText::compile (R"({"operators": []})", "empty").patch;
    for (auto op : operators)
        patch->addChild (op);
    return patch;
}

void expectLossless (const MVRiffPacker& patch, const std::string& what)
{
    const std::string text = MVPatchText::write (patch);
    const auto again = MVPatchText::compile (text, what);
    EXPECT_EQ (packed (*again.patch), packed (patch)) << what << "\n" << text;
}

std::string errorOf (const std::string& text)
{
    try
    {
        (void)MVPatchText::compile (text, "p.json");
        return {};
    }
    catch (const MVException& error)
    {
        return error.text();
    }
}

std::string withOperator (const std::string& op)
{
    return R"({"parameters": [{"name": "Cut"}], "operators": [{"name": "a", "operator": "Oscillator"}, )" + op + "]}";
}

const OperatorSpec& spec (std::string_view name) { return *findOperatorSpec (name); }

TEST (PatchText, everyNewOperatorSurvives)
{
    for (const OperatorRow& row : operatorTable())
    {
        const auto patch = patchOf ({ StoredOperator::ofClass (*row.spec).toChunk() });
        expectLossless (*patch, row.spec->className);
        EXPECT_EQ (MVPatchText::write (*patch).find ("\"chunk\""), std::string::npos) << row.spec->className;
    }
}

TEST (PatchText, anyRecordSurvivesByteForByte)
{
    test::TestRandom random (42);

    for (const OperatorRow& row : operatorTable())
        for (int round = 0; round < 50; ++round)
        {
            auto op = StoredOperator::ofClass (*row.spec);
            for (std::byte& byte : op.record)
                if (round % 2 == 0 || random.below (8) == 0)
                    byte = static_cast<std::byte> (random.below (256));
            op.id = 0x8000000000000001ULL + static_cast<std::uint64_t> (round);
            op.inputs.resize (static_cast<std::size_t> (op.portCount (portsIn)));
            for (auto& input : op.inputs)
                input = { round % 3 == 0 ? 0.1 * round : 1.0, static_cast<int> (random.below (40)) - 5 };
            op.routes = { { static_cast<int> (random.below (9)) - 4, static_cast<int> (random.below (5)) - 1,
                            static_cast<int> (random.below (5)) - 1 } };
            expectLossless (*patchOf ({ op.toChunk(), op.toChunk(), op.toChunk() }), row.spec->className);
        }
}

TEST (PatchText, oddTreesSurvive)
{
    auto nan = StoredOperator::ofClass (spec ("Constant"));
    const double notANumber = std::bit_cast<double> (0x7FF8000000001234ULL);
    std::memcpy (nan.record.data(), &notANumber, 8);

    auto infiniteScale = StoredOperator::ofClass (spec ("Oscillator"));
    infiniteScale.inputs[0].scale = std::numeric_limits<double>::infinity();

    auto old = StoredOperator::ofClass (spec ("Output"));
    old.version = { 0, 9, 4, 0 };

    auto unknown = makeSmart<MVRiffPacker> (fourCC ("op  "));
    addChunk (*unknown, fourCC ("clas"), std::uint32_t { 0xA70099 });

    auto doubled = StoredOperator::ofClass (spec ("Thru"));
    doubled.routes = { { 0, 0, 0 }, { 0, 0, 0 } };

    expectLossless (*patchOf ({ nan.toChunk(), infiniteScale.toChunk(), old.toChunk(), unknown, doubled.toChunk() }),
                    "odd operators");

    auto bare = makeSmart<MVRiffPacker> (fourCC ("ptch"));
    expectLossless (*bare, "no head");
    addChunk (*bare, 0x00FF1234, std::uint16_t { 7 });
    expectLossless (*bare, "foreign chunk");

    auto longName = makeSmart<MVRiffPacker> (fourCC ("ptch"));
    addVersionChunk (*longName);
    auto names = makeSmart<MVRiffPacker> (fourCC ("vana"));
    auto descriptions = makeSmart<MVRiffPacker> (fourCC ("vade"));
    for (int i = 0; i < 16; ++i)
    {
        addTextChunk (*names, fourCC ("name"), i == 3 ? "a name of twenty-five char" : "");
        addTextChunk (*descriptions, fourCC ("desc"), i == 4 ? "caf\xE9" : "");
    }
    longName->addChild (names);
    longName->addChild (descriptions);
    addChunk (*longName, fourCC ("puse"), std::int32_t { 1 });
    expectLossless (*longName, "long name, no UTF-8");
}

TEST (PatchText, storedValuesAreShownUnfolded)
{
    auto osc = StoredOperator::ofClass (spec ("Oscillator"));
    const double phase = 7.5;
    std::memcpy (osc.record.data(), &phase, 8);
    EXPECT_NE (MVPatchText::write (*patchOf ({ osc.toChunk() })).find ("7.5"), std::string::npos);
}

TEST (PatchText, aNumberEqualToALimitInSinglePrecisionIsThatLimit)
{
    struct Case
    {
        const char* value;
        double expected;
    };
    const double high = 0.05000000074505806 + 9.949999999254942;

    for (const Case& c :
         { Case { "0.05", 0.05000000074505806 }, Case { "10.0", high }, Case { "10", high }, Case { "0.2", 0.2 } })
    {
        const auto compiled =
            MVPatchText::compile (withOperator (R"({"operator": "Output", "parameters": {"Rise time in seconds": )"
                                                + std::string (c.value) + "}}"),
                                  "p");
        const auto chunk = compiled.patch->findChild (fourCC ("op  "), 1)->findChild (fourCC ("attr"));
        EXPECT_EQ (chunkNumber<double> (chunk).value(), c.expected) << c.value;
    }
}

TEST (PatchText, errorsNameFilePlaceAndWhatWasExpected)
{
    struct Case
    {
        std::string text;
        std::vector<std::string> parts;
    };

    const Case cases[] {
        { "{", { "p.json", "line 1" } },
        { "[]", { "p.json: /", "an object" } },
        { R"({"operators": 3})", { "/operators", "an array" } },
        { R"({"operator": []})", { "/operator:", "one of the keys" } },
        { withOperator (R"({"operator": "Oscilator"})"), { "/operators/1/operator", "\"Oscillator\"" } },
        { withOperator (R"({"name": "a", "operator": "Sum"})"), { "/operators/1/name", "stands twice" } },
        { withOperator (R"({"operator": "Oscillator", "parameters": {"Phase": 3.2}})"),
          { "/operators/1/parameters/Phase", "0.0 to 3.1415927410125732" } },
        { withOperator (R"({"operator": "Oscillator", "parameters": {"Function Type": "Cosine"}})"),
          { "/parameters/Function Type", "\"Sine\", \"Square\", \"Triangle\", \"Sawtooth\"" } },
        { withOperator (R"({"operator": "Oscillator", "parameters": {"Colour": 1}})"),
          { "/parameters/Colour", "\"Function Type\", \"Phase\"" } },
        { withOperator (R"({"operator": "Midi Key In", "parameters": {"Key Transposition": 25}})"),
          { "Key Transposition", "-24 to 24" } },
        { withOperator (R"({"operator": "Midi Key In", "parameters": {"Percussive Mode": 1}})"),
          { "Percussive Mode", "true or false" } },
        { withOperator (R"({"operator": "Thru", "inputs": {"Signal": "a"}})"),
          { "/operators/1/inputs/Signal", "\"Input Signal\"" } },
        { withOperator (R"({"operator": "Thru", "inputs": {"#1": "a"}})"), { "/inputs/#1", "\"Input Signal\"" } },
        { withOperator (R"({"operator": "Thru", "inputs": {"#0": "a", "Input Signal": "a"}})"), { "each input once" } },
        { withOperator (R"({"operator": "Thru", "inputs": {"#0": "b"}})"), { "/inputs/#0/from", "the name of" } },
        { withOperator (R"({"operator": "Thru", "inputs": {"#0": {"from": "a", "output": "Left"}}})"),
          { "/inputs/#0/output", "\"Output Signal\"" } },
        { withOperator (R"({"operator": "Thru", "inputs": {"#0": {"control": "Cute"}}})"),
          { "/inputs/#0/control", "0 to 15" } },
        { withOperator (R"({"operator": "Thru", "inputs": {"#0": {"control": 16}}})"), { "/inputs/#0/control" } },
        { withOperator (R"({"operator": "Thru", "inputs": {"#0": {"scale": "1"}}})"),
          { "/inputs/#0/scale", "a number" } },
        { withOperator (R"({"operator": "Sum", "settings": {"inputCount": 2.5}})"), { "/settings/inputCount" } },
        { withOperator (R"({"operator": "Sum", "attributes": "0g"})"), { "/attributes", "4 bytes" } },
        { R"({"parameters": [{"name": "a name of more than eighteen"}], "operators": []})",
          { "/parameters/0/name", "18" } },
        { R"({"metadata": {"nmae": "x"}, "operators": []})", { "/metadata/nmae", "\"name\"" } },
    };

    for (const Case& c : cases)
    {
        const std::string error = errorOf (c.text);
        EXPECT_TRUE (error.starts_with ("p.json")) << c.text << "\n" << error;
        for (const std::string& part : c.parts)
            EXPECT_NE (error.find (part), std::string::npos) << c.text << "\n" << error << "\nlacks " << part;
    }
}

TEST (PatchText, wiresByNameAndKeepsTheOrderOfInputs)
{
    const auto compiled =
        MVPatchText::compile (withOperator (R"({"operator": "Sum", "settings": {"inputCount": 3}, "inputs": {
            "#2": {"from": "a", "scale": 0.25, "control": "Cut"}, "Mixer Input Signal #0": "a"}})"),
                              "p");
    const auto op = StoredOperator::fromChunk (*compiled.patch->findChild (fourCC ("op  "), 1));
    ASSERT_TRUE (op);
    ASSERT_EQ (op->routes.size(), 2U);
    EXPECT_EQ (op->routes[0].sourceDelta, -1);
    EXPECT_EQ (op->routes[0].input, 2);
    EXPECT_EQ (op->routes[1].input, 0);
    EXPECT_EQ (op->inputs[2].scale, 0.25);
    EXPECT_EQ (op->inputs[2].control, 0);
    EXPECT_EQ (op->inputs[1].control, -1);
}

TEST (PatchText, theManualsExamplesAndTheFactorySourcesCompile)
{
    const std::string manual = readText (sourceFolder + "/docs/patches.md");
    int examples = 0;

    for (auto at = manual.find ("```json\n"); at != std::string::npos; at = manual.find ("```json\n", at))
    {
        at += 8;
        const auto compiled = MVPatchText::compile (manual.substr (at, manual.find ("```", at) - at), "patches.md");
        EXPECT_GE (compiled.patch->countChildren (fourCC ("op  ")), 3);
        ++examples;
    }
    EXPECT_GE (examples, 3);

    int sources = 0;
    for (const auto& entry : std::filesystem::directory_iterator (sourceFolder + "/factory"))
        if (entry.path().filename() != "factory-bank.json")
        {
            const auto compiled = MVPatchText::compile (readText (entry.path().string()), entry.path().string());
            expectLossless (*compiled.patch, entry.path().string());
            EXPECT_EQ (compiled.metadata->getAuthor(), "Sordelin");
            EXPECT_GT (compiled.metadata->getDescription().length(), 0);
            ++sources;
        }
    EXPECT_GE (sources, 12);
}

} // namespace
} // namespace morvanelab
