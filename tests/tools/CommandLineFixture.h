// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/wait.h>

namespace morvanelab::test
{

/** What a program left behind. */
struct Outcome
{
    int status;
    std::string out;
    std::string err;
};

inline std::string textOf (const std::filesystem::path& path)
{
    const auto bytes = readFile (path);
    return { bytes.begin(), bytes.end() };
}

/** Runs the command line program in a folder of its own. */
class CommandLine : public ::testing::Test
{
protected:
    Outcome run (const std::string& arguments)
    {
        const std::string command = "cd '" + folder.path().string() + "' && SORDELIN_HOME='" + folder.file ("home")
                                    + "' '" SORDELIN_PROGRAM "' " + arguments + " > out.txt 2> err.txt < /dev/null";
        const int status = std::system (command.c_str());
        return { WIFEXITED (status) ? WEXITSTATUS (status) : -1, textOf (folder.file ("out.txt")),
                 textOf (folder.file ("err.txt")) };
    }

    void write (const std::string& name, const std::string& text)
    {
        writeFile (folder.file (name), { text.begin(), text.end() });
    }

    /** Writes the bytes of a bank file, with the checksum that belongs to them. */
    void writeContainer (const std::string& name, std::vector<std::uint8_t> bytes)
    {
        std::uint32_t checksum = 0;
        for (std::size_t i = 4; i < bytes.size(); ++i)
        {
            const auto place = static_cast<std::uint32_t> ((i - 4) % 128);
            const auto byte = static_cast<std::uint32_t> (static_cast<std::int8_t> (bytes[i]));
            checksum = (checksum + (byte << (place & 7U)) + place) % 134217727U;
        }
        std::memcpy (bytes.data(), &checksum, sizeof checksum);
        writeFile (folder.file (name), bytes);
    }

    bool exists (const std::string& name) { return std::filesystem::exists (folder.file (name)); }

    /** Builds a patch from text, into name.mv_onpatch. */
    void build (const std::string& name, const std::string& text)
    {
        write (name + ".json", text);
        const Outcome outcome = run ("patch build " + name + ".json -o " + name + ".mv_onpatch");
        ASSERT_EQ (outcome.status, 0) << outcome.err;
    }

    /** Renders to raw floats: left and right in turn. */
    std::vector<float> render (const std::string& arguments)
    {
        const Outcome outcome = run ("render --raw -o sound.raw " + arguments);
        EXPECT_EQ (outcome.status, 0) << outcome.err;
        const auto bytes = readFile (folder.file ("sound.raw"));
        std::vector<float> samples (bytes.size() / 4);
        if (! samples.empty())
            std::memcpy (samples.data(), bytes.data(), samples.size() * 4);
        return samples;
    }

    TempFolder folder;
};

} // namespace morvanelab::test
