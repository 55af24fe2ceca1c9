// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVBankMgrComponent.h"
#include "ui/MVMetaDataEditor.h"

#include <utility>

// What the librarian's commands do: each is an operation of the model, or a dialog that ends in one.

namespace morvanelab
{

namespace
{

using Command = MVLibrarianCommand;

} // namespace

MVPatchAddress MVBankMgrComponent::selectedSlot()
{
    const auto& slots = model.getSelectedSlots();
    for (int i = 0; i < MVSlotGrid::slotCount; ++i)
        if (slots[static_cast<std::size_t> (i)])
            return { model.getSelectedBank(), i };
    return { model.getSelectedBank(), -1 };
}

bool MVBankMgrComponent::selectionHoldsPatch()
{
    const int bank = model.getSelectedBank();
    const auto& slots = model.getSelectedSlots();
    for (int i = 0; i < MVSlotGrid::slotCount; ++i)
        if (slots[static_cast<std::size_t> (i)] && model.getCatalogue().slot ({ bank, i }).occupied)
            return true;
    return false;
}

bool MVBankMgrComponent::canPerform (Command command)
{
    const int bank = model.getSelectedBank();
    const bool anySlot = bank >= 0 && model.getSelectedSlots().any();
    switch (command)
    {
        case Command::none:
        case Command::count:
            return false;
        case Command::loadPatch:
        case Command::cut:
        case Command::copy:
        case Command::clear:
            return anySlot && selectionHoldsPatch();
        case Command::editPatch:
        case Command::exportPatch:
            return anySlot && hasOneSlot() && selectionHoldsPatch();
        case Command::swap:
            return anySlot && model.getSelectedSlots().count() == 2 && selectionHoldsPatch();
        case Command::paste:
            return anySlot && model.canPaste();
        case Command::selectAll:
        case Command::addPatch:
        case Command::removeBank:
        case Command::editBank:
            return bank >= 0;
        case Command::moveBankUp:
            return bank > 0;
        case Command::moveBankDown:
            return bank >= 0 && bank + 1 < model.getCatalogue().bankCount();
        case Command::undo:
            return model.canUndo();
        case Command::redo:
            return model.canRedo();
        case Command::newBank:
        case Command::addBank:
        case Command::find:
            return true;
    }
    return false;
}

juce::String MVBankMgrComponent::commandText (Command command)
{
    if (command == Command::undo)
        return model.undoName();
    if (command == Command::redo)
        return model.redoName();
    return librarianCommand (command).text;
}

void MVBankMgrComponent::perform (Command command)
{
    if (dialog != nullptr || ! canPerform (command))
        return;

    switch (command)
    {
        case Command::undo:
            model.undo();
            break;
        case Command::redo:
            model.redo();
            break;
        case Command::find:
            searchField.grabKeyboardFocus();
            break;
        default:
            performOnSlots (command, model.getSelectedSlots());
            performOnBanks (command);
            break;
    }
}

void MVBankMgrComponent::performOnSlots (Command command, const MVSlotSet& slots)
{
    const int bank = model.getSelectedBank();
    switch (command)
    {
        case Command::loadPatch:
            loadSelected();
            break;
        case Command::editPatch:
            editPatch();
            break;
        case Command::cut:
            model.cutToClipboard (bank, slots);
            break;
        case Command::copy:
            if (model.copyToClipboard (bank, slots))
                report (juce::String (static_cast<int> (slots.count()))
                        + (slots.count() == 1 ? " slot copied" : " slots copied"));
            break;
        case Command::paste:
            model.paste (selectedSlot());
            break;
        case Command::clear:
            model.clearSlots (bank, slots);
            break;
        case Command::swap:
            swapSelected();
            break;
        case Command::selectAll:
            model.selectSlots (MVSlotSet().set());
            break;
        case Command::addPatch:
            openPatchFiles();
            break;
        case Command::exportPatch:
            openExport();
            break;
        default:
            break;
    }
}

void MVBankMgrComponent::performOnBanks (Command command)
{
    const int bank = model.getSelectedBank();
    switch (command)
    {
        case Command::newBank:
            openNewBank();
            break;
        case Command::addBank:
            openBankFiles();
            break;
        case Command::removeBank:
            if (model.removeBank (bank))
                report ("Removed from the list.  The file stays.");
            break;
        case Command::moveBankUp:
            model.moveBank (bank, bank - 1);
            break;
        case Command::moveBankDown:
            model.moveBank (bank, bank + 1);
            break;
        case Command::editBank:
            editBank();
            break;
        default:
            break;
    }
}

void MVBankMgrComponent::swapSelected()
{
    const auto first = selectedSlot();
    auto second = first;
    do
        ++second.slot;
    while (! model.getSelectedSlots()[static_cast<std::size_t> (second.slot)]);
    model.swapSlots (first, second);
}

void MVBankMgrComponent::loadSelected()
{
    if (hasOneSlot())
    {
        loadPatch (selectedSlot());
        return;
    }
    // The loader is the one to say that it takes one patch only.
    model.selectSlots (model.getSelectedSlots());
    if (onLoad)
        onLoad();
}

// ---- Dialogs

void MVBankMgrComponent::openDialog (std::unique_ptr<juce::Component> newDialog)
{
    focusWasHere = hasKeyboardFocus (true) && ! searchField.hasKeyboardFocus (true);
    dialog = std::move (newDialog);
    addAndMakeVisible (*dialog);
    resized();
}

void MVBankMgrComponent::closeDialog()
{
    if (dialog == nullptr)
        return;
    const bool hadFocus = dialog->hasKeyboardFocus (true) || focusWasHere;
    // It is on the stack: its own button or key has brought us here.
    removeChildComponent (dialog.get());
    retired = std::move (dialog);
    if (imageDialog != nullptr)
        removeChildComponent (imageDialog.get());
    imageDialog.reset();
    postCommandMessage (commandDropDialog);

    if (focusWasHere)
        list.focusSlots();
    else if (hadFocus)
        giveBackFocus();
    repaint();
}

juce::File MVBankMgrComponent::firstFolder() const
{
    return lastFolder.isDirectory() ? lastFolder : juce::File::getSpecialLocation (juce::File::userHomeDirectory);
}

void MVBankMgrComponent::openFiles (MVBankFilePanel::Request request,
                                    std::function<void (const juce::Array<juce::File>&)> use)
{
    request.folder = firstFolder();
    openDialog (std::make_unique<MVBankFilePanel> (std::move (request),
                                                   [this, use = std::move (use)] (const juce::Array<juce::File>& files)
                                                   {
                                                       lastFolder =
                                                           files.isEmpty() ? lastFolder : files[0].getParentDirectory();
                                                       closeDialog();
                                                       if (! files.isEmpty())
                                                           use (files);
                                                       layoutChanged();
                                                   }));
}

void MVBankMgrComponent::openPatchFiles()
{
    MVBankFilePanel::Request request;
    request.kind = MVBankFilePanel::Kind::openSeveral;
    request.title = "Add patches";
    request.button = "Add";
    request.patterns = MVLibrarianModel::patchFilePattern;
    openFiles (std::move (request),
               [this, target = selectedSlot()] (const juce::Array<juce::File>& files)
               {
                   juce::StringArray paths;
                   for (const auto& file : files)
                       paths.add (file.getFullPathName());
                   model.addFiles (paths, target);
               });
}

void MVBankMgrComponent::openBankFiles()
{
    MVBankFilePanel::Request request;
    request.kind = MVBankFilePanel::Kind::openSeveral;
    request.title = "Add banks to the list";
    request.button = "Add";
    request.patterns = MVLibrarianModel::bankFilePattern;
    openFiles (std::move (request),
               [this] (const juce::Array<juce::File>& files)
               {
                   for (const auto& file : files)
                       model.addBank (file);
               });
}

void MVBankMgrComponent::openNewBank()
{
    MVBankFilePanel::Request request;
    request.kind = MVBankFilePanel::Kind::save;
    request.title = "New bank";
    request.button = "Create";
    request.patterns = MVLibrarianModel::bankFilePattern;
    request.extension = MVBankFile::fileExtension;
    request.mayReplace = false;
    request.name = juce::String ("New Bank") + MVBankFile::fileExtension;
    openFiles (std::move (request), [this] (const juce::Array<juce::File>& files) { model.createBank (files[0]); });
}

void MVBankMgrComponent::openExport()
{
    const auto source = selectedSlot();
    const auto name = juce::File::createLegalFileName (model.getCatalogue().slot (source).name);
    MVBankFilePanel::Request request;
    request.kind = MVBankFilePanel::Kind::save;
    request.title = "Export patch";
    request.button = "Save";
    request.patterns = MVLibrarianModel::patchFilePattern;
    request.extension = MVLibrarianModel::patchFileExtension;
    request.name = (name.isEmpty() ? juce::String ("Patch") : name) + MVLibrarianModel::patchFileExtension;
    openFiles (std::move (request),
               [this, source] (const juce::Array<juce::File>& files)
               {
                   if (model.exportPatch (source, files[0]))
                       report ("Saved as " + files[0].getFileName());
               });
}

void MVBankMgrComponent::editPatch()
{
    const auto address = selectedSlot();
    const auto metadata = model.readSlotMetadata (address);
    editMetadata ("Patch " + juce::String (address.slot + 1) + " Info", *metadata,
                  [this, address] (const MVMetaData& edited) { return model.setSlotMetadata (address, edited); });
}

void MVBankMgrComponent::editBank()
{
    const int bank = model.getSelectedBank();
    const auto metadata = model.readBankMetadata (bank);
    editMetadata ("Bank: " + model.getCatalogue().bank (bank).file.getFileName(), *metadata,
                  [this, bank] (const MVMetaData& edited) { return model.setBankMetadata (bank, edited); });
}

void MVBankMgrComponent::editMetadata (const juce::String& title, const MVMetaData& metadata,
                                       std::function<bool (const MVMetaData&)> store)
{
    auto editor = std::make_unique<MVMetaDataEditor> (title, metadata, MVPatchSearch::genres (model.getCatalogue()));
    auto* const shown = editor.get();
    shown->onSave = [this, store = std::move (store)] (const MVMetaData& edited)
    {
        if (store (edited))
            closeDialog();
    };
    shown->onCancel = [this] { closeDialog(); };
    shown->onChooseImage = [this] { chooseImage(); };
    const bool byKeyboard = hasKeyboardFocus (true);
    openDialog (std::move (editor));
    if (byKeyboard)
        shown->focusName();
}

void MVBankMgrComponent::chooseImage()
{
    MVBankFilePanel::Request request;
    request.title = "Choose a picture";
    request.button = "Open";
    request.patterns = MVMetaDataEditor::imagePatterns;
    request.folder = firstFolder();
    imageDialog =
        std::make_unique<MVBankFilePanel> (std::move (request),
                                           [this] (const juce::Array<juce::File>& files)
                                           {
                                               removeChildComponent (imageDialog.get());
                                               retired = std::move (imageDialog);
                                               postCommandMessage (commandDropDialog);
                                               if (auto* const editor = dynamic_cast<MVMetaDataEditor*> (dialog.get());
                                                   editor != nullptr && ! files.isEmpty())
                                               {
                                                   lastFolder = files[0].getParentDirectory();
                                                   editor->setImageFile (files[0]);
                                               }
                                           });
    addAndMakeVisible (*imageDialog);
    resized();
}

bool MVBankMgrComponent::isInterestedInDragSource (const SourceDetails& details)
{
    return details.description == juce::var (MVBankItemSelectComponent::patchDragId);
}

// ---- Files from the desktop

bool MVBankMgrComponent::isInterestedInFileDrag (const juce::StringArray& files)
{
    const bool editing = dynamic_cast<MVMetaDataEditor*> (dialog.get()) != nullptr;
    for (const auto& path : files)
    {
        const juce::File file (path);
        if (editing
                ? MVMetaDataEditor::isImageFile (file)
                : dialog == nullptr && (MVLibrarianModel::isBankFile (file) || MVLibrarianModel::isPatchFile (file)))
            return true;
    }
    return false;
}

void MVBankMgrComponent::fileDragMove (const juce::StringArray&, int x, int y)
{
    list.showDropSlot (list.slotAt (list.getLocalPoint (this, juce::Point<int> { x, y })));
}

void MVBankMgrComponent::fileDragExit (const juce::StringArray&) { list.showDropSlot (MVSlotGrid::noSlot); }

void MVBankMgrComponent::filesDropped (const juce::StringArray& files, int x, int y)
{
    list.showDropSlot (MVSlotGrid::noSlot);
    if (auto* const editor = dynamic_cast<MVMetaDataEditor*> (dialog.get()))
    {
        for (const auto& path : files)
            if (MVMetaDataEditor::isImageFile (juce::File (path)))
            {
                editor->setImageFile (juce::File (path));
                return;
            }
        return;
    }
    model.addFiles (files,
                    { model.getSelectedBank(), list.slotAt (list.getLocalPoint (this, juce::Point<int> { x, y })) });
}

} // namespace morvanelab
