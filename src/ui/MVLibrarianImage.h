// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVMetaData.h"

#include <juce_graphics/juce_graphics.h>

#include <cstdint>
#include <optional>
#include <span>

namespace morvanelab
{

/** Pictures in metadata: a PNG or JPEG file as the payload of the image chunk. Message thread. */

/** Pictures larger than this, in bytes or in pixels a side, are not decoded: their memory is bounded. */
constexpr std::size_t largestEncodedImage = 16U << 20U;
constexpr int largestDecodedSide = 4096;
/** What is stored fits in a square of this side and into so many bytes. */
constexpr int largestStoredSide = 512;
constexpr std::size_t largestStoredImage = 256U << 10U;

/** Width and height that a PNG or JPEG file says it has; nothing for any other bytes. */
std::optional<juce::Point<int>> encodedImageSize (std::span<const std::uint8_t> bytes);

/** A PNG or JPEG picture; an invalid image for anything else, and beyond the bounds above. */
juce::Image decodeImage (std::span<const std::uint8_t> bytes);

/** The picture of metadata; invalid if there is none that can be decoded. */
juce::Image imageOf (const MVMetaData& metadata);

/** Stores a picture, scaled down and encoded anew within the bounds above; an invalid one takes the picture away.
   False, with the metadata as it was, if it cannot be encoded that small. */
bool setImageOf (MVMetaData& metadata, const juce::Image& image);

} // namespace morvanelab
