// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/ui/LibrarianRig.h"

#include <functional>

namespace morvanelab
{

namespace
{

using test::Bytes;
using test::LibrarianRig;
using test::slotSet;

/** Two banks: "One" with patches in 0, 1 and 5, "Two" with a patch in 0. */
struct TwoBanks
{
    TwoBanks()
    {
        one = rig.addBank ("One.mv_onbank", { { 0, "Bell", "Ann", "Keys", "bright" },
                                              { 1, "Pad", "Bob", "Pads", "soft" },
                                              { 5, "Bass", "Ann", "Bass", "deep" } });
        two = rig.addBank ("Two.mv_onbank", { { 0, "Choir", "Cid", "Voice", "wide" } });
        rig.model.selectBank (0);
    }

    std::string disk() const { return rig.patchesOnDisk (one) + " | " + rig.patchesOnDisk (two); }

    LibrarianRig rig;
    MVLibrarianModel& model { rig.model };
    juce::File one;
    juce::File two;
};

struct LibrarianModel : testing::Test, TwoBanks
{
};

struct Operation
{
    const char* name;
    std::function<bool (TwoBanks&)> run;
    const char* patches; ///< on disk afterwards
    const char* list;
    bool newIdentities[2]; ///< of One and Two
};

const Operation operations[] {
    { "Clear 2 Patches",
      [] (auto& t) {
          return t.model.clearSlots (0, slotSet ({ 0, 5 }));
      },
      "1 Pad | 0 Choir",
      "One Two ",
      { true, false } },
    { "Copy 2 Patches",
      [] (auto& t) {
          return t.model.copySlots (0, slotSet ({ 0, 1 }), { 0, 5 });
      },
      "0 Bell, 1 Pad, 5 Bell, 6 Pad | 0 Choir",
      "One Two ",
      { true, false } },
    { "Move 2 Patches",
      [] (auto& t) {
          return t.model.moveSlots (0, slotSet ({ 0, 1 }), { 0, 1 });
      },
      "1 Bell, 2 Pad, 5 Bass | 0 Choir",
      "One Two ",
      { true, false } },
    { "Move Patch",
      [] (auto& t) {
          return t.model.moveSlots (0, slotSet ({ 5 }), { 1, 63 });
      },
      "0 Bell, 1 Pad | 0 Choir, 63 Bass",
      "One Two ",
      { true, true } },
    { "Copy 3 Patches",
      [] (auto& t) {
          return t.model.copyToEmptySlots (0, slotSet ({ 0, 1, 2, 5 }), 1);
      },
      "0 Bell, 1 Pad, 5 Bass | 0 Choir, 1 Bell, 2 Pad, 3 Bass",
      "One Two ",
      { false, true } },
    { "Swap Patches",
      [] (auto& t) {
          return t.model.swapSlots ({ 0, 1 }, { 0, 5 });
      },
      "0 Bell, 1 Bass, 5 Pad | 0 Choir",
      "One Two ",
      { true, false } },
    { "Swap Patches",
      [] (auto& t) {
          return t.model.swapSlots ({ 0, 1 }, { 1, 0 });
      },
      "0 Bell, 1 Choir, 5 Bass | 0 Pad",
      "One Two ",
      { true, true } },
    { "Cut Patch",
      [] (auto& t) { return t.model.cutToClipboard (0, slotSet ({ 1 })); },
      "0 Bell, 5 Bass | 0 Choir",
      "One Two ",
      { true, false } },
    { "Paste 2 Patches",
      [] (auto& t) {
          return t.model.copyToClipboard (0, slotSet ({ 1, 5 })) && t.model.paste ({ 1, 2 });
      },
      "0 Bell, 1 Pad, 5 Bass | 0 Choir, 2 Pad, 3 Bass",
      "One Two ",
      { false, true } },
    { "Edit Patch Info",
      [] (auto& t)
      {
          auto metadata = t.model.readSlotMetadata ({ 0, 1 });
          metadata->setName ("Cloud");
          return t.model.setSlotMetadata ({ 0, 1 }, *metadata);
      },
      "0 Bell, 1 Cloud, 5 Bass | 0 Choir",
      "One Two ",
      { false, false } },
    { "Edit Bank Info",
      [] (auto& t)
      {
          auto metadata = t.model.readBankMetadata (0);
          metadata->setName ("First");
          return t.model.setBankMetadata (0, *metadata);
      },
      "0 Bell, 1 Pad, 5 Bass | 0 Choir",
      "One Two ",
      { false, false } },
    { "Move Bank",
      [] (auto& t) { return t.model.moveBank (1, 0); },
      "0 Bell, 1 Pad, 5 Bass | 0 Choir",
      "Two One ",
      { false, false } },
    { "Remove Bank",
      [] (auto& t) { return t.model.removeBank (0); },
      "0 Bell, 1 Pad, 5 Bass | 0 Choir",
      "Two ",
      { false, false } },
    { "Create Bank",
      [] (auto& t) { return t.model.createBank (t.rig.folder.file ("New.mv_onbank"), 1); },
      "0 Bell, 1 Pad, 5 Bass | 0 Choir",
      "One New Two ",
      { false, false } },
    { "Add Bank",
      [] (auto& t) {
          return t.model.addBank (t.rig.makeBank ("Three.mv_onbank", { { 2, "Zap", "", "", "" } }), 0);
      },
      "0 Bell, 1 Pad, 5 Bass | 0 Choir",
      "Three One Two ",
      { false, false } },
    { "Add 2 Patches",
      [] (auto& t)
      {
          test::writeBytes (t.rig.folder.file ("Hum.mv_patch"), LibrarianRig::patchFile (100));
          test::writeBytes (t.rig.folder.file ("Hiss.mv_onpatch"), LibrarianRig::patchFile (101));
          return t.model.addFiles ({ t.rig.folder.file ("Hum.mv_patch").getFullPathName(),
                                     t.rig.folder.file ("Hiss.mv_onpatch").getFullPathName() },
                                   { 0, 4 });
      },
      "0 Bell, 1 Pad, 4 Hum, 5 Bass, 6 Hiss | 0 Choir",
      "One Two ",
      { true, false } },
};

// Every operation does on disk what its row says; its undo gives back every byte of every compartment, and its redo
// does the same thing once more. Metadata hold a chunk that would be lost if they were unpacked and packed again.
TEST (LibrarianOperations, areUndoneByteByByte)
{
    for (const auto& operation : operations)
    {
        SCOPED_TRACE (operation.name);
        TwoBanks t;
        const auto oneBefore = t.rig.compartments (t.one);
        const auto twoBefore = t.rig.compartments (t.two);
        const auto firstId = t.rig.manager.getBankUuid (0);
        const auto secondId = t.rig.manager.getBankUuid (1);

        ASSERT_TRUE (operation.run (t));
        EXPECT_EQ (t.disk(), operation.patches);
        EXPECT_EQ (t.rig.listOnDisk(), operation.list);
        EXPECT_EQ (t.model.undoName(), juce::String ("Undo ") + operation.name);
        const auto oneAfter = t.rig.compartments (t.one);
        const auto twoAfter = t.rig.compartments (t.two);
        const bool isRemoved = t.rig.listOnDisk() == "Two ";
        EXPECT_EQ (t.rig.manager.findBankByUuid (firstId) < 0, operation.newIdentities[0] || isRemoved);
        EXPECT_EQ (t.rig.manager.findBankByUuid (secondId) < 0, operation.newIdentities[1]);

        ASSERT_TRUE (t.model.undo());
        EXPECT_TRUE (t.rig.compartments (t.one) == oneBefore);
        EXPECT_TRUE (t.rig.compartments (t.two) == twoBefore);
        EXPECT_EQ (t.rig.listOnDisk(), "One Two ");
        EXPECT_FALSE (t.model.canUndo());

        EXPECT_EQ (t.model.redoName(), juce::String ("Redo ") + operation.name);
        ASSERT_TRUE (t.model.redo());
        EXPECT_TRUE (t.rig.compartments (t.one) == oneAfter);
        EXPECT_TRUE (t.rig.compartments (t.two) == twoAfter);
        EXPECT_EQ (t.rig.listOnDisk(), operation.list);
        EXPECT_TRUE (t.rig.prompt.told.empty());
    }
}

struct Failure
{
    const char* name;
    std::function<bool (TwoBanks&)> run;
    const char* told;
};

const char* const changedElsewhere = "Bank Librarian|The bank has been changed elsewhere: One.mv_onbank";

const Failure failures[] {
    { "no patch file",
      [] (auto& t)
      {
          test::writeBytes (t.rig.folder.file ("a.mv_patch"), { 1, 2, 3 });
          return t.model.addPatch (t.rig.folder.file ("a.mv_patch"), { 0, 7 });
      },
      "Bank Librarian|Error:  Invalid patch data." },
    { "another tree",
      [] (auto& t)
      {
          test::writeBytes (t.rig.folder.file ("a.mv_patch"), test::handEmptyMeta());
          return t.model.addPatch (t.rig.folder.file ("a.mv_patch"), { 0, 7 });
      },
      "Bank Librarian|Error:  Not a well-formed patch." },
    { "one bad file of two",
      [] (auto& t)
      {
          test::writeBytes (t.rig.folder.file ("a.mv_patch"), LibrarianRig::patchFile (50));
          test::writeBytes (t.rig.folder.file ("b.mv_patch"), { 0 });
          return t.model.addFiles ({ t.rig.folder.file ("a.mv_patch").getFullPathName(),
                                     t.rig.folder.file ("b.mv_patch").getFullPathName() },
                                   { 0, 0 });
      },
      "Bank Librarian|Error:  Invalid patch data." },
    { "a patch without a bank to go to",
      [] (auto& t) {
          return t.model.addFiles ({ t.rig.folder.file ("a.mv_patch").getFullPathName() }, { -1, 0 });
      },
      "Bank Librarian|Add or create a bank first, so that the patches have a place to go." },
    { "no room behind",
      [] (auto& t) {
          return t.model.copySlots (0, slotSet ({ 0, 1 }), { 1, 63 });
      },
      "Bank Librarian|There is not enough room behind that slot." },
    { "a bank that is none",
      [] (auto& t)
      {
          test::writeBytes (t.rig.folder.file ("x.mv_onbank"), test::handContainer (test::handBank(), "abcd"));
          return t.model.addBank (t.rig.folder.file ("x.mv_onbank"));
      },
      "Bank Librarian|Error:  Not a bank file." },
    { "a name that is taken", [] (auto& t) { return t.model.createBank (t.rig.makeBank ("x.mv_onbank", {})); },
      "Bank Librarian|There is a file of that name already.  Choose another name." },
    { "export of nothing",
      [] (auto& t) {
          return t.model.exportPatch ({ 0, 3 }, t.rig.folder.file ("out.mv_onpatch"));
      },
      "Bank Librarian|Error:  Invalid or corrupt patch." },
    { "a bank that cannot be written",
      [] (auto& t)
      {
          t.two.setReadOnly (true);
          const bool done = t.model.moveSlots (0, slotSet ({ 5 }), { 1, 1 });
          t.two.setReadOnly (false);
          return done;
      },
      "File I/O Exception|The bank is write-protected.  Nothing has been changed." },
};

TEST (LibrarianOperations, leaveEverythingAsItWasWhenTheyFail)
{
    for (const auto& failure : failures)
    {
        SCOPED_TRACE (failure.name);
        TwoBanks t;
        const auto oneBefore = t.rig.compartments (t.one);
        const auto twoBefore = t.rig.compartments (t.two);
        const auto firstId = t.rig.manager.getBankUuid (0);

        EXPECT_FALSE (failure.run (t));
        EXPECT_EQ (t.rig.prompt.told, std::vector<std::string> { failure.told });
        EXPECT_TRUE (t.rig.compartments (t.one) == oneBefore);
        EXPECT_TRUE (t.rig.compartments (t.two) == twoBefore);
        EXPECT_EQ (t.rig.listOnDisk(), "One Two ");
        EXPECT_EQ (t.rig.manager.findBankByUuid (firstId), 0);
        EXPECT_FALSE (t.model.canUndo());
        EXPECT_FALSE (t.rig.folder.file ("out.mv_onpatch").exists());
    }
}

TEST_F (LibrarianModel, takesABankWhoseFileHasGoneOutOfTheList)
{
    const auto oneBefore = rig.compartments (one);
    two.deleteFile();
    EXPECT_FALSE (model.moveSlots (0, slotSet ({ 5 }), { 1, 1 }));
    EXPECT_EQ (rig.listOnDisk(), "One ");
    EXPECT_EQ (rig.prompt.told.back(), "File I/O Exception|Failed to access.  File moved?");
    EXPECT_TRUE (rig.compartments (one) == oneBefore);
}

TEST_F (LibrarianModel, refusesToUndoOverWhatOthersHaveWritten)
{
    ASSERT_TRUE (model.clearSlots (0, slotSet ({ 1 })));
    {
        MVBankFile other;
        other.openFile (one, true);
        other.setPatchData (1, MVBankFile::packSlot (test::toBlock (LibrarianRig::patchFile (77))));
    }
    const auto theirs = rig.compartments (one);

    EXPECT_FALSE (model.undo());
    EXPECT_EQ (rig.prompt.told, std::vector<std::string> { changedElsewhere });
    EXPECT_TRUE (rig.compartments (one) == theirs);
    EXPECT_FALSE (model.canUndo());
    EXPECT_FALSE (model.canRedo());
}

// An undone removal is no new addition: projects that name the bank's identity find it again.
TEST_F (LibrarianModel, givesARemovedBankItsIdentityBack)
{
    const auto id = rig.manager.getBankUuid (0);
    ASSERT_TRUE (model.removeBank (0));
    EXPECT_EQ (rig.manager.findBankByUuid (id), -1);
    ASSERT_TRUE (model.undo());
    EXPECT_EQ (rig.manager.findBankByUuid (id), 0);
}

TEST_F (LibrarianModel, exportsAndAddsTheSamePatch)
{
    const auto file = rig.folder.file ("Out.mv_onpatch");
    ASSERT_TRUE (model.exportPatch ({ 0, 5 }, file));
    EXPECT_EQ (test::readBytes (file), LibrarianRig::patchFile (3));
    ASSERT_TRUE (model.addPatch (file, { 1, 9 }));
    EXPECT_EQ (rig.patchOnDisk (two, 9), LibrarianRig::patchFile (3));
    EXPECT_EQ (rig.patchesOnDisk (two), "0 Choir, 9 Out");
}

TEST_F (LibrarianModel, runsWhatMayAskThroughItsOwner)
{
    const auto damaged = rig.folder.file ("Damaged.mv_onbank");
    test::writeBytes (damaged, test::handContainer (test::handBank (1, 63, 64)));
    std::function<void()> held;
    model.runAsking = [&] (std::function<void()> operation) { held = std::move (operation); };

    EXPECT_FALSE (model.addBank (damaged));
    EXPECT_EQ (rig.listOnDisk(), "One Two ");
    EXPECT_EQ (test::raisedBy ([&] { held(); }), "9 Error:  Not a bank file.");
    rig.prompt.answer = true;
    held();
    EXPECT_EQ (rig.prompt.asked.size(), 2U);
    EXPECT_EQ (rig.listOnDisk(), "One Two Damaged ");
    EXPECT_EQ (model.getSelectedBank(), 2);
}

TEST_F (LibrarianModel, bringsTheSelectionToTheLoader)
{
    int bank = -2;
    int slot = -2;
    EXPECT_TRUE (model.selectForLoading ({ 1, 0 }));
    EXPECT_TRUE (rig.manager.takeSelection (bank, slot));
    EXPECT_EQ (bank, 1);
    EXPECT_EQ (slot, 0);
    EXPECT_FALSE (model.selectForLoading ({ 0, 2 }));

    // Several slots are no patch to load.
    model.selectBank (0);
    model.selectSlots (slotSet ({ 0, 1 }));
    EXPECT_FALSE (rig.manager.takeSelection (bank, slot));
    EXPECT_EQ (slot, -1);

    // An operation keeps what is selected, in the manager too.
    model.selectSlots (slotSet ({ 5 }));
    ASSERT_TRUE (model.clearSlots (0, slotSet ({ 0 })));
    EXPECT_EQ (model.getSelectedSlots(), slotSet ({ 5 }));
    EXPECT_TRUE (rig.manager.takeSelection (bank, slot));
    EXPECT_EQ (slot, 5);
}

TEST_F (LibrarianModel, keepsTheMarkOnThePatchThatPlays)
{
    std::vector<MVPatchAddress> places;
    model.onLoadedPatchMoved = [&] (const MVBankUuid& bank, int slot) {
        places.push_back ({ rig.manager.findBankByUuid (bank), slot });
    };
    const auto id = rig.manager.getBankUuid (0);
    model.setLoadedPatch (id, 1);

    const auto expectMark = [&] (int bank, int slot) {
        EXPECT_EQ (model.getLoadedPatch(), std::optional (MVPatchAddress { bank, slot }));
    };
    expectMark (0, 1);
    ASSERT_TRUE (model.clearSlots (0, slotSet ({ 0 })));
    expectMark (0, 1);
    ASSERT_TRUE (model.swapSlots ({ 0, 1 }, { 0, 5 }));
    expectMark (0, 5);
    ASSERT_TRUE (model.moveBank (0, 1));
    expectMark (1, 5);
    ASSERT_TRUE (model.moveSlots (1, slotSet ({ 5 }), { 0, 30 }));
    expectMark (0, 30);
    ASSERT_TRUE (model.undo());
    expectMark (1, 5);
    ASSERT_TRUE (model.clearSlots (1, slotSet ({ 5 })));
    EXPECT_FALSE (model.getLoadedPatch());

    // A state has to name these from then on. Told the old place again, the librarian is not misled.
    EXPECT_EQ (places, std::vector<MVPatchAddress> ({ { 0, 1 }, { 0, 5 }, { 0, 30 }, { 1, 5 } }));
    ASSERT_TRUE (model.undo());
    const auto told = rig.manager.getBankUuid (1);
    model.setLoadedPatch (told, 5);
    ASSERT_TRUE (model.moveSlots (1, slotSet ({ 5 }), { 1, 6 }));
    model.setLoadedPatch (told, 5);
    expectMark (1, 6);
    model.setLoadedPatch (id, 5);
    EXPECT_FALSE (model.getLoadedPatch());
}

} // namespace

} // namespace morvanelab
