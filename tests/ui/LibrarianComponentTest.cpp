// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/ui/LibrarianWindowRig.h"

#include "ui/MVLibrarianImage.h"

namespace morvanelab
{

namespace
{

using test::LibrarianRig;
using test::slotSet;

struct LibrarianComponent : test::LibrarianWindow
{
    LibrarianComponent()
    {
        one = rig.addBank ("One.mv_onbank", { { 0, "Bell", "Ann", "Keys", "bright" },
                                              { 1, "Pad", "Bob", "Pads", "soft" },
                                              { 5, "Bass", "Ann", "Bass", "deep" } });
        two = rig.addBank ("Two.mv_onbank", { { 0, "Choir", "Cid", "Voice", "wide bell" } });
    }

    juce::File one;
    juce::File two;
};

TEST_F (LibrarianComponent, readsNothingBeforeItIsShown)
{
    EXPECT_FALSE (librarian.isVisible());
    EXPECT_EQ (librarian.getWidth(), 550);
    EXPECT_EQ (librarian.getHeight(), 400);
    librarian.handleCommandMessage (MVBankMgrComponent::commandEngineReady);
    librarian.handleCommandMessage (MVBankMgrComponent::commandRepaint);
    librarian.setLoadedPatch (rig.manager.getBankUuid (0), 1);

    two.deleteFile();
    EXPECT_FALSE (rig.model.getCatalogue().bank (1).readable) << "read before the file went";
}

TEST_F (LibrarianComponent, loadsByDoubleClickReturnButtonAndSearch)
{
    librarian.open();
    EXPECT_EQ (rig.model.getSelectedBank(), 0);

    clickSlot (1, 0, 2);
    EXPECT_EQ (loads, "0:1 ");
    key (grid(), "return");
    clickSlot (5);
    EXPECT_EQ (loads, "0:1 0:1 ");
    press ("librarian_load");
    EXPECT_EQ (loads, "0:1 0:1 0:5 ");

    // An empty slot is no patch; several slots are the loader's to refuse.
    clickSlot (7, 0, 2);
    EXPECT_EQ (loads, "0:1 0:1 0:5 ");
    clickSlot (0);
    clickSlot (1, juce::ModifierKeys::commandModifier);
    key (grid(), "return");
    EXPECT_EQ (loads, "0:1 0:1 0:5 none ");

    type ("librarian_search", "bell");
    auto& results = find<MVBankResultView> ("librarian_results");
    click (results, results.boundsOfRow (1).getCentre(), 0, 2);
    EXPECT_EQ (loads, "0:1 0:1 0:5 none 1:0 ");
    key (results, "cursor up");
    key (results, "return");
    EXPECT_EQ (loads, "0:1 0:1 0:5 none 1:0 0:0 ");
    librarian.setLoadedPatch (rig.manager.getBankUuid (0), 0);
    EXPECT_TRUE (librarian.loadNextPatch());
    EXPECT_EQ (loads, "0:1 0:1 0:5 none 1:0 0:0 1:0 ");

    // Escape in the search ends it.
    key (find ("librarian_search"), "escape");
    EXPECT_FALSE (rig.model.getSearch().isActive());
}

TEST_F (LibrarianComponent, everySlotOperationHasItsKey)
{
    librarian.open();
    const auto before = rig.compartments (one);
    const auto expectDisk = [this] (const char* patches) { EXPECT_EQ (rig.patchesOnDisk (one), patches); };

    clickSlot (1);
    key (grid(), "cursor left");
    EXPECT_EQ (grid().getCursor(), 0);
    key (grid(), "ctrl + C");
    key (grid(), "cursor down");
    EXPECT_EQ (grid().getCursor(), grid().columnCount());
    key (grid(), "ctrl + V");
    expectDisk ("0 Bell, 1 Pad, 3 Bell, 5 Bass");
    key (grid(), "ctrl + Z");
    expectDisk ("0 Bell, 1 Pad, 5 Bass");
    key (grid(), "ctrl + Y");
    expectDisk ("0 Bell, 1 Pad, 3 Bell, 5 Bass");
    key (grid(), "home");
    key (grid(), "shift + cursor right");
    EXPECT_EQ (rig.model.getSelectedSlots(), slotSet ({ 0, 1 }));
    key (grid(), "ctrl + T");
    expectDisk ("0 Pad, 1 Bell, 3 Bell, 5 Bass");
    key (grid(), "ctrl + X");
    expectDisk ("3 Bell, 5 Bass");
    key (grid(), "end");
    EXPECT_EQ (grid().getCursor(), 63);
    key (grid(), "cursor up");
    key (grid(), "cursor down");
    EXPECT_EQ (grid().getCursor(), 63);
    key (grid(), "ctrl + A");
    key (grid(), "delete");
    expectDisk ("");
    for (int i = 0; i < 4; ++i)
        key (grid(), "ctrl + Z");
    EXPECT_TRUE (rig.compartments (one) == before);
    EXPECT_FALSE (find ("librarian_undo").isEnabled());
    EXPECT_TRUE (find ("librarian_redo").isEnabled());

    // In the list of banks: which bank, and its order.
    auto& banks = find<MVBankListView> ("librarian_banks");
    key (banks, "cursor down");
    EXPECT_EQ (rig.model.getSelectedBank(), 1);
    key (banks, "alt + cursor up");
    EXPECT_EQ (rig.listOnDisk(), "Two One ");
    EXPECT_EQ (rig.model.getSelectedBank(), 0);
    press ("librarian_remove_bank");
    EXPECT_EQ (rig.listOnDisk(), "One ");
}

TEST_F (LibrarianComponent, dropsMoveSwapAndCopy)
{
    librarian.open();
    EXPECT_STREQ (MVBankItemSelectComponent::patchDragId, "MVBankItemSelectComponent_patchData");
    const auto drop = [this] (juce::DragAndDropTarget& target, juce::Point<int> at)
    {
        const juce::DragAndDropTarget::SourceDetails details (MVBankItemSelectComponent::patchDragId, &grid(), at);
        ASSERT_TRUE (target.isInterestedInDragSource (details));
        target.itemDragMove (details);
        target.itemDropped (details);
    };
    const auto dropOnSlot = [&] (int slot) { drop (grid(), grid().boundsOfSlot (slot).getCentre()); };

    clickSlot (0);
    dropOnSlot (9);
    EXPECT_EQ (rig.patchesOnDisk (one), "1 Pad, 5 Bass, 9 Bell");
    EXPECT_EQ (rig.model.getSelectedSlots(), slotSet ({ 9 }));
    dropOnSlot (5); // used: they change places
    EXPECT_EQ (rig.patchesOnDisk (one), "1 Pad, 5 Bell, 9 Bass");

    // Several are never put over others.
    clickSlot (1);
    clickSlot (5, juce::ModifierKeys::commandModifier);
    dropOnSlot (8);
    EXPECT_EQ (rig.patchesOnDisk (one), "1 Pad, 5 Bell, 9 Bass");
    dropOnSlot (20);
    EXPECT_EQ (rig.patchesOnDisk (one), "9 Bass, 20 Pad, 21 Bell");

    auto& banks = find<MVBankListView> ("librarian_banks");
    drop (banks, banks.boundsOfRow (1).getCentre());
    EXPECT_EQ (rig.patchesOnDisk (two), "0 Choir, 1 Pad, 2 Bell");
    const juce::DragAndDropTarget::SourceDetails foreign ("something else", &grid(), {});
    EXPECT_FALSE (grid().isInterestedInDragSource (foreign));
}

TEST_F (LibrarianComponent, takesFilesFromTheDesktop)
{
    librarian.open();
    const auto patch = rig.folder.file ("Hum.mv_patch");
    test::writeBytes (patch, LibrarianRig::patchFile (90));
    const auto bank = rig.makeBank ("Three.mv_onbank", {});
    const juce::StringArray files { patch.getFullPathName(), bank.getFullPathName() };
    ASSERT_TRUE (librarian.isInterestedInFileDrag (files));
    EXPECT_FALSE (librarian.isInterestedInFileDrag ({ "/tmp/notes.txt" }));

    const auto at = librarian.getLocalPoint (&grid(), grid().boundsOfSlot (4).getCentre());
    librarian.filesDropped ({ patch.getFullPathName() }, at.x, at.y);
    EXPECT_EQ (rig.patchesOnDisk (one), "0 Bell, 1 Pad, 4 Hum, 5 Bass");
    librarian.filesDropped ({ bank.getFullPathName() }, at.x, at.y);
    EXPECT_EQ (rig.listOnDisk(), "One Two Three ");
}

TEST_F (LibrarianComponent, editsMetadataAndTouchesOnlyWhatWasEdited)
{
    // A name that no program of ours would store, and a chunk of another program's.
    const std::string hostile = std::string (10000, '\x07') + "\xFF\xFE";
    {
        MVBankFile bank;
        bank.openFile (one, true);
        auto metadata = bank.getPatchMeta (1);
        metadata->setName (MVString (std::string_view (hostile)));
        metadata->setDescription (MVString (std::string_view (hostile)));
        bank.setPatchMeta (1, metadata);
    }
    librarian.open();
    pictureOf (librarian);
    clickSlot (1);
    key (grid(), "F2");
    type ("metadata_author", " Zoe ");
    type ("metadata_tags", "3, -4 x,5");
    press ("metadata_cancel");
    EXPECT_EQ (librarian.getDialog(), nullptr);
    EXPECT_FALSE (rig.model.canUndo());

    key (grid(), "F2");
    pictureOf (librarian);
    type ("metadata_author", " Zoe ");
    type ("metadata_tags", "3, -4 x,5");
    key (find ("metadata_author"), "return");
    EXPECT_EQ (librarian.getDialog(), nullptr);

    const auto stored = rig.model.readSlotMetadata ({ 0, 1 });
    EXPECT_EQ (stored->getAuthor().toStdString(), "Zoe");
    EXPECT_EQ (stored->getName().toStdString(), hostile);
    EXPECT_EQ (stored->getDescription().toStdString(), hostile);
    EXPECT_EQ (stored->getGenre().toStdString(), "Pads");
    ASSERT_EQ (stored->searchTagCount(), 3);
    EXPECT_EQ (stored->getSearchTag (1), -4);
    EXPECT_EQ (rig.model.undoName(), "Undo Edit Patch Info");
    type ("librarian_search", "zoe");
    EXPECT_EQ (rig.model.getResults(), std::vector<MVPatchAddress> ({ { 0, 1 } }));
}

TEST_F (LibrarianComponent, storesPicturesScaledDown)
{
    const auto file = rig.folder.file ("big.png");
    {
        juce::Image big (juce::Image::RGB, 1600, 800, true);
        juce::Graphics (big).fillAll (juce::Colours::orange);
        juce::FileOutputStream stream (file);
        juce::PNGImageFormat().writeImageToStream (big, stream);
    }
    librarian.open();
    press ("librarian_edit_bank");
    ASSERT_TRUE (librarian.isInterestedInFileDrag ({ file.getFullPathName() }));
    librarian.filesDropped ({ file.getFullPathName() }, 10, 10);
    press ("metadata_save");

    const auto image = imageOf (*rig.model.readBankMetadata (0));
    EXPECT_EQ (image.getBounds(), (juce::Rectangle<int> { 512, 256 }));
    EXPECT_LE (distance (image.getPixelAt (100, 100), juce::Colours::orange), 4);
    press ("librarian_edit_bank");
    press ("metadata_remove_image");
    press ("metadata_save");
    EXPECT_FALSE (imageOf (*rig.model.readBankMetadata (0)).isValid());
}

TEST_F (LibrarianComponent, addsAndExportsThroughItsOwnFileDialog)
{
    librarian.open();
    clickSlot (1);
    press ("librarian_export_patch");
    auto* panel = dynamic_cast<MVBankFilePanel*> (librarian.getDialog());
    ASSERT_NE (panel, nullptr);
    panel->getBrowser().setRoot (rig.folder.folder);
    panel->getBrowser().setFileName ("Saved");
    panel->accept();
    const auto saved = rig.folder.file ("Saved.mv_onpatch");
    EXPECT_EQ (test::readBytes (saved), LibrarianRig::patchFile (2));

    // An existing file is asked about before it goes, since no undo brings it back.
    test::writeBytes (saved, { 1 });
    press ("librarian_export_patch");
    panel = dynamic_cast<MVBankFilePanel*> (librarian.getDialog());
    ASSERT_NE (panel, nullptr);
    panel->getBrowser().setFileName ("Saved");
    EXPECT_EQ (panel->getFolder(), rig.folder.folder);
    panel->accept();
    EXPECT_EQ (saved.getSize(), 1);
    panel->accept();
    EXPECT_GT (saved.getSize(), 1);

    // A new bank never replaces a file.
    press ("librarian_new_bank");
    panel = dynamic_cast<MVBankFilePanel*> (librarian.getDialog());
    ASSERT_NE (panel, nullptr);
    panel->getBrowser().setFileName ("Two.mv_onbank");
    panel->accept();
    panel->accept();
    ASSERT_EQ (librarian.getDialog(), panel);
    panel->getBrowser().setFileName ("Fresh");
    panel->accept();
    EXPECT_EQ (rig.listOnDisk(), "One Two Fresh ");
    EXPECT_TRUE (rig.folder.file ("Fresh.mv_onbank").existsAsFile());

    press ("librarian_add_patch");
    EXPECT_TRUE (key (*librarian.getDialog(), "escape"));
    EXPECT_EQ (librarian.getDialog(), nullptr);
    EXPECT_TRUE (rig.prompt.told.empty());
}

TEST_F (LibrarianComponent, keepsItsLayoutAndSurvivesAnyOther)
{
    librarian.open();
    librarian.setBounds (40, 50, 700, 500);
    librarian.getListView().setBankWidth (210);
    const auto settings = librarian.createSettings();

    MVBankMgrComponent other (rig.model);
    owner.addChildComponent (other);
    other.applySettings (*settings);
    EXPECT_EQ (other.getBounds(), (juce::Rectangle<int> { 40, 50, 700, 500 }));
    EXPECT_EQ (other.getListView().getBankWidth(), 210);
    EXPECT_FALSE (other.isVisible());

    for (const char* rect : { "", "x", "-99999 -99999 1 1", "0 0 99999999 99999999", "2000000000 2000000000 600 400" })
    {
        juce::XmlElement strange ("bank_mgr_settings");
        strange.setAttribute ("rect", rect);
        strange.setAttribute ("bank_width", -7);
        other.applySettings (strange);
        EXPECT_TRUE (owner.getLocalBounds().contains (other.getBounds())) << rect;
        EXPECT_GT (other.getListView().getBankWidth(), 0);
    }
    owner.setSize (500, 320);
    EXPECT_TRUE (owner.getLocalBounds().contains (other.getBounds()));
}

// A click must leave the keyboard where it is: only text fields take it.
TEST_F (LibrarianComponent, onlyTextFieldsTakeTheKeyboardByAClick)
{
    librarian.open();
    press ("librarian_edit_bank");
    std::function<void (juce::Component&)> check = [&] (juce::Component& component)
    {
        if (dynamic_cast<juce::TextEditor*> (&component) != nullptr)
            return;
        EXPECT_FALSE (component.getMouseClickGrabsKeyboardFocus())
            << component.getComponentID() << " " << component.getName() << " " << typeid (component).name();
        for (auto* const child : component.getChildren())
            check (*child);
    };
    check (librarian);
}

TEST_F (LibrarianComponent, showsLoadedSelectedAndUsedSlotsApart)
{
    librarian.open();
    librarian.setLoadedPatch (rig.manager.getBankUuid (0), 5);
    clickSlot (1);
    const auto picture = pictureOf (librarian);
    const auto areaOf = [this] (int slot)
    { return librarian.getLocalArea (&grid(), grid().boundsOfSlot (slot)).reduced (3); };
    const auto count = [&] (int slot, MVThemeColour colour)
    { return countColour (picture, areaOf (slot), themeColour (colour), 3); };

    const int whole = areaOf (2).getWidth() * areaOf (2).getHeight();
    EXPECT_GT (count (1, MVThemeColour::selection), whole / 2);
    EXPECT_EQ (count (0, MVThemeColour::selection), 0);
    EXPECT_GT (count (0, MVThemeColour::control), whole / 2);
    EXPECT_LT (count (2, MVThemeColour::control), whole / 10);
    EXPECT_GT (count (5, MVThemeColour::accent), 20);
    EXPECT_EQ (count (0, MVThemeColour::accent), 0);
    EXPECT_EQ (count (1, MVThemeColour::accent), 0);
}

} // namespace

} // namespace morvanelab
