// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVLibrarianImage.h"

#include "foundation/MVMath.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace morvanelab
{

namespace
{

constexpr std::uint32_t imageChunk = fourCC ("ilog");
constexpr std::array<std::uint8_t, 8> pngSignature { 0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n' };

using Bytes = std::span<const std::uint8_t>;

int bigEndian (Bytes bytes, std::size_t position, int count)
{
    std::uint32_t value = 0;
    for (int i = 0; i < count; ++i)
        value = (value << 8U) | bytes[position + static_cast<std::size_t> (i)];
    return static_cast<int> (std::min<std::uint32_t> (value, INT32_MAX));
}

std::optional<juce::Point<int>> pngSize (Bytes bytes)
{
    constexpr std::size_t headerSize = 24;
    if (bytes.size() < headerSize || ! std::equal (pngSignature.begin(), pngSignature.end(), bytes.begin()))
        return std::nullopt;
    return juce::Point<int> { bigEndian (bytes, 16, 4), bigEndian (bytes, 20, 4) };
}

/** Walks the segments up to the start of frame (ITU T.81, annex B). */
std::optional<juce::Point<int>> jpegSize (Bytes bytes)
{
    if (bytes.size() < 4 || bytes[0] != 0xFF || bytes[1] != 0xD8)
        return std::nullopt;

    for (std::size_t at = 2; at + 9 < bytes.size() && bytes[at] == 0xFF;)
    {
        const auto marker = bytes[at + 1];
        if (marker == 0xFF)
        {
            ++at;
            continue;
        }
        const bool isFrame = marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (isFrame)
            return juce::Point<int> { bigEndian (bytes, at + 7, 2), bigEndian (bytes, at + 5, 2) };
        at += 2 + static_cast<std::size_t> (std::max (2, bigEndian (bytes, at + 2, 2)));
    }
    return std::nullopt;
}

juce::Image scaledInto (const juce::Image& image, int side)
{
    const int longer = std::max (image.getWidth(), image.getHeight());
    if (longer <= side)
        return image;
    const auto scaled = [&] (int length)
    { return std::max (1, static_cast<int> (std::lround (static_cast<double> (length) * side / longer))); };
    return image.rescaled (scaled (image.getWidth()), scaled (image.getHeight()),
                           juce::Graphics::highResamplingQuality);
}

juce::MemoryBlock encode (const juce::Image& image)
{
    juce::MemoryOutputStream stream;
    if (image.hasAlphaChannel())
    {
        juce::PNGImageFormat().writeImageToStream (image, stream);
    }
    else
    {
        juce::JPEGImageFormat format;
        format.setQuality (0.85F);
        format.writeImageToStream (image, stream);
    }
    return stream.getMemoryBlock();
}

} // namespace

std::optional<juce::Point<int>> encodedImageSize (Bytes bytes)
{
    const auto size = pngSize (bytes);
    return size ? size : jpegSize (bytes);
}

juce::Image decodeImage (Bytes bytes)
{
    const auto size = bytes.size() <= largestEncodedImage ? encodedImageSize (bytes) : std::nullopt;
    if (! size || size->x < 1 || size->y < 1 || size->x > largestDecodedSide || size->y > largestDecodedSide)
        return {};

    juce::MemoryInputStream stream (bytes.data(), bytes.size(), false);
    if (pngSize (bytes))
        return juce::PNGImageFormat().decodeImage (stream);
    return juce::JPEGImageFormat().decodeImage (stream);
}

juce::Image imageOf (const MVMetaData& metadata)
{
    const auto& chunk = metadata.getImage();
    if (! chunk || chunk->readablePayload() < 1)
        return {};
    return decodeImage ({ chunk->getPayload(), static_cast<std::size_t> (chunk->readablePayload()) });
}

bool setImageOf (MVMetaData& metadata, const juce::Image& image)
{
    MVSmartPtr<MVRiffPacker> chunk;
    if (image.isValid())
    {
        for (int side = largestStoredSide; side >= 64 && ! chunk; side /= 2)
        {
            const auto bytes = encode (scaledInto (image, side));
            if (! bytes.isEmpty() && bytes.getSize() <= largestStoredImage)
                chunk = makeSmart<MVRiffPacker> (imageChunk, bytes.getData(), static_cast<int> (bytes.getSize()));
        }
        if (! chunk)
            return false;
    }
    metadata.setImage (chunk);
    return true;
}

} // namespace morvanelab
