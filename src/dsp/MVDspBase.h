// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVObject.h"

namespace morvanelab
{

/** Root of the signal-processing classes: plain objects that one operator owns and drives in blocks of doubles.

    Threads: init and reset while the owner is inactive or between two blocks; block operations on the audio
    thread. Nothing locks and, after init, nothing allocates. Setters may be called between two blocks. */
class MVDspBase : public MVObject
{
public:
    /** Prepares for a sample rate in Hz and sets the active flag. */
    virtual void init (bool on, double /*sampleRate*/) { setActive (on); }
    /** Clears run-time state; what setters gave stays. */
    void reset() override {}

protected:
    MVDspBase() = default;
};

/** Smallest magnitude that counts as a signal or a setting; what is nearer to 0 is replaced. */
constexpr double dspNearZero = 1.0000000036274937e-15;
/** The value 0.001 rounded to single precision, which replaces unusable values in several classes. */
constexpr double dspSmallValue = 0.0010000000474974513;
/** Pi and twice pi rounded to single precision. Bit-exact: tables and filters are computed with these. */
constexpr double dspPi = 3.1415927410125732;
constexpr double dspTwoPi = 6.283185482025146;

} // namespace morvanelab
