// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVObject.h"

#include <vector>

namespace morvanelab
{

/** Holds raw tracks of one common length, in doubles. Memory is taken by allocate only; reads and writes beyond a track
    are cut to it. No lock of its own. */
class MVRawPcmMultitrackMgr : public MVObject
{
public:
    static constexpr int maxTracks = 64;
    /** Bound over all tracks: 512 MiB. */
    static constexpr int maxTotalSamples = 1 << 26;

    /** Makes room for count silent tracks and drops what was held. False, holding nothing, if a number is negative or
       the bounds are exceeded. */
    virtual bool allocate (int count, int samples);
    /** Silences every track. */
    virtual void clear();
    void reset() override { clear(); }

    int getTrackCount() const { return trackCount; }
    int getLength() const { return length; }
    /** getLength() samples, or null if there is no such track. */
    virtual double* track (int index);
    virtual const double* track (int index) const;
    /** Copies into or out of a track from a sample on; returns the samples copied. */
    virtual int write (int index, int start, const double* source, int frames);
    virtual int read (int index, int start, double* out, int frames) const;

    MVObject* clone() const override { return new MVRawPcmMultitrackMgr (*this); }
    const char* className() const override { return "MVRawPcmMultitrackMgr"; }

private:
    int room (int index, int start, int frames) const;

    int trackCount = 0;
    int length = 0;
    std::vector<double> samples;
};

} // namespace morvanelab
