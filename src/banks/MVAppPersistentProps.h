// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVUserPrompt.h"

#include <juce_core/juce_core.h>

#include <memory>

namespace morvanelab
{

class MVPropertiesFile;

/** The settings that outlive a session: one XML properties file for the user, and the directory of the program's own
    files, in which it lies.

    The directory is the one that the environment variable SORDELIN_HOME names. Without it, on Linux it is
    "Application Support" in $XDG_CONFIG_HOME (default ~/.config; a relative value is ignored), elsewhere the
    system's place for such files. Nothing is created before something is to be saved, except by getDataDirectory.

    A change is saved 3 seconds later by a timer of the message thread. Without a message manager (a program without
    an event loop) no timer runs: flush and the destructor save. Every save replaces the file whole, and keeps what
   other processes have stored since under other keys. All objects of a process that name one file share its contents. A
    damaged file is kept under "_bak" when it is replaced. See MVPropertiesFile.

    Any thread may read and write; getDataDirectory belongs to the message thread, since it may show a box. */
class MVAppPersistentProps
{
public:
    /** The plug-in's application name. */
    static constexpr const char* defaultApplicationName = "MorvaneLab_Sordelin_1";

    /** The prompt must outlive the object. subFolder matters on macOS only. */
    explicit MVAppPersistentProps (const juce::String& applicationName = defaultApplicationName,
                                   const juce::String& subFolder = "Application Support",
                                   MVUserPrompt& prompt = MVUserPrompt::cautious());
    ~MVAppPersistentProps();

    /** Saves at once if there are unsaved changes. A failure is not reported; the next change tries again. */
    void flush();

    /** Forgets all settings but those of the keys kept, at once. False if the file could not be changed. */
    bool removeAllBut (const juce::StringArray& keptKeys);

    /** The directory of the program's own files, made if it is missing; a plain file in its place is deleted.
        existed tells whether it was there before. An empty path, after a box, if it cannot be made. */
    juce::String getDataDirectory (bool& existed);

    /** The properties file, whether or not it exists yet. */
    juce::File getFile() const;

    /** The empty text, or the default, if the key is absent. */
    juce::String getString (const juce::String& key) const;
    int getInt (const juce::String& key, int defaultValue) const;
    bool getBool (const juce::String& key, bool defaultValue) const;

    /** Return true. */
    bool setString (const juce::String& key, const juce::String& value);
    bool setInt (const juce::String& key, int value);
    bool setBool (const juce::String& key, bool value);

private:
    std::shared_ptr<MVPropertiesFile> properties;
    MVUserPrompt& prompt;
};

} // namespace morvanelab
