// SPDX-License-Identifier: GPL-3.0-or-later
#include "OutputFile.h"

#include "CommandFailure.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace morvanelab
{

namespace fs = std::filesystem;

Bytes readWholeFile (const std::string& path)
{
    std::error_code error;
    if (! fs::exists (path, error))
        throw badData ("File does not exist.  " + path);
    if (fs::is_directory (path, error))
        throw badData ("File read access not allowed.  " + path);

    std::ifstream file (path, std::ios::binary);
    if (! file)
        throw badData ("File read access not allowed.  " + path);

    const std::string text { std::istreambuf_iterator<char> (file), std::istreambuf_iterator<char>() };
    if (file.bad())
        throw badData ("File read access not allowed.  " + path);

    Bytes bytes (text.size());
    if (! text.empty())
        std::memcpy (bytes.data(), text.data(), text.size());
    return bytes;
}

namespace
{

void writeToStdout (const Bytes& bytes)
{
    if (std::fwrite (bytes.data(), 1, bytes.size(), stdout) != bytes.size() || std::fflush (stdout) != 0)
        throw badData ("Could not write to file  (standard output)");
}

/** A sibling that no other process of ours writes to at the same time. */
fs::path temporarySibling (const fs::path& target)
{
    std::random_device source;
    return target.string() + ".tmp" + std::to_string (source());
}

} // namespace

void writeWholeFile (const std::string& path, const Bytes& bytes)
{
    if (path == "-")
        return writeToStdout (bytes);

    std::error_code error;
    if (fs::is_directory (path, error))
        throw badData ("Could not create file  " + path);

    const fs::path temporary = temporarySibling (path);
    std::ofstream file (temporary, std::ios::binary | std::ios::trunc);
    if (! file)
        throw badData ("Could not create file  " + path);

    file.write (reinterpret_cast<const char*> (bytes.data()), static_cast<std::streamsize> (bytes.size()));
    file.close();

    if (! file.fail())
        fs::rename (temporary, path, error);

    if (file.fail() || error)
    {
        fs::remove (temporary, error);
        throw badData ("Could not write to file  " + path);
    }
}

void writeWholeFile (const std::string& path, const std::string& text)
{
    Bytes bytes (text.size());
    if (! text.empty())
        std::memcpy (bytes.data(), text.data(), text.size());
    writeWholeFile (path, bytes);
}

} // namespace morvanelab
