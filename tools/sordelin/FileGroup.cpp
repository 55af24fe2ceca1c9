// SPDX-License-Identifier: GPL-3.0-or-later
#include "FileGroup.h"

#include "CommandFailure.h"

#include <random>

namespace morvanelab
{

namespace fs = std::filesystem;

namespace
{

/** Something that is taken away again unless it is kept. */
class Removable
{
public:
    Removable() = default;
    explicit Removable (fs::path what) : path (std::move (what)) {}
    Removable (Removable&& other) noexcept : path (std::exchange (other.path, {})) {}
    Removable& operator= (Removable&& other) noexcept
    {
        std::swap (path, other.path);
        return *this;
    }
    ~Removable()
    {
        std::error_code error;
        if (! path.empty())
            fs::remove_all (path, error);
    }

    void keep() { path.clear(); }

private:
    fs::path path;
};

/** Also a link that leads nowhere is there. */
bool isThere (const fs::path& path)
{
    std::error_code error;
    return fs::exists (fs::symlink_status (path, error));
}

} // namespace

void FileGroup::add (const std::string& name, Bytes bytes) { files.emplace_back (name, std::move (bytes)); }

void FileGroup::add (const std::string& name, const std::string& text)
{
    const auto* const bytes = reinterpret_cast<const std::byte*> (text.data());
    files.emplace_back (name, Bytes (bytes, bytes + text.size()));
}

void FileGroup::refuseWhatIsThere (bool overwrite) const
{
    for (const auto& [name, bytes] : files)
    {
        const fs::path place = folder / name;
        std::error_code error;
        if (isThere (place) && (! overwrite || fs::is_directory (place, error)))
            throw badData ("Could not create file  " + place.string() + " is there already");
    }
}

void FileGroup::write (bool overwrite) const
{
    std::error_code error;
    Removable newFolder;
    if (fs::create_directory (folder, error))
        newFolder = Removable (folder);
    if (error || ! fs::is_directory (folder, error))
        throw badData ("Could not create file  " + folder.string());
    refuseWhatIsThere (overwrite);

    std::random_device source;
    const fs::path stage = folder / (".writing" + std::to_string (source()));
    if (! fs::create_directory (stage, error))
        throw badData ("Could not create file  " + folder.string());

    const Removable stageRemover (stage);
    for (const auto& [name, bytes] : files)
        writeWholeFile ((stage / name).string(), bytes);
    moveIn (stage);
    newFolder.keep();
}

void FileGroup::moveIn (const fs::path& stage) const
{
    std::vector<Removable> moved;
    for (const auto& [name, bytes] : files)
    {
        const fs::path place = folder / name;
        const bool isNew = ! isThere (place);
        std::error_code error;
        fs::rename (stage / name, place, error);
        if (error)
            throw badData ("Could not write to file  " + place.string());
        if (isNew)
            moved.emplace_back (place);
    }

    for (Removable& file : moved)
        file.keep();
}

} // namespace morvanelab
