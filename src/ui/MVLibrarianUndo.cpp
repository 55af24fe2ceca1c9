// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVLibrarianUndo.h"

#include <algorithm>
#include <utility>

namespace morvanelab
{

MVLibrarianStep MVLibrarianStep::reversed() const
{
    MVLibrarianStep result = *this;
    std::reverse (result.bankEdits.begin(), result.bankEdits.end());
    for (auto& bank : result.bankEdits)
        for (auto& edit : bank.compartments)
            std::swap (edit.before, edit.after);
    if (result.listEdit)
        std::swap (result.listEdit->from, result.listEdit->to);
    return result;
}

std::size_t MVLibrarianStep::byteCount() const
{
    std::size_t count = 0;
    for (const auto& bank : bankEdits)
        for (const auto& edit : bank.compartments)
            count += edit.before.size() + edit.after.size();
    return count;
}

void MVLibrarianUndo::add (MVLibrarianStep step)
{
    steps.resize (done);
    steps.push_back (std::move (step));

    std::size_t bytes = 0;
    std::size_t kept = 0;
    while (kept < std::min (steps.size(), maxSteps))
    {
        bytes += steps[steps.size() - 1 - kept].byteCount();
        if (bytes > maxBytes && kept > 0)
            break;
        ++kept;
    }
    steps.erase (steps.begin(), steps.end() - static_cast<std::ptrdiff_t> (kept));
    done = steps.size();
}

void MVLibrarianUndo::clear()
{
    steps.clear();
    done = 0;
}

} // namespace morvanelab
