// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVPatchLoadTracker.h"

#include "foundation/MVResult.h"

#include <algorithm>
#include <utility>

namespace morvanelab
{

namespace
{

/** Of a request whose completion is running: it concerns nobody any more. */
constexpr std::uint64_t noRenderer = ~std::uint64_t { 0 };

} // namespace

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
    if (const auto found = find (ticket); found != entries.end())
        entries.erase (found);
}

bool MVPatchLoadTracker::isSuperseded (std::int64_t ticket) const
{
    const std::lock_guard guard (lock);
    const auto own =
        std::find_if (entries.begin(), entries.end(), [ticket] (const Entry& e) { return e.ticket == ticket; });

    // Entries stand in the order of their tickets.
    return own != entries.end()
           && std::any_of (own + 1, entries.end(),
                           [&own] (const Entry& newer)
                           { return newer.renderer == own->renderer && newer.layer == own->layer; });
}

void MVPatchLoadTracker::beginFade (std::int64_t ticket, bool inPlace)
{
    const std::lock_guard guard (lock);

    if (const auto found = find (ticket); found != entries.end())
    {
        found->fading = true;
        found->inPlace = inPlace;
    }
}

void MVPatchLoadTracker::finish (std::int64_t ticket, int result, const std::string& message)
{
    Entry ended;
    {
        const std::lock_guard guard (lock);
        const auto found = find (ticket);
        if (found == entries.end())
            return;

        ended = std::exchange (*found, Entry { ticket, noRenderer, 0, nullptr, nullptr, nullptr, true, true });
        if (result != resultPosted)
            error = result == resultDone ? std::string() : message;
    }

    if (ended.completion != nullptr)
        ended.completion (ended.contextA, ended.contextB, result, message.empty() ? nullptr : message.c_str());

    // Only now, so that whoever sees nothing pending also sees what the completion did.
    cancel (ticket);
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
    return static_cast<int> (
        std::count_if (entries.begin(), entries.end(), [] (const Entry& e) { return ! e.fading; }));
}

std::string MVPatchLoadTracker::lastError() const
{
    const std::lock_guard guard (lock);
    return error;
}

std::vector<MVPatchLoadTracker::Entry>::iterator MVPatchLoadTracker::find (std::int64_t ticket)
{
    return std::find_if (entries.begin(), entries.end(), [ticket] (const Entry& e) { return e.ticket == ticket; });
}

} // namespace morvanelab
