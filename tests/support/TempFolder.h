// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace morvanelab::test
{

/** A new empty folder that is removed, with all it holds, at the end of its life. */
class TempFolder
{
public:
    TempFolder();
    ~TempFolder();
    TempFolder (const TempFolder&) = delete;
    TempFolder& operator= (const TempFolder&) = delete;

    const std::filesystem::path& path() const { return folder; }
    /** The path of a file in the folder, as text. */
    std::string file (const std::string& name) const { return (folder / name).string(); }

private:
    std::filesystem::path folder;
};

/** A whole file; throws if it cannot be read. */
std::vector<std::uint8_t> readFile (const std::filesystem::path& path);
/** Replaces a file; throws if it cannot be written. */
void writeFile (const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes);

} // namespace morvanelab::test
