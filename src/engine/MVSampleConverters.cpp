// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/MVSampleConverters.h"

#include "engine/MVRenderStreamFormat.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace morvanelab
{

namespace
{

template <typename Integer>
constexpr double fullScale = static_cast<double> (std::numeric_limits<Integer>::max());

template <typename Integer>
Integer toInteger (double x)
{
    const double scaled = std::round (x * fullScale<Integer>);

    if (scaled >= fullScale<Integer>)
        return std::numeric_limits<Integer>::max();
    if (scaled <= static_cast<double> (std::numeric_limits<Integer>::min()))
        return std::numeric_limits<Integer>::min();
    return std::isnan (scaled) ? Integer {} : static_cast<Integer> (scaled);
}

template <typename Integer>
void readIntegers (double* dest, const void* source, int frames, int stride)
{
    const auto* from = static_cast<const Integer*> (source);
    for (int i = 0; i < frames; ++i, from += stride)
        dest[i] = static_cast<double> (*from) / fullScale<Integer>;
}

template <typename Integer>
void writeIntegers (void* dest, const double* source, int frames, int stride)
{
    auto* to = static_cast<Integer*> (dest);
    for (int i = 0; i < frames; ++i, to += stride)
        *to = toInteger<Integer> (source[i]);
}

void writeUnsigned8 (void* dest, const double* source, int frames, int stride)
{
    auto* to = static_cast<std::uint8_t*> (dest);
    for (int i = 0; i < frames; ++i, to += stride)
        *to = static_cast<std::uint8_t> (toInteger<std::int8_t> (source[i]) + 128);
}

void readFloats (double* dest, const void* source, int frames, int stride)
{
    const auto* from = static_cast<const float*> (source);
    for (int i = 0; i < frames; ++i, from += stride)
        dest[i] = static_cast<double> (*from);
}

void writeFloats (void* dest, const double* source, int frames, int stride)
{
    auto* to = static_cast<float*> (dest);
    for (int i = 0; i < frames; ++i, to += stride)
        *to = static_cast<float> (source[i]);
}

struct SampleFormat
{
    int type;
    int bytes;
    MVSampleReader read;
    MVSampleWriter write;
};

constexpr SampleFormat sampleFormats[] {
    { sampleUnsigned8, 1, nullptr, writeUnsigned8 },
    { sampleSigned8, 1, readIntegers<std::int8_t>, writeIntegers<std::int8_t> },
    { sampleInt16, 2, readIntegers<std::int16_t>, writeIntegers<std::int16_t> },
    { sampleInt32, 4, readIntegers<std::int32_t>, writeIntegers<std::int32_t> },
    { sampleFloat32, 4, readFloats, writeFloats },
};

const SampleFormat* findFormat (int type)
{
    for (const SampleFormat& format : sampleFormats)
        if (format.type == type)
            return &format;
    return nullptr;
}

} // namespace

MVSampleReader sampleReaderFor (int sampleType)
{
    const SampleFormat* const found = findFormat (sampleType);
    return found != nullptr ? found->read : nullptr;
}

MVSampleWriter sampleWriterFor (int sampleType)
{
    const SampleFormat* const found = findFormat (sampleType);
    return found != nullptr ? found->write : nullptr;
}

int bytesPerSample (int sampleType)
{
    const SampleFormat* const found = findFormat (sampleType);
    return found != nullptr ? found->bytes : 0;
}

} // namespace morvanelab
