// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVEvent.h"

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace morvanelab
{

/** Told when a posted patch load has ended: the two context words of the post, the result, and with a failure the
    text for the user (else null). Results:
    1 the patch plays and its fade is over, 6 a newer load of the same layer took its place before it began (that
    one's completion follows), 12 the part has gone, 14 empty data, 19 the engine stopped first, 22 no resources,
    any other code failure.
    Called once for each post, with no lock held, on the event thread or on the thread that stops the engine. */
using MVPatchLoadCompletion = MVEvent::Completion;

/** Keeps account of the patch loads on their way: how far they have come, which of them a newer one has made
    pointless, and whom to tell. Requests concern one layer of one renderer; of those that have not begun only the
    newest counts. Renderer 0 stands for full presets.

    Any thread. Short locks only; none is held while a completion runs. */
class MVPatchLoadTracker
{
public:
    struct Entry
    {
        std::int64_t ticket = 0;
        std::uint64_t renderer = 0;
        int layer = 0;
        MVPatchLoadCompletion completion = nullptr;
        void* contextA = nullptr;
        void* contextB = nullptr;
        bool fading = false;
        bool inPlace = false;
    };

    /** Enters a request. Returns its ticket, which is above 0 and grows from one to the next. */
    std::int64_t begin (std::uint64_t renderer, int layer, MVPatchLoadCompletion completion, void* contextA,
                        void* contextB);
    /** Forgets a request that could not be posted; its completion is not called. */
    void cancel (std::int64_t ticket);
    /** Whether a newer request for the same layer is on its way. */
    bool isSuperseded (std::int64_t ticket) const;
    /** The request waits for a fade, which needs blocks to run. inPlace: its new patch plays already. */
    void beginFade (std::int64_t ticket, bool inPlace);
    /** Ends a request and calls its completion. An unknown ticket is ignored. The message of a failure becomes
     * lastError(); 1 clears it. */
    void finish (std::int64_t ticket, int result, const std::string& message);

    /** Takes every request out, for tell. */
    std::vector<Entry> takeAll();
    /** Tells requests that will not be carried on: 1 where the patch is in place, else 19. */
    static void tellStopped (const std::vector<Entry>& ended);

    /** True until the last completion has returned. */
    bool isAnyPending() const;
    /** Requests that are queued or being read, those that fade not counted. */
    int numBeforeFade() const;

    /** Text of the latest failure, empty after a success. */
    std::string lastError() const;

private:
    std::vector<Entry>::iterator find (std::int64_t ticket);

    mutable std::mutex lock;
    std::vector<Entry> entries;
    std::string error;
    std::int64_t lastTicket = 0;
};

} // namespace morvanelab
