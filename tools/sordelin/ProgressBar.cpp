// SPDX-License-Identifier: GPL-3.0-or-later
#include "ProgressBar.h"

#include <cstdio>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace morvanelab
{

namespace
{

bool stderrIsTerminal()
{
#if defined(_WIN32)
    return _isatty (_fileno (stderr)) != 0;
#else
    return isatty (fileno (stderr)) != 0;
#endif
}

} // namespace

ProgressBar::ProgressBar (std::string labelToShow, std::int64_t totalSteps)
    : label (std::move (labelToShow)), total (totalSteps), visible (stderrIsTerminal())
{
}

ProgressBar::~ProgressBar()
{
    if (visible && shownPercent >= 0)
        std::fputs ("\r\033[K", stderr);
}

void ProgressBar::update (std::int64_t done)
{
    constexpr int width = 40;
    const int percent = total > 0 ? static_cast<int> (done * 100 / total) : 100;

    if (! visible || percent == shownPercent)
        return;

    shownPercent = percent;
    const int filled = percent * width / 100;
    std::fprintf (stderr, "\r%s [%.*s%.*s] %3d%%", label.c_str(), filled, "########################################",
                  width - filled, "........................................", percent);
    std::fflush (stderr);
}

} // namespace morvanelab
