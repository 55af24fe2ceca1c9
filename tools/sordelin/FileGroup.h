// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "OutputFile.h"

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace morvanelab
{

/** Files that appear in a folder together: all are first written to a folder inside, then moved to their places. */
class FileGroup
{
public:
    explicit FileGroup (std::string folderPath) : folder (std::move (folderPath)) {}

    /** The name is a plain one, without separators, and no other file's. */
    void add (const std::string& name, Bytes bytes);
    void add (const std::string& name, const std::string& text);

    /** Writes them. The folder is made if it is missing, its parent has to be there. Throws badData if one of the files
       is there and overwrite is off, or if anything cannot be written: what was not there before is then taken away
        again. */
    void write (bool overwrite) const;

private:
    void refuseWhatIsThere (bool overwrite) const;
    void moveIn (const std::filesystem::path& stage) const;

    std::filesystem::path folder;
    std::vector<std::pair<std::string, Bytes>> files;
};

} // namespace morvanelab
