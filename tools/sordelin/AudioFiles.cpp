// SPDX-License-Identifier: GPL-3.0-or-later
#include "AudioFiles.h"

#include "CommandFailure.h"

#include <juce_audio_formats/juce_audio_formats.h>
#include <juce_core/juce_core.h>

#include <bit>
#include <cstring>
#include <memory>

namespace morvanelab
{

StereoAudio readWavFile (const std::string& path)
{
    const Bytes bytes = readWholeFile (path);
    juce::WavAudioFormat format;
    const std::unique_ptr<juce::AudioFormatReader> reader (
        format.createReaderFor (new juce::MemoryInputStream (bytes.data(), bytes.size(), false), true));

    // A header may claim more frames than the file can hold; every frame takes at least a byte.
    if (reader == nullptr || reader->numChannels < 1 || reader->lengthInSamples < 0
        || reader->lengthInSamples > static_cast<juce::int64> (bytes.size()))
        throw badData (path + ": not a readable WAV file");

    const int frames = static_cast<int> (reader->lengthInSamples);
    juce::AudioBuffer<float> buffer (2, frames);
    if (! reader->read (&buffer, 0, frames, 0, true, reader->numChannels > 1))
        throw badData ("File I/O failure  " + path);
    if (reader->numChannels == 1)
        buffer.copyFrom (1, 0, buffer, 0, 0, frames);

    StereoAudio audio;
    for (int channel = 0; channel < 2; ++channel)
        audio.channels[static_cast<std::size_t> (channel)].assign (buffer.getReadPointer (channel),
                                                                   buffer.getReadPointer (channel) + frames);
    return audio;
}

Bytes encodeWav (const StereoAudio& audio, double sampleRate)
{
    juce::MemoryBlock block;
    juce::WavAudioFormat format;
    {
        const std::unique_ptr<juce::AudioFormatWriter> writer (
            format.createWriterFor (new juce::MemoryOutputStream (block, false), sampleRate, 2, 32, {}, 0));
        const float* const channels[] { audio.channels[0].data(), audio.channels[1].data() };

        if (writer == nullptr || ! writer->writeFromFloatArrays (channels, 2, static_cast<int> (audio.frames())))
            throw badData ("Could not write to file  (this rate and length do not fit a WAV file)");
    }

    Bytes bytes (block.getSize());
    std::memcpy (bytes.data(), block.getData(), block.getSize());
    return bytes;
}

Bytes encodeRaw (const StereoAudio& audio)
{
    Bytes bytes (audio.frames() * 2 * sizeof (float));
    std::byte* cursor = bytes.data();

    for (std::size_t frame = 0; frame < audio.frames(); ++frame)
        for (const auto& channel : audio.channels)
        {
            const juce::uint32 word = juce::ByteOrder::swapIfBigEndian (std::bit_cast<juce::uint32> (channel[frame]));
            std::memcpy (cursor, &word, sizeof (word));
            cursor += sizeof (word);
        }

    return bytes;
}

} // namespace morvanelab
