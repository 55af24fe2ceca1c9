// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "control/MVControlValue.h"

namespace morvanelab
{

/** Follows a control value block by block, so that a generator can ramp from the last block's value to this
    one's. A track starts at 0: the first block ramps from there. Audio thread only, except link. */
struct PortControlTrack
{
    const MVControlValue* control = nullptr;
    double current = 0.0;
    double previous = 0.0;

    /** Called once at the start of each block. */
    void advance()
    {
        if (control != nullptr)
        {
            previous = current;
            current = control->getValue();
        }
    }

    /** Value at the start of the block; without a control the factor that changes nothing. */
    double start (double withoutControl = 1.0) const { return control != nullptr ? previous : withoutControl; }
    /** Value at the end of the block. */
    double end (double withoutControl = 1.0) const { return control != nullptr ? current : withoutControl; }

    void reset (double value = 0.0) { previous = current = value; }
};

} // namespace morvanelab
