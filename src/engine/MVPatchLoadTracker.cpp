// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVPatchLoadTracker.h"

#include "foundation/MVResult.h"

#include <algorithm>
#include <utility>

namespace morvanelab
{

std::int64_t MVPatchLoadTracker::begin (std::uint64_t renderer, int layer, MVPatchLoadCompletion completion,
                                        void* contextA, void* contextB)
{
    const std::lock_guard guard (lock);
    entries.push_back ({ ++lastTicket, renderer, layer, completion, contextA, contextB, false, false });
    return lastTicket;
}

void MVPatchLoadTracker::cancel (std::int64_t ticket)
{
    const std::lock_guard guard (lock);
    take (ticket);
}

bool MVPatchLoadTracker::isSuperseded (std::int64_t ticket) const
{
    const std::lock_guard guard (lock);
    const auto own = std::find_if (entries.begin(), entries.end(), [ticket] (const Entry& e) { return e.ticket == ticket; });

    // Entries stand in the order of their tickets.
    return own != entries.end() && std::any_of (own + 1, entries.end(), [&own] (const Entry& newer) {
               return newer.renderer == own->renderer && newer.layer == own->layer;
           });
}

void MVPatchLoadTracker::beginFade (std::int64_t ticket, bool inPlace)
{
    const std::lock_guard guard (lock);

    for (Entry& entry : entries)
    {
        if (entry.ticket == ticket)
        {
            entry.fading = true;
            entry.inPlace = inPlace;
        }
    }
}

void MVPatchLoadTracker::finish (std::int64_t ticket, int result, const std::string& message)
{
    Entry ended;
    {
        const std::lock_guard guard (lock);
        ended = take (ticket);

        if (ended.ticket != 0 && result != resultPosted)
            error = result == resultDone ? std::string() : message;
    }

    if (ended.completion != nullptr)
        ended.completion (ended.contextA, ended.contextB, result, message.empty() ? nullptr : message.c_str());
}

std::vector<MVPatchLoadTracker::Entry> MVPatchLoadTracker::takeAll()
{
    const std::lock_guard guard (lock);
    return std::exchange (entries, {});
}

void MVPatchLoadTracker::tellStopped (const std::vector<Entry>& ended)
{
    for (const Entry& entry : ended)
        if (entry.completion != nullptr)
            entry.completion (entry.contextA, entry.contextB, entry.inPlace ? resultDone : resultNotEnabled, nullptr);
}

bool MVPatchLoadTracker::isAnyPending() const
{
    const std::lock_guard guard (lock);
    return ! entries.empty();
}

int MVPatchLoadTracker::numBeforeFade() const
{
    const std::lock_guard guard (lock);
    return static_cast<int> (std::count_if (entries.begin(), entries.end(), [] (const Entry& e) { return ! e.fading; }));
}

std::string MVPatchLoadTracker::lastError() const
{
    const std::lock_guard guard (lock);
    return error;
}

/** Removes and returns the entry; one without a ticket if there is none. */
MVPatchLoadTracker::Entry MVPatchLoadTracker::take (std::int64_t ticket)
{
    const auto found = std::find_if (entries.begin(), entries.end(), [ticket] (const Entry& e) { return e.ticket == ticket; });
    if (found == entries.end())
        return {};

    const Entry taken = *found;
    entries.erase (found);
    return taken;
}

} // namespace morvanelab
