// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/ui/LibrarianRig.h"

namespace morvanelab
{

namespace
{

using test::LibrarianRig;
using test::slotSet;

struct PatchSearch : testing::Test
{
    PatchSearch()
    {
        rig.addBank ("One.mv_onbank", { { 0, "Glass Bell", "Ann", "Keys", "bright" },
                                        { 3, "Warm Pad", "Bob", "pads", "like a bell far away" },
                                        { 63, "Sub", "Bella", "Bass", "deep" } });
        rig.addBank ("Two.mv_onbank", { { 7, "Choir", "Cid", "Pads", "" }, { 8, "", "Ann", "", "nameless" } });
        rig.model.selectBank (0);
    }

    std::string find (const char* text, const char* genre = "", bool everywhere = true)
    {
        rig.model.setSearch ({ text, genre, everywhere ? MVPatchSearch::allBanks : 0 });
        std::string found;
        for (const auto& address : rig.model.getResults())
            found += std::to_string (address.bank) + ":" + std::to_string (address.slot) + " ";
        return found;
    }

    LibrarianRig rig;
    MVLibrarianModel& model { rig.model };
};

TEST_F (PatchSearch, findsByNameAuthorDescriptionAndGenre)
{
    const struct
    {
        const char* text;
        const char* genre;
        bool everywhere;
        const char* found;
    } cases[] {
        { "", "", true, "0:0 0:3 0:63 1:7 1:8 " }, // every patch, no empty slot
        { "bell", "", true, "0:0 0:3 0:63 " },     // in name, description, author
        { "BELL", "", true, "0:0 0:3 0:63 " },
        { "  bell ", "", true, "0:0 0:3 0:63 " },
        { "pads", "", true, "" }, // genres are not searched by text
        { "", "PADS", true, "0:3 1:7 " },
        { "ann", "Keys", true, "0:0 " },
        { "ann", "", true, "0:0 1:8 " },
        { "ann", "", false, "0:0 " },
        { "zzz", "", true, "" },
        { "ell", "Bass", false, "0:63 " },
    };
    for (const auto& each : cases)
        EXPECT_EQ (find (each.text, each.genre, each.everywhere), each.found) << each.text << "/" << each.genre;

    EXPECT_EQ (MVPatchSearch::genres (model.getCatalogue()).joinIntoString (","), "Bass,Keys,pads");
    EXPECT_EQ (MVPatchSearch::genres (model.getCatalogue(), 1).joinIntoString (","), "Pads");

    // The selected bank is followed.
    EXPECT_EQ (find ("", "", false), "0:0 0:3 0:63 ");
    model.selectBank (1);
    EXPECT_EQ (model.getResults().size(), 2U);
}

TEST_F (PatchSearch, walksWhatItShowsFromTheLoadedPatchAndRound)
{
    const auto id = [this] (int bank) { return rig.manager.getBankUuid (bank); };
    const auto step = [this] (int direction)
    {
        const auto address = direction > 0 ? model.nextPatch() : model.previousPatch();
        return address ? std::to_string (address->bank) + ":" + std::to_string (address->slot) : std::string ("none");
    };
    const struct
    {
        int loadedBank;
        int loadedSlot;
        const char* text;
        bool everywhere;
        const char* next;
        const char* previous;
    } cases[] {
        { -1, -1, "", true, "0:0", "1:8" },    { 0, 0, "", true, "0:3", "1:8" },      { 0, 63, "", true, "1:7", "0:3" },
        { 1, 8, "", true, "0:0", "1:7" },      { 0, 63, "", false, "0:0", "0:3" }, // round within the selected bank
        { 0, 0, "ann", true, "1:8", "1:8" },                                       // a search of two
        { 0, 3, "ann", true, "1:8", "0:0" }, // the loaded one is not among them: its neighbours
        { 1, 8, "choir", true, "1:7", "1:7" }, { 0, 0, "zzz", true, "none", "none" },
    };
    for (const auto& each : cases)
    {
        SCOPED_TRACE (std::string (each.text) + " from " + std::to_string (each.loadedBank) + ":"
                      + std::to_string (each.loadedSlot));
        model.setLoadedPatch (id (each.loadedBank), each.loadedSlot);
        find (each.text, "", each.everywhere);
        EXPECT_EQ (step (1), each.next);
        EXPECT_EQ (step (-1), each.previous);
    }

    // Nothing loaded: from the selected slot.
    model.setLoadedPatch ({}, -1);
    find ("");
    model.selectSlots (slotSet ({ 3 }));
    EXPECT_EQ (step (1), "0:63");
}

TEST_F (PatchSearch, readsABankOnlyWhenItHasChanged)
{
    EXPECT_EQ (find ("b"), "0:0 0:3 0:63 ");
    EXPECT_EQ (model.getCatalogue().readCount(), 2);
    find ("be");
    model.setSearch ({ "bel", "", MVPatchSearch::allBanks });
    model.selectBank (1);
    model.refresh();
    EXPECT_EQ (model.getCatalogue().readCount(), 2);

    ASSERT_TRUE (model.clearSlots (0, slotSet ({ 0 })));
    EXPECT_EQ (model.getCatalogue().readCount(), 3);
    EXPECT_EQ (find ("bell"), "0:3 0:63 ");

    // Another program changes a name.
    {
        MVBankFile other;
        other.openFile (model.getCatalogue().bank (1).file, true);
        auto metadata = other.getPatchMeta (7);
        metadata->setName ("Bellows");
        other.setPatchMeta (7, metadata);
    }
    model.refresh();
    EXPECT_EQ (model.getCatalogue().readCount(), 4);
    EXPECT_EQ (find ("bell"), "0:3 0:63 1:7 ");

    // And takes a whole bank away.
    model.getCatalogue().bank (1).file.deleteFile();
    model.refresh();
    EXPECT_FALSE (model.getCatalogue().bank (1).readable);
    EXPECT_EQ (find (""), "0:3 0:63 ");
}

TEST (LibrarianText, isFitToBeDrawn)
{
    const std::string longName (10000, 'x');
    const auto shown = toShownText (MVString (std::string_view (longName)), 50);
    EXPECT_EQ (shown.length(), 50);
    EXPECT_EQ (shown.getLastCharacter(), juce::juce_wchar { 0x2026 });
    EXPECT_EQ (toShownText (MVString (std::string_view (longName).substr (0, 50)), 50).length(), 50);

    const auto text = [] (std::string_view bytes, bool lines = false)
    { return toShownText (MVString (bytes), 200, lines).toStdString(); };
    EXPECT_EQ (text ("Gl\xC3\xB6"
                     "ckchen"),
               "Gl\xC3\xB6"
               "ckchen");
    EXPECT_EQ (text ("Gl\xF6"
                     "ck"),
               "Gl\xC3\xB6"
               "ck"); // one byte a character
    EXPECT_EQ (text (std::string_view ("a\x01\x1B\0\x7F\nb", 7)), "a     b");
    EXPECT_EQ (text ("a\nb\r", true), "a\nb ");
    EXPECT_EQ (text ("\xE2\x80\xAE"
                     "evil"),
               "evil"); // turns the direction of writing
    EXPECT_EQ (text (""), "");

    // Cutting does not tear a character, which would make the whole text look like another encoding.
    std::string euros;
    for (int i = 0; i < 1000; ++i)
        euros += "\xE2\x82\xAC";
    EXPECT_EQ (toShownText (MVString (std::string_view (euros)), 10)[5], juce::juce_wchar { 0x20AC });
    EXPECT_EQ (toStoredText (juce::String::fromUTF8 ("Gl\xC3\xB6")).toStdString(), "Gl\xC3\xB6");
}

TEST (LibrarianUndo, keepsTheNewestStepsWithinItsBounds)
{
    const auto stepOf = [] (int number, std::size_t bytes)
    {
        MVLibrarianStep step { juce::String (number), {}, {} };
        step.bankEdits.push_back ({ {}, { { 0, 0, 0, std::vector<std::uint8_t> (bytes), {} } } });
        return step;
    };
    MVLibrarianUndo steps;
    for (int i = 0; i < 500; ++i)
        steps.add (stepOf (i, 10));
    std::size_t count = 0;
    for (; steps.canUndo(); ++count)
        steps.undone();
    EXPECT_EQ (count, MVLibrarianUndo::maxSteps);
    EXPECT_EQ (steps.nextRedo().name, "300");

    // A new step drops what could be redone; one that fills all memory leaves itself.
    steps.add (stepOf (1000, MVLibrarianUndo::maxBytes + 1));
    EXPECT_FALSE (steps.canRedo());
    EXPECT_EQ (steps.nextUndo().name, "1000");
    steps.undone();
    EXPECT_FALSE (steps.canUndo());
    EXPECT_TRUE (steps.canRedo());
}

} // namespace

} // namespace morvanelab
