// SPDX-License-Identifier: GPL-3.0-or-later
#include "host/WaveFile.h"

#include <bit>
#include <cstdint>
#include <fstream>
#include <stdexcept>

namespace morvanelab::host
{

namespace
{

constexpr std::uint32_t channelCount = 2;
constexpr std::uint32_t bytesPerFrame = channelCount * sizeof (float);
constexpr std::uint32_t headerBytes = 36; ///< between the size field and the samples
constexpr std::uint16_t floatFormat = 3;

class LittleEndianWriter
{
public:
    void text (const char* four) { bytes.append (four, 4); }
    void number16 (std::uint32_t value) { number (value, 2); }
    void number32 (std::uint32_t value) { number (value, 4); }
    const std::string& get() const { return bytes; }

private:
    void number (std::uint32_t value, int count)
    {
        for (int i = 0; i < count; ++i)
            bytes.push_back (static_cast<char> ((value >> (8 * i)) & 0xFFU));
    }

    std::string bytes;
};

} // namespace

void writeWave (const std::string& path, const std::vector<float>& left, const std::vector<float>& right, int rate)
{
    const auto dataBytes = static_cast<std::uint32_t> (left.size()) * bytesPerFrame;
    const auto frameRate = static_cast<std::uint32_t> (rate);
    LittleEndianWriter writer;
    writer.text ("RIFF");
    writer.number32 (headerBytes + dataBytes);
    writer.text ("WAVE");
    writer.text ("fmt ");
    writer.number32 (16);
    writer.number16 (floatFormat);
    writer.number16 (channelCount);
    writer.number32 (frameRate);
    writer.number32 (frameRate * bytesPerFrame);
    writer.number16 (bytesPerFrame);
    writer.number16 (8 * sizeof (float));
    writer.text ("data");
    writer.number32 (dataBytes);
    for (std::size_t i = 0; i < left.size(); ++i)
    {
        writer.number32 (std::bit_cast<std::uint32_t> (left[i]));
        writer.number32 (std::bit_cast<std::uint32_t> (right[i]));
    }

    std::ofstream file (path, std::ios::binary);
    file.write (writer.get().data(), static_cast<std::streamsize> (writer.get().size()));
    if (! file.flush())
        throw std::runtime_error ("cannot write " + path);
}

} // namespace morvanelab::host
