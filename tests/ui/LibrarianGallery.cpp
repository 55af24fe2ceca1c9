// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/ui/LibrarianWindowRig.h"

#include "ui/MVLibrarianImage.h"

namespace morvanelab
{

namespace
{

struct LibrarianGallery : test::LibrarianWindow
{
    void save (const juce::String& name)
    {
        for (const int zoom : { 1, 2 })
        {
            const juce::File file = juce::File (gallery).getChildFile (name + "-" + juce::String (zoom) + "x.png");
            file.deleteFile();
            juce::FileOutputStream stream (file);
            juce::PNGImageFormat().writeImageToStream (pictureOf (owner, static_cast<float> (zoom)), stream);
        }
    }

    const juce::String gallery = juce::SystemStats::getEnvironmentVariable ("SORDELIN_GALLERY", {});
};

// Writes pictures of the librarian's states, to be looked at.
TEST_F (LibrarianGallery, paintsItsStates)
{
    if (gallery.isEmpty())
        GTEST_SKIP() << "SORDELIN_GALLERY names no folder";
    owner.setSize (570, 420);
    librarian.setTopLeftPosition (10, 10);
    librarian.open();
    save ("librarian-empty");

    const juce::File given (juce::SystemStats::getEnvironmentVariable ("SORDELIN_FACTORY_BANK", {}));
    if (given.existsAsFile())
    {
        const auto factory = rig.folder.file ("Sordelin Factory.mv_onbank");
        given.copyFileTo (factory);
        rig.model.addBank (factory);
    }
    rig.model.addBank (rig.makeBank ("Winter Sketches.mv_onbank",
                                     { { 0, "Frozen Lake", "Ann Marrow", "Pads", "slow" },
                                       { 1, "Sleigh Bell Choir", "Ann Marrow", "Keys", "" },
                                       { 2, "", "", "", "" },
                                       { 8, "A very long name that nobody can read to its end", "Bob", "Bass", "" } }));
    rig.model.addBank (rig.makeBank ("Live Set.mv_onbank", { { 0, "Lead One", "Me", "Lead", "" } }));
    rig.model.selectBank (0);
    librarian.setLoadedPatch (rig.manager.getBankUuid (0), 2);
    clickSlot (4);
    save ("librarian-bank");
    clickSlot (9, juce::ModifierKeys::shiftModifier);
    grid().showDropSlot (13);
    rig.model.selectBank (1);
    clickSlot (20);
    save ("librarian-sparse");
    rig.model.selectBank (0);
    type ("librarian_search", "be");
    save ("librarian-search");
    type ("librarian_search", "zzzz");
    save ("librarian-nothing");
    type ("librarian_search", "");

    clickSlot (1);
    key (grid(), "F2");
    type ("metadata_description", "Struck glass, long decay.\nThe wheel opens the filter.");
    save ("librarian-metadata");
    press ("metadata_cancel");
    press ("librarian_export_patch");
    dynamic_cast<MVBankFilePanel*> (librarian.getDialog())->getBrowser().setRoot (rig.folder.folder);
    save ("librarian-export");
    press ("file_cancel");

    owner.setSize (1000, 700);
    librarian.setBounds (10, 10, 980, 680);
    save ("librarian-large");
}

} // namespace

} // namespace morvanelab
