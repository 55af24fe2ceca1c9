// SPDX-License-Identifier: GPL-3.0-or-later
// Questions that are answered later, and settings by type.
#include "plugin/CoreRig.h"

#include "banks/MVBankFile.h"
#include "foundation/MVException.h"
#include "foundation/MVMath.h"

#include <gtest/gtest.h>

namespace morvanelab::test
{

namespace
{

using Boxes = std::vector<std::string>;

const std::string damagedBox =
    "Bank File Damaged|The bank file you are trying to load appears to be damaged.  Would you like Ondrelith to "
    "attempt repair?|Yes/No";

class Questions : public testing::Test
{
protected:
    Questions() : plugin (rig.open()) {}

    /** A bank whose last slot has lost its patch and metadata. */
    juce::File writeDamagedBank() const
    {
        const auto file = rig.writeBank ("Damaged.mv_onbank");
        MVBankFile bank;
        bank.openFile (file, false);
        bank.writeCompartment (fourCC ("pmta"), 63, 2, {}, false);
        bank.writeCompartment (fourCC ("pdat"), 63, 1, {}, false);
        return file;
    }
    void addAsking (const juce::File& file)
    {
        plugin->core().getPrompt().runAsking (
            "Bank Librarian", [this, file] { plugin->banks().addBankFile (1, file); }, [this] { ++finished; });
    }

    CoreRig rig;
    std::unique_ptr<CorePlugin> plugin;
    int finished = 0;
};

} // namespace

TEST_F (Questions, repairHappensOnlyAfterYes)
{
    const auto file = writeDamagedBank();
    const auto damaged = file.getSize();
    addAsking (file);
    EXPECT_EQ (plugin->banks().getBankCount(), 1);
    EXPECT_EQ (finished, 0) << "the user is still thinking";
    EXPECT_EQ (plugin->user.takeBoxes().front(), damagedBox);
    EXPECT_EQ (file.getSize(), damaged) << "declined";
    EXPECT_EQ (finished, 1);
    while (plugin->banks().getBankCount() > 1)
        plugin->banks().removeBank (1);

    plugin->user.willAnswer ({});
    addAsking (file);
    EXPECT_EQ (plugin->user.takeBoxes(), Boxes { damagedBox }) << "what the refused try had to say is not shown";
    EXPECT_EQ (plugin->banks().getBankCount(), 2);
    EXPECT_GT (file.getSize(), damaged);
    EXPECT_EQ (finished, 2);
}

TEST_F (Questions, nobodyIsAskedBehindAClosedWindow)
{
    plugin->core().getPrompt().setShowing (false);
    const auto file = writeDamagedBank();
    const auto damaged = file.getSize();
    plugin->user.willAnswer ({});
    addAsking (file);
    EXPECT_EQ (finished, 1);
    EXPECT_EQ (plugin->user.takeBoxes(), Boxes {});
    EXPECT_EQ (file.getSize(), damaged);
}

TEST_F (Questions, severalAreAskedOneAfterTheOther)
{
    auto& prompt = plugin->core().getPrompt();
    std::vector<std::string> runs;
    const auto operation = [&]
    {
        const bool first = prompt.askYesNo ("A", "first?");
        const bool second = first && prompt.askYesNo ("B", "second?");
        runs.push_back (std::string (first ? "yes" : "no") + (second ? " yes" : " no"));
        prompt.tell ("Done", runs.back());
        throw MVException (9, "Error:  In the end.");
    };
    plugin->user.willAnswer ({});
    plugin->user.willAnswer ({});
    prompt.runAsking ("Failed", operation, [&] { ++finished; });
    EXPECT_EQ (plugin->user.takeBoxes(),
               (Boxes { "A|first?|Yes/No", "B|second?|Yes/No", "Done|yes yes|OK", "Failed|Error:  In the end.|OK" }));
    EXPECT_EQ (runs, (Boxes { "no no", "yes no", "yes yes" }));
    EXPECT_EQ (finished, 1);

    runs.clear();
    plugin->user.willAnswer ({});
    prompt.runAsking ("Failed", operation);
    EXPECT_EQ (plugin->user.takeBoxes(),
               (Boxes { "A|first?|Yes/No", "B|second?|Yes/No", "Done|yes no|OK", "Failed|Error:  In the end.|OK" }));
}

TEST_F (Questions, outsideAnOperationGetANoAndAMessage)
{
    plugin->user.willAnswer ({});
    EXPECT_FALSE (plugin->core().getPrompt().askYesNo ("Title", "Text?"));
    EXPECT_EQ (plugin->user.takeBoxes(), Boxes { "Title|Text?|OK" });
}

TEST_F (Questions, boxesThatOutliveThePluginDoNothing)
{
    SordelinPrompt::Box kept;
    plugin->core().getPrompt().setBoxMaker ([&kept] (const SordelinPrompt::Box& box) { kept = box; });
    plugin->core().getPrompt().runAsking (
        "", [this] { plugin->core().getPrompt().askYesNo ("A", "?"); }, [this] { ++finished; });
    pumpMessages();
    ASSERT_NE (kept.done, nullptr);
    plugin.reset();
    kept.done (true, {});
    EXPECT_EQ (finished, 0);
}

TEST_F (Questions, settingsComeBackAfterARestart)
{
    {
        auto& settings = plugin->core().getSettings();
        EXPECT_EQ (settings.getDimensions().width, 0);
        SordelinSettings::Dimensions dimensions { 900, 420, true, nullptr };
        auto librarian = std::make_unique<juce::XmlElement> ("bank_mgr_settings");
        librarian->setAttribute ("search", "a < b & \"c\"");
        dimensions.librarian = std::move (librarian);
        settings.setDimensions (dimensions);
        settings.setZoom (1000);
        settings.setShowHelp (true);
        settings.storeVoices (99);
    }
    plugin.reset();
    plugin = rig.open();
    auto& settings = plugin->core().getSettings();
    const auto dimensions = settings.getDimensions();
    EXPECT_EQ (dimensions.width, 900);
    EXPECT_EQ (dimensions.height, 420);
    EXPECT_TRUE (dimensions.librarianShown);
    ASSERT_NE (dimensions.librarian, nullptr);
    EXPECT_EQ (dimensions.librarian->getStringAttribute ("search"), "a < b & \"c\"");
    EXPECT_EQ (settings.getZoom(), 250);
    EXPECT_TRUE (settings.getShowHelp());
    EXPECT_EQ (settings.getVoices(), 16) << "out of its limits";

    for (const char* damaged : { "", "<xml_wrapper>", "no document", "<a><main_window_rect width=\"-3\"/></a>" })
    {
        plugin->core().getShelf().getProperties().setString ("dimension_settings", damaged);
        EXPECT_EQ (settings.getDimensions().width, 0) << damaged;
    }
}

} // namespace morvanelab::test
