// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/MVMidiMapList.h"

namespace morvanelab
{

MVMidiMapList::Records MVMidiMapList::copy() const
{
    const Records* const published = get();
    return published != nullptr ? *published : Records {};
}

void MVMidiMapList::publish (Records&& fresh, MVMidiMapReclaimer& reclaimer)
{
    std::unique_ptr<const Records> list;
    if (! fresh.empty())
        list = std::make_unique<const Records> (std::move (fresh));

    if (const Records* const replaced = records.exchange (list.release(), std::memory_order_seq_cst);
        replaced != nullptr)
        reclaimer.retire (replaced);
}

void MVMidiMapReclaimer::retire (const MVMidiMapList::Records* replaced)
{
    retired.emplace_back (replaced);

    // A reader that counts itself in after this test finds the new list.
    if (readers.load (std::memory_order_seq_cst) == 0)
        retired.clear();
}

} // namespace morvanelab
