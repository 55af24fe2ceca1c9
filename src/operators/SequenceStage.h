// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVMath.h"

namespace morvanelab
{

/** Which of its 16 stages a sequencer stands at, and where it goes next. */
class SequenceStage
{
public:
    static constexpr int count = 16;

    /** One step. The ends are truncated and what is left of them beyond 16 counts, with its sign. From start to end
        the stages run upwards, or downwards if end is the smaller; past the end start follows. Equal ends hold. */
    void step (double start, double end)
    {
        const int first = truncToInt (start) % count;
        const int last = truncToInt (end) % count;

        if (first < last)
            position = position + 1 > last ? first : position + 1;
        else if (last < first)
            position = position - 1 < last ? first : position - 1;
    }

    /** The stage, 0 to 15. Negative ends run through the stages from the far end: -1 is stage 15. */
    int index() const { return position & (count - 1); }

    void reset() { position = 0; }

private:
    int position = 0; ///< -15 to 15
};

} // namespace morvanelab
