// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVDataAnimator.h"

namespace morvanelab
{

/** Base of the displays that look at one stretch of samples a picture: processData takes one after each painting and
    drops what comes in between, which limits the work to one transform a picture. */
class MVRepaintPacedDisplay : public MVDataAnimator
{
public:
    /** True from the construction and from each painting on, until a stretch of samples has been taken. */
    bool wantsData() const { return needsData; }

protected:
    MVRepaintPacedDisplay (int interval, int newestSamples) : MVDataAnimator (interval, Delivery::newest, newestSamples)
    {
    }

    std::atomic<bool> needsData { true };
};

} // namespace morvanelab
