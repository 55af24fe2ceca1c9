// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plugin/RigBank.h"
#include "plugin/SordelinAudioProcessor.h"
#include "plugin/SordelinMainComponent.h"
#include "support/TempFolder.h"

#include <juce_events/juce_events.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace morvanelab::test
{

/** Delivers the messages that are waiting on this thread. */
void pumpMessages();

/** Stands for window and user: makes the prompt believe that it shows, remembers every box as "title|text|button"
    and answers from a script; without an answer left a box is declined. */
class ScriptedUser
{
public:
    struct Answer
    {
        bool accepted = true;
        juce::String typed;
    };

    explicit ScriptedUser (SordelinMainComponent& core);

    /** What has come up since the last call. */
    std::vector<std::string> takeBoxes();
    void willAnswer (const Answer& answer) { answers.push_back (answer); }
    void willType (const char* utf8) { willAnswer ({ true, juce::String::fromUTF8 (utf8) }); }

private:
    std::vector<std::string> boxes;
    std::deque<Answer> answers;
};

/** One started plug-in in this process, its user, and its sound. */
class CorePlugin
{
public:
    /** banks is where a first run finds banks. start as a host would: prepare at 44100 Hz. */
    explicit CorePlugin (const juce::File& banks, bool started = true);

    void start (double rate = 44100.0);
    /** The sound of a note, after what was under way has ended. A first note sounds the same whenever it is played;
        oscillators run on from one note to the next. */
    std::vector<float> playNote (int key = 69);
    std::vector<float> render (int frames, juce::MidiBuffer midi = {});
    juce::MemoryBlock state() { return core().getState(); }
    SordelinState fields();
    SordelinMainComponent& core() { return processor.getMainComponent(); }
    MVBankFileManager& banks() { return core().getShelf().getBankManager(); }

    SordelinAudioProcessor processor;
    ScriptedUser user;
};

/** A home and a folder with one bank, where plug-ins come and go. One at a time. */
class CoreRig
{
public:
    CoreRig();

    std::unique_ptr<CorePlugin> open (bool started = true) const;
    juce::File home() const { return juce::File (juce::String (folder.file ("home"))); }
    juce::File bankFolder() const { return juce::File (juce::String (folder.file ("vst"))); }
    juce::File bank() const { return bankFolder().getChildFile ("Rig.mv_onbank"); }
    juce::File preset (const char* utf8Name) const;
    /** Another bank with the same patches, not loaded. */
    juce::File writeBank (const char* name) const;

private:
    const juce::ScopedJuceInitialiser_GUI messages;
    TempFolder folder;
};

/** The state that names a slot of the bank at an index of the list. */
juce::MemoryBlock stateFor (CorePlugin& plugin, int bank, int slot);
double peakOf (const std::vector<float>& sound);
/** Of a steady tone at 44100 Hz, in Hz: the rig's sine has 440 at key 69, its square 880; 0 for silence. */
double pitchOf (const std::vector<float>& sound);
constexpr double sinePitch = 440.0;
constexpr double squarePitch = 880.0;
constexpr double pitchTolerance = 5.0;

} // namespace morvanelab::test
