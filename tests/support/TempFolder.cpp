// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/TempFolder.h"

#include <atomic>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

namespace morvanelab::test
{

TempFolder::TempFolder()
{
    static std::atomic<unsigned> number { 0 };
    const unsigned processPart = std::random_device()();

    do
        folder = std::filesystem::temp_directory_path()
                 / ("sordelin-test-" + std::to_string (processPart) + "-" + std::to_string (number++));
    while (! std::filesystem::create_directory (folder));
}

TempFolder::~TempFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all (folder, ignored);
}

std::vector<std::uint8_t> readFile (const std::filesystem::path& path)
{
    std::ifstream in (path, std::ios::binary);
    if (! in)
        throw std::runtime_error ("cannot read " + path.string());
    return { std::istreambuf_iterator<char> (in), std::istreambuf_iterator<char>() };
}

void writeFile (const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes)
{
    std::ofstream out (path, std::ios::binary | std::ios::trunc);
    out.write (reinterpret_cast<const char*> (bytes.data()), static_cast<std::streamsize> (bytes.size()));
    if (! out.flush())
        throw std::runtime_error ("cannot write " + path.string());
}

} // namespace morvanelab::test
