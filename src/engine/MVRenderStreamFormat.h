// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace morvanelab
{

/** How a side of the stream lays its channels out. */
enum MVStreamLayout_t : int
{
    layoutInterleaved = 1,   ///< one buffer, the channel count apart from frame to frame
    layoutChannelBuffers = 2 ///< one buffer a channel
};

/** Sample encodings of the host side. */
enum MVSampleType_t : int
{
    sampleUnsigned8 = 1, ///< 8 bits around 128; output only
    sampleSigned8 = 2,
    sampleInt16 = 4,
    sampleInt32 = 5,
    sampleFloat32 = 6
};

/** What a host announces before it streams. A plain record. */
struct MVRenderStreamFormat
{
    double engineSampleRate = 44100.0; ///< Hz, the rate that patches run at
    double streamSampleRate = 44100.0; ///< Hz, the host's rate
    int maxBlock = 256;                ///< frames of the largest block announced; larger ones still work
    int numIn = 2;                     ///< 0 to 8; the first four reach the patches
    int inputLayout = layoutChannelBuffers;
    int inputSampleType = sampleFloat32;
    int numOut = 2; ///< 0 to 8
    int outputLayout = layoutChannelBuffers;
    int outputSampleType = sampleFloat32;
};

} // namespace morvanelab
