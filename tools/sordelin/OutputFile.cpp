// SPDX-License-Identifier: GPL-3.0-or-later
#include "OutputFile.h"

#include "CommandFailure.h"

#include "banks/MVFileSwap.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

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

/** For what is no file of bytes, such as a device or a pipe: renaming a file over it would take it away. */
void writeInPlace (const std::string& path, const Bytes& bytes)
{
    std::ofstream file (path, std::ios::binary);
    file.write (reinterpret_cast<const char*> (bytes.data()), static_cast<std::streamsize> (bytes.size()));
    file.close();
    if (file.fail())
        throw badData ("Could not write to file  " + path);
}

} // namespace

juce::File fileAt (const std::string& path)
{
    // Made whole here, since JUCE takes a leading tilde for somebody's home.
    const std::string whole = fs::absolute (path).lexically_normal().string();
    if (! juce::CharPointer_UTF8::isValidString (whole.data(), static_cast<int> (whole.size())))
        throw badData ("File permission problem  (the path is no UTF-8)");
    return juce::File (juce::String::fromUTF8 (whole.data(), static_cast<int> (whole.size())));
}

void writeWholeFile (const std::string& path, const Bytes& bytes)
{
    if (path == "-")
        return writeToStdout (bytes);

    std::error_code error;
    const fs::file_status status = fs::status (path, error);
    if (fs::is_directory (status))
        throw badData ("Could not create file  " + path);
    if (fs::exists (status) && ! fs::is_regular_file (status))
        return writeInPlace (path, bytes);

    // A link stays; what it leads to is replaced.
    const fs::path target = fs::is_symlink (path, error) ? fs::canonical (path, error) : fs::absolute (path);
    if (! fs::is_directory (target.parent_path(), error))
        throw badData ("Could not create file  " + path);
    if (! replaceFileContents (fileAt (target.string()), bytes.data(), bytes.size()))
        throw badData ((fs::exists (status) ? "Could not write to file  " : "Could not create file  ") + path);
}

void writeWholeFile (const std::string& path, const std::string& text)
{
    Bytes bytes (text.size());
    if (! text.empty())
        std::memcpy (bytes.data(), text.data(), text.size());
    writeWholeFile (path, bytes);
}

} // namespace morvanelab
