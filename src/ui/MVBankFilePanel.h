// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>
#include <memory>

namespace morvanelab
{

/** A file dialog inside the window, since the system's own fail in many hosts. It covers its parent; whoever shows it
    deletes it when it is done. Message thread. */
class MVBankFilePanel : public juce::Component, private juce::FileBrowserListener
{
public:
    enum class Kind
    {
        openOne,
        openSeveral,
        save
    };
    struct Request
    {
        Kind kind = Kind::openOne;
        juce::String title;
        juce::String button;    ///< "Open", "Save", ...
        juce::String patterns;  ///< "*.a;*.b"
        juce::String extension; ///< given to a name without any of the patterns, for saving
        bool mayReplace = true; ///< whether an existing file may be saved to, after a question
        juce::File folder;      ///< shown first
        juce::String name;      ///< suggested for saving
    };

    /** done is called once, possibly deleting the panel: with the files, or with none if the user cancelled. */
    MVBankFilePanel (Request requestToUse, std::function<void (const juce::Array<juce::File>&)> done);
    ~MVBankFilePanel() override;

    /** The folder that is shown. */
    juce::File getFolder() const;
    juce::FileBrowserComponent& getBrowser() { return *browser; }

    /** As the button does: takes what is chosen. A file to be saved that exists is asked about first. */
    void accept();
    void cancel();

    void paint (juce::Graphics& graphics) override;
    void resized() override;
    bool keyPressed (const juce::KeyPress& key) override;

private:
    void selectionChanged() override;
    void fileClicked (const juce::File&, const juce::MouseEvent&) override {}
    void fileDoubleClicked (const juce::File& file) override;
    void browserRootChanged (const juce::File&) override {}
    juce::Array<juce::File> chosenFiles() const;
    void finish (const juce::Array<juce::File>& files);
    void setNotice (const juce::String& text, bool isQuestion);

    Request request;
    std::function<void (const juce::Array<juce::File>&)> onDone;
    juce::WildcardFileFilter filter;
    std::unique_ptr<juce::FileBrowserComponent> browser;
    juce::TextButton acceptButton;
    juce::TextButton cancelButton { "Cancel" };
    juce::String notice;
    bool asking = false; ///< whether to replace a file
};

} // namespace morvanelab
