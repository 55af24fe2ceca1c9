// SPDX-License-Identifier: GPL-3.0-or-later
#include "SoundPicture.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace morvanelab
{

namespace
{

/** Interleaved stereo floats from stdin, as `sordelin render --raw` writes them. Raises std::runtime_error where
    there are none, or one is not finite. */
std::array<std::vector<float>, 2> readSamples()
{
    std::array<std::vector<float>, 2> channels;
    for (std::array<float, 2> frame {}; std::fread (frame.data(), sizeof (frame), 1, stdin) == 1;)
        for (std::size_t side = 0; side < 2; ++side)
        {
            if (! std::isfinite (frame[side]))
                throw std::runtime_error ("the sound is not finite");
            channels[side].push_back (frame[side]);
        }

    if (channels[0].empty())
        throw std::runtime_error ("there is no sound");
    return channels;
}

} // namespace

} // namespace morvanelab

int main (int argc, char** argv)
{
    const double rate = argc == 3 ? std::atof (argv[1]) : 0.0;
    if (rate <= 0.0)
    {
        std::fputs ("Usage: sordelin-picture RATE OUT.png <samples\n", stderr);
        return 1;
    }

    try
    {
        morvanelab::SoundPicture (morvanelab::readSamples(), rate).write (argv[2]);
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf (stderr, "sordelin-picture: %s\n", error.what());
        return 2;
    }
}
