// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <juce_core/juce_core.h>
#include <juce_events/juce_events.h>

#include <filesystem>
#include <set>

namespace morvanelab
{

/** Keys and texts in an XML file of the toolkit's form: an element PROPERTIES with elements VALUE, each with the
    attributes name and val.

    Several processes may use one file. What each has set since it last saved is laid over what the file holds by
    then, so that none throws away what another has stored; and reading looks at the file again when it has changed.
    A file that is not well-formed counts as empty, and is kept under "_bak" before it is replaced. A file that is there
    and cannot be read is left alone.

    Values are stored as attributes throughout: as elements, as the toolkit would store a value that is XML itself and
    as older files have it, they come back spelled otherwise.

    Any thread. */
class MVPropertiesFile : private juce::Timer
{
public:
    /** A change is saved that long after the last one, by a timer of the message thread; a negative delay leaves
        saving to saveIfNeeded and the destructor. */
    MVPropertiesFile (const juce::File& file, int saveDelayMilliseconds);
    /** Saves what is unsaved. */
    ~MVPropertiesFile() override;

    const juce::File& getFile() const { return file; }

    /** The fallback if the key is absent. */
    juce::String getValue (const juce::String& key, const juce::String& fallback = {});
    void setValue (const juce::String& key, const juce::String& value);

    /** Writes the file if anything was set since it was saved. False if that failed: it is tried again with the next
        change. */
    bool saveIfNeeded();

    /** Forgets all other keys, also in the file, at once, with what was kept under "_bak". The file goes if no key is
        left. False if it could not be changed; the keys are forgotten all the same. */
    bool removeAllBut (const juce::StringArray& keptKeys);

private:
    /** What tells one version of a file from another. */
    struct Stamp
    {
        juce::int64 size = -1; ///< -1 for a missing file
        std::filesystem::file_time_type time {};
        bool operator== (const Stamp&) const = default;
    };

    enum class Contents
    {
        none,
        good,
        damaged,
        unreadable
    };

    void timerCallback() override;
    Stamp readStamp() const;
    static Contents read (const juce::File& file, juce::MemoryBlock& bytes, juce::StringPairArray& values);
    void followFile();
    void takeOver (Contents contents, const juce::StringPairArray& stored);
    bool write();

    const juce::File file;
    const int saveDelay;
    juce::CriticalSection lock;
    juce::StringPairArray values { false };
    std::set<juce::String> unsavedKeys;
    Stamp stamp; ///< of the file that values was read from, or written to
};

} // namespace morvanelab
