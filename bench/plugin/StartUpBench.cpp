// SPDX-License-Identifier: GPL-3.0-or-later
// How long a host waits for the plug-in: loading and making one, and starting one.
#include "host/VstInstance.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include <unistd.h>

namespace
{

using namespace morvanelab::host;

/** A home of its own, so that the benchmark neither sees nor touches the user's banks. */
class EmptyHome
{
public:
    EmptyHome() : folder (std::filesystem::temp_directory_path() / ("sordelin-bench-" + std::to_string (getpid())))
    {
        unsetenv ("DISPLAY");
        setenv ("SORDELIN_HOME", folder.c_str(), 1);
    }
    ~EmptyHome() { std::filesystem::remove_all (folder); }
    EmptyHome (const EmptyHome&) = delete;
    EmptyHome& operator= (const EmptyHome&) = delete;

private:
    std::filesystem::path folder;
};

void loadAndConstruct (benchmark::State& state)
{
    const EmptyHome home;
    for (auto _ : state)
    {
        auto library = std::make_unique<VstLibrary> (SORDELIN_PLUGIN_FILE);
        auto instance = std::make_unique<VstInstance> (*library);
        state.PauseTiming(); // tearing down is not what a host waits for
        instance.reset();
        library.reset();
        state.ResumeTiming();
    }
}

void start (benchmark::State& state)
{
    const EmptyHome home;
    const VstLibrary library (SORDELIN_PLUGIN_FILE);
    VstInstance instance (library);
    for (auto _ : state)
        instance.start (44100.0, 512);
}

} // namespace

BENCHMARK (loadAndConstruct)->Unit (benchmark::kMillisecond)->UseRealTime();
BENCHMARK (start)->Unit (benchmark::kMillisecond)->UseRealTime();
