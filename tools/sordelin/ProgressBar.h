// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

namespace morvanelab
{

/** A one-line progress bar on stderr; silent when stderr is no terminal. */
class ProgressBar
{
public:
    ProgressBar (std::string label, std::int64_t total);
    /** Wipes the line. */
    ~ProgressBar();

    ProgressBar (const ProgressBar&) = delete;
    ProgressBar& operator= (const ProgressBar&) = delete;

    void update (std::int64_t done);

private:
    std::string label;
    std::int64_t total;
    int shownPercent = -1;
    bool visible;
};

} // namespace morvanelab
