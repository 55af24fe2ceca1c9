// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/CoreRig.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace juce
{
// The toolkit's own way to run what is waiting; its wrappers declare it like this, too.
extern bool dispatchNextMessageOnSystemQueue (bool returnIfNoPendingMessages);
} // namespace juce

namespace morvanelab::test
{

namespace
{

constexpr int blockFrames = 512;

} // namespace

void pumpMessages()
{
    while (juce::dispatchNextMessageOnSystemQueue (true))
    {
    }
}

ScriptedUser::ScriptedUser (SordelinMainComponent& core)
{
    core.getPrompt().setShowing (true);
    core.getPrompt().setBoxMaker (
        [this] (const SordelinPrompt::Box& box)
        {
            boxes.push_back ((box.title + "|" + box.text + "|" + box.buttons.joinIntoString ("/")).toStdString());
            Answer answer { false, {} };
            if (box.buttons.size() > 1 && ! answers.empty())
            {
                answer = answers.front();
                answers.pop_front();
            }
            box.done (answer.accepted, answer.typed);
        });
}

std::vector<std::string> ScriptedUser::takeBoxes()
{
    pumpMessages();
    return std::exchange (boxes, {});
}

CorePlugin::CorePlugin (const juce::File& banks, bool started) : processor (banks), user (processor.getMainComponent())
{
    processor.setNonRealtime (true); // blocks wait for what is under way, so that sounds repeat
    if (started)
        start();
}

void CorePlugin::start (double rate)
{
    processor.setRateAndBufferSizeDetails (rate, blockFrames);
    processor.prepareToPlay (rate, blockFrames);
}

std::vector<float> CorePlugin::render (int frames, juce::MidiBuffer midi)
{
    std::vector<float> sound;
    juce::AudioBuffer<float> block (2, blockFrames);
    while (static_cast<int> (sound.size()) < frames)
    {
        block.clear();
        const juce::ScopedLock callback (processor.getCallbackLock());
        processor.processBlock (block, midi);
        midi.clear();
        sound.insert (sound.end(), block.getReadPointer (0), block.getReadPointer (0) + blockFrames);
    }
    return sound;
}

std::vector<float> CorePlugin::playNote (int key)
{
    render (4 * blockFrames);
    juce::MidiBuffer notes;
    notes.addEvent (juce::MidiMessage::noteOn (1, key, 0.8F), 0);
    auto sound = render (8 * blockFrames, notes);
    notes.clear();
    notes.addEvent (juce::MidiMessage::noteOff (1, key), 0);
    render (96 * blockFrames, notes);
    return sound;
}

SordelinState CorePlugin::fields()
{
    const auto block = state();
    SordelinState fields;
    if (block.getSize() == sizeof fields)
        std::memcpy (static_cast<void*> (&fields), block.getData(), sizeof fields);
    return fields;
}

CoreRig::CoreRig()
{
    setenv ("SORDELIN_HOME", folder.file ("home").c_str(), 1);
    writeRigSettings (folder.path() / "home");
    bankFolder().createDirectory();
    writeRigBank (folder.path() / "vst" / "Rig.mv_onbank");
}

std::unique_ptr<CorePlugin> CoreRig::open (bool started) const
{
    return std::make_unique<CorePlugin> (bankFolder(), started);
}

juce::File CoreRig::preset (const char* utf8Name) const
{
    return juce::File (home().getFullPathName() + "/" + juce::String::fromUTF8 (utf8Name) + ".sord_preset");
}

juce::File CoreRig::writeBank (const char* name) const
{
    writeRigBank (folder.path() / name);
    return juce::File (juce::String (folder.file (name)));
}

juce::MemoryBlock stateFor (CorePlugin& plugin, int bank, int slot)
{
    SordelinState state;
    state.compressorThreshold = 0.9;
    state.compressorRollOff = 1.0;
    state.preCompressionVolume = 1.0;
    state.bankUuid = plugin.banks().getBankUuid (bank).bytes;
    state.patchIndex = slot;
    state.parameterValues.fill (1.0);
    state.midiControllers.fill (-1);
    state.midiChannels.fill (-1);
    return { &state, sizeof state };
}

double peakOf (const std::vector<float>& sound)
{
    double peak = 0.0;
    for (const float sample : sound)
        peak = std::max (peak, std::abs (static_cast<double> (sample)));
    return peak;
}

double pitchOf (const std::vector<float>& sound)
{
    if (peakOf (sound) < 1e-4)
        return 0.0;
    // Whole waves, since a note starts with a moment of silence.
    int waves = -1;
    std::size_t first = 0;
    std::size_t last = 0;
    for (std::size_t i = 1; i < sound.size(); ++i)
        if (sound[i - 1] < 0.0F && sound[i] >= 0.0F)
        {
            first = ++waves == 0 ? i : first;
            last = i;
        }
    return waves > 0 ? waves * 44100.0 / static_cast<double> (last - first) : 0.0;
}

} // namespace morvanelab::test
