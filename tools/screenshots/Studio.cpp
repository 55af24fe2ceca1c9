// SPDX-License-Identifier: GPL-3.0-or-later
#include "screenshots/Studio.h"

#include "screenshots/ScreenPicture.h"

#include <chrono>
#include <stdexcept>

namespace juce
{
// The toolkit's own step of the message loop, for programs that have no application object.
bool dispatchNextMessageOnSystemQueue (bool returnIfNoPendingMessages);
} // namespace juce

namespace morvanelab
{

namespace
{

constexpr double rate = 44100.0;
constexpr int blockSize = 512;
constexpr int slotsPerBank = 64;

juce::Component* findBelow (juce::Component& parent, const juce::String& id)
{
    for (auto* child : parent.getChildren())
    {
        if (child->getComponentID() == id)
            return child;
        if (auto* found = findBelow (*child, id))
            return found;
    }
    return nullptr;
}

} // namespace

Studio::Studio (const juce::File& banks) : processor (std::make_unique<SordelinAudioProcessor> (banks))
{
    processor->setPlayConfigDetails (2, 2, rate, blockSize);
    processor->prepareToPlay (rate, blockSize);
    editor.reset (processor->createEditor());
    editor->addToDesktop (0);
    editor->setTopLeftPosition (0, 0);
    editor->setVisible (true);
    audio = std::thread ([this] { playAudio(); });
    run (0.5);
}

Studio::~Studio()
{
    stopping = true;
    audio.join();
    editor.reset();
    processor.reset();
}

void Studio::playAudio()
{
    using Clock = std::chrono::steady_clock;
    juce::AudioBuffer<float> buffer (2, blockSize);
    auto next = Clock::now();
    while (! stopping)
    {
        juce::MidiBuffer midi;
        {
            const std::lock_guard<std::mutex> scope (midiLock);
            midi.swapWith (queued);
        }
        buffer.clear();
        {
            const juce::ScopedLock callback (processor->getCallbackLock());
            if (! processor->isSuspended())
                processor->processBlock (buffer, midi);
        }
        next += std::chrono::duration_cast<Clock::duration> (std::chrono::duration<double> (blockSize / rate));
        std::this_thread::sleep_until (next);
    }
}

juce::Component& Studio::find (const juce::String& id)
{
    auto* found = findBelow (*editor, id);
    if (found == nullptr)
        throw std::runtime_error (("no control " + id).toStdString());
    return *found;
}

void Studio::click (const juce::String& id)
{
    auto* button = dynamic_cast<juce::Button*> (&find (id));
    if (button == nullptr)
        throw std::runtime_error ((id + " is no button").toStdString());
    button->triggerClick();
    run (0.3);
}

void Studio::load (const juce::String& patchName)
{
    const auto banks = core().getShelf().listBanks();
    for (std::size_t bank = 0; bank < banks.size(); ++bank)
        for (int slot = 0; slot < slotsPerBank; ++slot)
            if (banks[bank].slots[static_cast<std::size_t> (slot)] == patchName.toStdString())
            {
                core().loadPatch (static_cast<int> (bank), slot);
                run (0.5);
                return;
            }
    throw std::runtime_error (("no patch " + patchName).toStdString());
}

void Studio::send (const juce::MidiMessage& message)
{
    const std::lock_guard<std::mutex> scope (midiLock);
    queued.addEvent (message, 0);
}

void Studio::run (double seconds)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::duration<double> (seconds);
    while (Clock::now() < end)
    {
        while (juce::dispatchNextMessageOnSystemQueue (true))
        {
        }
        std::this_thread::sleep_for (std::chrono::milliseconds (5));
    }
}

void Studio::shoot (const juce::File& file)
{
    editor->toFront (false);
    run (0.2);
    if (! writePicture (readScreen (editor->getScreenBounds()), file))
        throw std::runtime_error (("cannot write " + file.getFullPathName()).toStdString());
}

} // namespace morvanelab
