// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVBankFilePanel.h"

#include "ui/MVTheme.h"

#include <utility>

namespace morvanelab
{

namespace
{

constexpr int titleHeight = 30;

int browserFlags (MVBankFilePanel::Kind kind)
{
    using Browser = juce::FileBrowserComponent;
    switch (kind)
    {
        case MVBankFilePanel::Kind::openSeveral:
            return Browser::openMode | Browser::canSelectFiles | Browser::canSelectMultipleItems;
        case MVBankFilePanel::Kind::save:
            return Browser::saveMode | Browser::canSelectFiles | Browser::doNotClearFileNameOnRootChange;
        default:
            return Browser::openMode | Browser::canSelectFiles;
    }
}

} // namespace

MVBankFilePanel::MVBankFilePanel (Request requestToUse, std::function<void (const juce::Array<juce::File>&)> done)
    : request (std::move (requestToUse)), onDone (std::move (done)), filter (request.patterns, "*", request.patterns)
{
    setComponentID ("librarian_file_panel");
    setFocusContainerType (FocusContainerType::keyboardFocusContainer);
    setWantsKeyboardFocus (true);
    const auto start = request.name.isEmpty() ? request.folder : request.folder.getChildFile (request.name);
    browser = std::make_unique<juce::FileBrowserComponent> (browserFlags (request.kind), start, &filter, nullptr);
    browser->setFilenameBoxLabel ("File:");
    browser->addListener (this);
    addAndMakeVisible (*browser);

    acceptButton.setComponentID ("file_accept");
    acceptButton.setButtonText (request.button);
    acceptButton.onClick = [this] { accept(); };
    addAndMakeVisible (acceptButton);
    cancelButton.setComponentID ("file_cancel");
    cancelButton.onClick = [this] { cancel(); };
    addAndMakeVisible (cancelButton);
    acceptButton.setMouseClickGrabsKeyboardFocus (false);
    cancelButton.setMouseClickGrabsKeyboardFocus (false);
    selectionChanged();
}

MVBankFilePanel::~MVBankFilePanel() { browser->removeListener (this); }

juce::File MVBankFilePanel::getFolder() const { return browser->getRoot(); }

juce::Array<juce::File> MVBankFilePanel::chosenFiles() const
{
    juce::Array<juce::File> files;
    for (int i = 0; i < browser->getNumSelectedFiles(); ++i)
    {
        auto file = browser->getSelectedFile (i);
        if (request.kind == Kind::save)
        {
            const auto named = file.getFileName().isNotEmpty() && file != browser->getRoot() && ! file.isDirectory();
            if (! named)
                continue;
            if (request.extension.isNotEmpty() && ! filter.isFileSuitable (file))
                file = file.getSiblingFile (file.getFileName() + request.extension);
        }
        else if (! file.existsAsFile())
            continue;
        files.addIfNotAlreadyThere (file);
    }
    return files;
}

void MVBankFilePanel::selectionChanged()
{
    setNotice ({}, false);
    acceptButton.setEnabled (browser->currentFileIsValid() || ! chosenFiles().isEmpty());
}

void MVBankFilePanel::fileDoubleClicked (const juce::File& file)
{
    if (file.existsAsFile())
        accept();
}

void MVBankFilePanel::accept()
{
    const auto files = chosenFiles();
    if (files.isEmpty())
        return;
    if (request.kind != Kind::save || ! files[0].exists() || asking)
        finish (files);
    else if (request.mayReplace)
        setNotice (files[0].getFileName() + " exists. Replace it?", true);
    else
        setNotice (files[0].getFileName() + " exists. Choose another name.", false);
}

void MVBankFilePanel::setNotice (const juce::String& text, bool isQuestion)
{
    notice = text;
    asking = isQuestion;
    acceptButton.setButtonText (isQuestion ? juce::String ("Replace") : request.button);
    repaint();
}

void MVBankFilePanel::cancel()
{
    if (asking)
        setNotice ({}, false);
    else
        finish ({});
}

void MVBankFilePanel::finish (const juce::Array<juce::File>& files)
{
    // The callback may delete this panel.
    if (const auto done = std::exchange (onDone, nullptr))
        done (files);
}

bool MVBankFilePanel::keyPressed (const juce::KeyPress& key)
{
    if (key == juce::KeyPress (juce::KeyPress::escapeKey))
        cancel();
    else if (key == juce::KeyPress (juce::KeyPress::returnKey))
        accept();
    else
        return false;
    return true;
}

void MVBankFilePanel::paint (juce::Graphics& graphics)
{
    graphics.fillAll (themeColour (MVThemeColour::panel));
    auto area = getLocalBounds().reduced (metrics::margin);
    graphics.setColour (themeColour (MVThemeColour::text));
    graphics.setFont (themeFont (fontHeights::large, MVFontWeight::semiBold));
    graphics.drawText (request.title, area.removeFromTop (titleHeight), juce::Justification::topLeft);
    graphics.setColour (themeColour (MVThemeColour::warn));
    graphics.setFont (themeFont (fontHeights::normal));
    graphics.drawText (notice, area.removeFromBottom (metrics::controlHeight).withTrimmedRight (190),
                       juce::Justification::centredLeft);
}

void MVBankFilePanel::resized()
{
    auto area = getLocalBounds().reduced (metrics::margin);
    area.removeFromTop (titleHeight);
    auto foot = area.removeFromBottom (metrics::controlHeight);
    acceptButton.setBounds (foot.removeFromRight (86));
    foot.removeFromRight (metrics::gap);
    cancelButton.setBounds (foot.removeFromRight (86));
    browser->setBounds (area.withTrimmedBottom (metrics::gap));
}

} // namespace morvanelab
