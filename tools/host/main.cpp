// SPDX-License-Identifier: GPL-3.0-or-later
#include "host/BankList.h"
#include "host/EditorWindow.h"
#include "host/HostOptions.h"
#include "host/LevelReport.h"
#include "host/VstInstance.h"
#include "host/WaveFile.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <thread>

namespace
{

using namespace morvanelab::host;

constexpr double silenceBelow = 1.0e-4; ///< -80 dB of full scale

struct Recording
{
    std::vector<float> left;
    std::vector<float> right;
};

std::vector<std::uint8_t> readFile (const std::string& path)
{
    std::ifstream file (path, std::ios::binary);
    if (! file)
        throw std::runtime_error ("cannot read " + path);
    return { std::istreambuf_iterator<char> (file), {} };
}

/** Where the plug-in keeps its list of banks; it is told by SORDELIN_HOME. */
std::string managerFile()
{
    const char* home = std::getenv ("SORDELIN_HOME");
    if (home == nullptr)
        throw std::runtime_error ("--bank needs SORDELIN_HOME, the plug-in's settings directory");
    return (std::filesystem::path (home) / "Sordelin_Banks.mv_bankmgr").string();
}

void restore (VstInstance& plugin, const HostOptions& options)
{
    if (! options.state.empty())
        plugin.setState (readFile (options.state));
    else if (! options.bank.empty())
        plugin.setState (makeState (readBankList (managerFile()), options.bank, options.slot));
}

/** The editor in a window of its own, or nothing where none was asked for. */
class Editor
{
public:
    Editor (VstInstance& instance, HostDisplay* displayToUse, bool reopen)
        : plugin (instance), display (displayToUse), reopening (reopen)
    {
        if (display != nullptr)
            window = std::make_unique<EditorWindow> (plugin, *display);
    }

    EditorWindow* get() { return window.get(); }

    void idle (double secondsOfSound)
    {
        if (window == nullptr)
            return;
        plugin.dispatch (vst2::effEditIdle);
        if (reopening && secondsOfSound - openedAt >= reopenSeconds)
        {
            window.reset();
            window = std::make_unique<EditorWindow> (plugin, *display);
            openedAt = secondsOfSound;
        }
    }

private:
    static constexpr double reopenSeconds = 0.5;

    VstInstance& plugin;
    HostDisplay* display;
    std::unique_ptr<EditorWindow> window;
    bool reopening;
    double openedAt = 0.0;
};

void waitForClock (std::chrono::steady_clock::time_point started, double seconds)
{
    using Clock = std::chrono::steady_clock;
    std::this_thread::sleep_until (
        started + std::chrono::duration_cast<Clock::duration> (std::chrono::duration<double> (seconds)));
}

Recording play (VstInstance& plugin, const HostOptions& options, Editor& editor)
{
    const auto started = std::chrono::steady_clock::now();
    const auto total = std::lround (std::ceil (options.seconds * options.rate));
    Recording recording;
    long done = 0;
    for (std::size_t turn = 0; done < total; ++turn)
    {
        const auto block = options.blocks[turn % options.blocks.size()];
        const auto frames = static_cast<int> (std::min<long> (block, total - done));
        const auto messages = messagesInBlock (options.notes, options.rate, done, frames);
        if (! messages.empty())
            plugin.send (messages);
        plugin.render (frames, recording.left, recording.right);
        done += frames;
        const auto seconds = static_cast<double> (done) / options.rate;
        editor.idle (seconds);
        if (options.realtime)
            waitForClock (started, seconds);
    }
    return recording;
}

void report (const Recording& recording, const HostOptions& options)
{
    const auto rate = static_cast<int> (std::lround (options.rate));
    std::cout << describeLevels (recording.left, recording.right, rate);
    const auto level = measureLevel (recording.left, recording.right, 0, recording.left.size());
    if (! level.finite)
        throw std::runtime_error ("the output is not finite");
    if (level.peak < silenceBelow)
        throw std::runtime_error ("the output is silent");
}

void run (const HostOptions& options)
{
    std::unique_ptr<HostDisplay> display;
    if (! options.screenshot.empty())
        display = std::make_unique<HostDisplay>();
    const VstLibrary library (options.plugin);
    VstInstance plugin (library);
    plugin.setOffline (! options.realtime);
    std::cout << plugin.text (vst2::effGetEffectName) << ", " << plugin.text (vst2::effGetVendorString) << "\n";

    plugin.start (options.rate, *std::max_element (options.blocks.begin(), options.blocks.end()));
    restore (plugin, options);

    Editor editor (plugin, display.get(), options.reopen);
    const auto recording = play (plugin, options, editor);
    if (auto* window = editor.get())
    {
        window->idle (0.5);
        window->savePicture (options.screenshot);
        std::cout << "window: " << options.screenshot << "\n";
    }
    if (! options.output.empty())
    {
        writeWave (options.output, recording.left, recording.right, static_cast<int> (std::lround (options.rate)));
        std::cout << "sound: " << options.output << "\n";
    }
    report (recording, options);
}

} // namespace

int main (int count, char** arguments)
{
    try
    {
        run (parseHostOptions (count, arguments));
        return 0;
    }
    catch (const std::invalid_argument& wrongUse)
    {
        std::cerr << "sordelin-host: " << wrongUse.what() << "\n\n" << hostUsage;
        return 1;
    }
    catch (const std::exception& failure)
    {
        std::cerr << "sordelin-host: " << failure.what() << "\n";
        return 2;
    }
}
