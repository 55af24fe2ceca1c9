// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOperatorTable.h"
#include "tests/tools/CommandLineFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>

namespace morvanelab
{
namespace
{

using test::textOf;

const std::string sourceFolder = SORDELIN_SOURCE_DIR;
const std::string phrase = "--seconds 1.5 --note 60:0.8:0:1.2 --patch p.mv_onpatch";

using OperatorManual = test::CommandLine;

TEST_F (OperatorManual, inTheSourcesIsWhatTheTableSaysToday)
{
    const auto outcome = run ("operators --markdown");
    ASSERT_EQ (outcome.status, 0) << outcome.err;
    EXPECT_TRUE (outcome.out == textOf (sourceFolder + "/docs/operators.md"))
        << "docs/operators.md is out of date: build the target operator_manual";
}

TEST_F (OperatorManual, hasNotesOfNothingThatIsNoOperator)
{
    for (const auto& entry : std::filesystem::directory_iterator (sourceFolder + "/resources/operators"))
    {
        const auto name = entry.path().stem().string();
        EXPECT_TRUE (
            std::ranges::any_of (operatorTable(), [&] (const OperatorRow& row) { return row.spec->className == name; }))
            << name << " is no operator";
    }
}

TEST_F (OperatorManual, examplesUseTheirOperatorAndSound)
{
    const std::string manual = textOf (sourceFolder + "/docs/operators.md");
    std::size_t at = 0;
    std::string input;

    // The output stands first in the table; the sound of its example is the host input of all others.
    for (const OperatorRow& row : operatorTable())
    {
        SCOPED_TRACE (row.spec->className);
        at = manual.find (std::string ("\n## ") + row.spec->shortName + "\n", at);
        ASSERT_NE (at, std::string::npos);
        at = manual.find ("```json\n", at) + 8;
        const std::string example = manual.substr (at, manual.find ("```", at) - at);
        EXPECT_NE (example.find (std::string ("\"operator\": \"") + row.spec->shortName + "\""), std::string::npos);

        build ("p", example);
        const auto sound = render (phrase + input);
        EXPECT_TRUE (std::ranges::all_of (sound, [] (float sample) { return std::abs (sample) <= 1.0F; }));
        EXPECT_TRUE (std::ranges::any_of (sound, [] (float sample) { return std::abs (sample) > 0.01F; }));

        if (input.empty())
        {
            ASSERT_EQ (run ("render -o in.wav " + phrase).status, 0);
            input = " --input in.wav";
        }
    }
}

} // namespace
} // namespace morvanelab
