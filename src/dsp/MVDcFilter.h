// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVDspBase.h"

namespace morvanelab
{

/** One-pole high-pass that removes a constant offset. One channel, in place. */
class MVDcFilter : public MVDspBase
{
public:
    void reset() override;
    /** y = (x + y1 - x1) * pole for each sample. A filter that has left the finite numbers starts anew with the
        next block. */
    virtual void process (double* buffer, int frames);
    /** Position of the pole, below 1.0; the nearer to 1.0 the lower the corner. */
    virtual void setPole (double value) { pole = value; }

private:
    double y1 = 0.0;
    double x1 = 0.0;
    double pole = 0.9950000047683716;
};

} // namespace morvanelab
