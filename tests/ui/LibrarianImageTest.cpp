// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVLibrarianImage.h"

#include <gtest/gtest.h>

#include <vector>

namespace morvanelab
{

namespace
{

using Bytes = std::vector<std::uint8_t>;

Bytes encoded (const juce::Image& image, bool png)
{
    juce::MemoryOutputStream stream;
    if (png)
        juce::PNGImageFormat().writeImageToStream (image, stream);
    else
        juce::JPEGImageFormat().writeImageToStream (image, stream);
    const auto* const first = static_cast<const std::uint8_t*> (stream.getData());
    return { first, first + stream.getDataSize() };
}

juce::Image noise (juce::Image::PixelFormat format, int width, int height)
{
    juce::Image image (format, width, height, true);
    juce::Random random (1);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixelAt (x, y, juce::Colour (static_cast<juce::uint32> (random.nextInt())));
    return image;
}

TEST (LibrarianImage, knowsTheSizeBeforeItDecodes)
{
    for (const bool png : { true, false })
    {
        const auto bytes = encoded (noise (juce::Image::RGB, 70, 30), png);
        EXPECT_EQ (encodedImageSize (bytes), juce::Point<int> (70, 30));
        EXPECT_EQ (decodeImage (bytes).getBounds(), (juce::Rectangle<int> { 70, 30 }));
        // Any cut of it, and any byte of its head turned round, is read within its bytes.
        for (std::size_t cut = 0; cut < std::min<std::size_t> (bytes.size(), 700); ++cut)
        {
            encodedImageSize (Bytes (bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t> (cut)));
            auto bent = bytes;
            bent[cut] = static_cast<std::uint8_t> (~bent[cut]);
            encodedImageSize (bent);
        }
    }
}

TEST (LibrarianImage, refusesPicturesThatWouldFillTheMemory)
{
    // A head of 60000 by 60000 pixels: 14 GB if it were believed.
    auto png = encoded (noise (juce::Image::RGB, 8, 8), true);
    png[18] = png[22] = 0xEA;
    png[19] = png[23] = 0x60;
    EXPECT_EQ (encodedImageSize (png), juce::Point<int> (60000, 60000));
    EXPECT_FALSE (decodeImage (png).isValid());

    EXPECT_FALSE (decodeImage (Bytes { 'G', 'I', 'F', '8', '9', 'a', 0, 0, 0, 0, 0, 0 }).isValid());
    EXPECT_FALSE (decodeImage ({}).isValid());
    EXPECT_FALSE (imageOf (MVMetaData()).isValid());
}

TEST (LibrarianImage, isStoredWithinItsBounds)
{
    const struct
    {
        juce::Image::PixelFormat format;
        int width;
        int height;
        juce::Rectangle<int> most;
    } cases[] {
        { juce::Image::RGB, 300, 200, { 300, 200 } },
        { juce::Image::RGB, 2000, 100, { 512, 26 } },
        { juce::Image::ARGB, 900, 900, { 512, 512 } }, // noise with alpha does not compress: it gets smaller still
        { juce::Image::RGB, 1, 3000, { 1, 512 } },
    };
    for (const auto& each : cases)
    {
        MVMetaData metadata;
        ASSERT_TRUE (setImageOf (metadata, noise (each.format, each.width, each.height)));
        EXPECT_LE (static_cast<std::size_t> (metadata.getImage()->getPayloadSize()), largestStoredImage);
        const auto stored = imageOf (metadata);
        ASSERT_TRUE (stored.isValid());
        EXPECT_TRUE (each.most.contains (stored.getBounds())) << stored.getWidth() << "x" << stored.getHeight();
        EXPECT_EQ (stored.hasAlphaChannel(), each.format == juce::Image::ARGB);
    }
}

} // namespace

} // namespace morvanelab
