// SPDX-License-Identifier: GPL-3.0-or-later
#include "host/Tune.h"

#include <algorithm>
#include <cmath>

namespace morvanelab::host
{

namespace
{

constexpr unsigned char noteOnStatus = 0x90;
constexpr unsigned char noteOffStatus = 0x80;

// Voices add up and nothing clips them: five notes together have to stay below full scale.
constexpr int arpeggioVelocity = 64;
constexpr int bassVelocity = 50;
constexpr int melodyVelocity = 62;
constexpr int chordVelocity = 44;

} // namespace

std::vector<TuneNote> builtInTune()
{
    std::vector<TuneNote> tune;
    double time = 0.1;
    for (const int key : { 48, 55, 60, 64, 67, 72 })
    {
        tune.push_back ({ key, arpeggioVelocity, time, time + 0.22 });
        time += 0.25;
    }

    struct Step
    {
        int bass;
        int melody;
        double length;
    };
    constexpr Step steps[] { { 45, 72, 0.5 }, { 45, 76, 0.25 }, { 45, 74, 0.25 }, { 41, 72, 0.5 },
                             { 41, 69, 0.5 }, { 43, 71, 0.5 },  { 43, 67, 0.5 } };
    for (const auto& step : steps)
    {
        tune.push_back ({ step.bass, bassVelocity, time, time + 0.9 * step.length });
        tune.push_back ({ step.melody, melodyVelocity, time, time + 0.8 * step.length });
        time += step.length;
    }

    for (const int key : { 36, 48, 60, 64, 67 })
        tune.push_back ({ key, chordVelocity, time, time + 1.6 });
    return tune;
}

double tuneLength (const std::vector<TuneNote>& tune)
{
    double end = 0.0;
    for (const auto& note : tune)
        end = std::max (end, note.off);
    return end;
}

std::vector<MidiBytes> messagesInBlock (const std::vector<TuneNote>& tune, double rate, long firstFrame, int frames)
{
    std::vector<MidiBytes> messages;
    const auto add = [&] (double seconds, unsigned char status, int key, int velocity)
    {
        const auto frame = std::lround (seconds * rate) - firstFrame;
        if (frame >= 0 && frame < frames)
            messages.push_back (
                { static_cast<int> (frame),
                  { status, static_cast<unsigned char> (key), static_cast<unsigned char> (velocity) } });
    };
    for (const auto& note : tune)
    {
        add (note.on, noteOnStatus, note.key, note.velocity);
        add (note.off, noteOffStatus, note.key, 0);
    }
    std::stable_sort (messages.begin(), messages.end(),
                      [] (const MidiBytes& a, const MidiBytes& b)
                      {
                          if (a.sample != b.sample)
                              return a.sample < b.sample;
                          return a.data[0] < b.data[0];
                      });
    return messages;
}

} // namespace morvanelab::host
