// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVRawPcmMultitrackMgr.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace morvanelab
{

bool MVRawPcmMultitrackMgr::allocate (int count, int newLength)
{
    const bool fits = count >= 0 && newLength >= 0 && count <= maxTracks
                      && static_cast<std::int64_t> (count) * newLength <= maxTotalSamples;
    trackCount = fits ? count : 0;
    length = fits ? newLength : 0;
    std::vector<double> (static_cast<std::size_t> (trackCount) * static_cast<std::size_t> (length)).swap (samples);
    return fits;
}

void MVRawPcmMultitrackMgr::clear() { std::fill (samples.begin(), samples.end(), 0.0); }

const double* MVRawPcmMultitrackMgr::track (int index) const
{
    return index >= 0 && index < trackCount
               ? samples.data() + static_cast<std::size_t> (index) * static_cast<std::size_t> (length)
               : nullptr;
}

double* MVRawPcmMultitrackMgr::track (int index) { return const_cast<double*> (std::as_const (*this).track (index)); }

int MVRawPcmMultitrackMgr::room (int index, int start, int frames) const
{
    if (index < 0 || index >= trackCount || start < 0 || start >= length)
        return 0;
    return std::clamp (frames, 0, length - start);
}

int MVRawPcmMultitrackMgr::write (int index, int start, const double* source, int frames)
{
    const int count = room (index, start, frames);
    if (count > 0)
        std::copy_n (source, count, track (index) + start);
    return count;
}

int MVRawPcmMultitrackMgr::read (int index, int start, double* out, int frames) const
{
    const int count = room (index, start, frames);
    if (count > 0)
        std::copy_n (track (index) + start, count, out);
    return count;
}

} // namespace morvanelab
