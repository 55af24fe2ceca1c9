// SPDX-License-Identifier: GPL-3.0-or-later
// Control values and MIDI mappings under several threads at once; to be run under a thread sanitizer too.
#include "control/MVMidiManager.h"
#include "tests/control/ControlRig.h"

#include "foundation/MVEventThread.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <thread>

namespace morvanelab::test
{
namespace
{

/** What a listener on the event thread was told last, and how often. */
struct Told
{
    static void call (void* context, std::uint64_t, const double* value, int)
    {
        auto& told = *static_cast<Told*> (context);
        told.last.store (*value);
        told.times.fetch_add (1);
    }

    std::atomic<double> last { -1.0 };
    std::atomic<int> times { 0 };
};

template <typename Condition>
bool becomesTrue (Condition&& condition)
{
    for (int tries = 0; tries < 5000 && ! condition(); ++tries)
        std::this_thread::sleep_for (std::chrono::milliseconds (1));
    return condition();
}

/** Runs a function on a thread of its own once each round, all threads of a round at the same time. */
class RoundThread
{
public:
    template <typename Function>
    RoundThread (const std::atomic<int>& roundToRun, std::atomic<int>& finishedThreads, Function function)
        : thread (
            [&roundToRun, &finishedThreads, function]
            {
                for (int last = 0;;)
                {
                    const int round = roundToRun.load();
                    if (round < 0)
                        return;
                    if (round == last)
                    {
                        std::this_thread::yield();
                        continue;
                    }
                    function (round);
                    finishedThreads.fetch_add (1);
                    last = round;
                }
            })
    {
    }
    ~RoundThread() { thread.join(); }

private:
    std::thread thread;
};

TEST (ControlThreads, theLastWriteArrivesAndIsToldWhoeverAppliesIt)
{
    constexpr int rounds = 10000;
    constexpr int count = 60;
    ControlRig rig (count);
    Told told[count];
    for (int id = 1; id <= count; ++id)
        rig.controls.addControlCallback (id, Told::call, &told[id - 1]);
    const auto writeAll = [&] (int number, int steps)
    {
        for (int id = 1; id <= count; ++id)
            rig.controls.setControlValue (id, (number + id) % steps / static_cast<double> (steps));
    };

    std::atomic<int> round { 0 };
    std::atomic<int> finished { 0 };
    {
        // The audio thread's block: controllers arrive, pending writes are flushed at the end.
        const RoundThread audio (round, finished,
                                 [&] (int number)
                                 {
                                     writeAll (number, 7);
                                     rig.controls.flushPendingValues();
                                 });
        const RoundThread slider (round, finished, [&] (int number) { writeAll (number, 11); });

        for (int number = 1; number <= rounds; ++number)
        {
            finished.store (0);
            round.store (number);
            while (finished.load() < 2)
            {
                rig.events.dispatch (threadCategoryEvent, false);
                std::this_thread::yield();
            }
            while (rig.queued() > 0)
                rig.events.dispatch (threadCategoryEvent, false);

            EXPECT_FALSE (rig.controls.hasPendingValues());
            for (int id = 1; id <= count; ++id)
            {
                const MVControlValue& value = *rig.controls.acquireControl (id);
                EXPECT_EQ (value.getValue(), value.getRawValue() / 2147483647.0) << "an older write won";
                EXPECT_LE (std::abs (told[id - 1].last.load() - value.getValue()), 0.01) << "never told";
            }
        }

        round.store (-1);
    }

    EXPECT_LE (told[0].times.load(), 2 * rounds);
}

TEST (ControlThreads, manyWritersReachTheEventThread)
{
    constexpr int writers = 4;
    ControlRig rig (writers);
    MVEventThread eventThread (&rig.events);
    eventThread.start();

    std::vector<std::thread> threads;
    for (int id = 1; id <= writers; ++id)
        threads.emplace_back (
            [&, id]
            {
                for (int step = 0; step <= 2000; ++step)
                    rig.controls.setControlValue (id, step % (100 + id) / 200.0);
            });
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_TRUE (rig.controls.waitForPendingValues (5000));
    for (int id = 1; id <= writers; ++id)
        EXPECT_EQ (rig.controls.getControlValue (id), stored (2000 % (100 + id) / 200.0));
    eventThread.requestStop();
    EXPECT_TRUE (eventThread.waitForExit (5.0));
}

TEST (ControlThreads, aRemovedListenerIsNotCalledAgain)
{
    ControlRig rig (1);
    MVEventThread eventThread (&rig.events);
    eventThread.start();
    std::atomic<bool> done { false };
    std::thread writer (
        [&]
        {
            for (int step = 0; ! done.load(); ++step)
                rig.controls.setControlValue (1, step % 10 / 10.0);
        });

    for (int repetition = 0; repetition < 50; ++repetition)
    {
        Told told;
        rig.controls.addControlCallback (1, Told::call, &told);
        EXPECT_TRUE (becomesTrue ([&] { return told.times.load() > 0; }));
        EXPECT_TRUE (rig.controls.removeControlCallback (1, Told::call, &told));
        const int times = told.times.load();
        std::this_thread::yield();
        EXPECT_EQ (told.times.load(), times);
    }

    done.store (true);
    writer.join();
    eventThread.requestStop();
    EXPECT_TRUE (eventThread.waitForExit (5.0));
}

TEST (MidiThreads, mappingsChangeWhileControllersArrive)
{
    ControlRig rig (4);
    MVMidiManager midi (&rig.controls, &rig.events);
    midi.setMidiControlToValueId (2, 7, 1);
    std::atomic<bool> done { false };

    std::thread audio (
        [&]
        {
            std::uint8_t bytes[] { 0xB2, 7, 0, 0x92, 60, 100, 0x82, 60, 0 };
            for (std::uint8_t value = 0; ! done.load(); value = (value + 1) & 127)
            {
                bytes[2] = value;
                EXPECT_TRUE (midi.processMidiDataBuffer (bytes, sizeof (bytes), false));
                rig.controls.flushPendingValues();
            }
        });
    std::thread other (
        [&]
        {
            for (int step = 0; step < 300; ++step)
            {
                midi.isControlMappedToValueId (1, 2, 7);
                midi.enableMappedControlValueId (2, step % 2 == 0);
                midi.saveMidiMap();
            }
        });

    for (int step = 0; step < 300; ++step)
    {
        midi.addMidiControlToValueId (2, 7, 2 + step % 3);
        midi.unmapControlValueId (2 + (step + 1) % 3);
        if (step % 50 == 0)
            midi.setMidiControlToValueId (2, 7, 1);
    }

    other.join();
    done.store (true);
    audio.join();
    EXPECT_EQ (midi.getActiveNotes (2), 0);
}

} // namespace
} // namespace morvanelab::test
