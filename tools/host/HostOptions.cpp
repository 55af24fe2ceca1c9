// SPDX-License-Identifier: GPL-3.0-or-later
#include "host/HostOptions.h"

#include <charconv>
#include <cmath>
#include <functional>
#include <map>
#include <stdexcept>
#include <string_view>

namespace morvanelab::host
{

const char* const hostUsage =
    "usage: sordelin-host --plugin FILE [--state FILE | --bank FILE --slot N] [options]\n"
    "\n"
    "Loads a VST 2 plug-in, plays notes to it as host MIDI and measures what comes out. Fails if that is silent\n"
    "or not finite.\n"
    "\n"
    "  --state FILE              restores these state bytes first\n"
    "  --bank FILE --slot N      restores a state that names slot N (0 to 63) of a bank in the plug-in's list\n"
    "  --note KEY:VEL:ON:OFF     a note, velocity 1 to 127, times in seconds; may repeat (default: a short tune)\n"
    "  --seconds S               length (default: 2 s behind the last note)\n"
    "  --rate HZ                 sample rate (default 44100)\n"
    "  --block N[,N...]          block sizes, used in turn (default 512)\n"
    "  --realtime                runs at the speed of the clock, as a host that plays\n"
    "  --screenshot FILE.png     opens the editor in a window and takes a picture at the end\n"
    "  --reopen                  with it, closes and opens the editor every half second of sound\n"
    "  -o FILE.wav               writes the sound\n";

namespace
{

[[noreturn]] void refuse (const std::string& sentence) { throw std::invalid_argument (sentence); }

template <typename Number>
Number parseNumber (std::string_view text, Number low, Number high)
{
    Number value {};
    const auto result = std::from_chars (text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || ! (value >= low && value <= high))
        refuse ("not a number in its limits: " + std::string (text));
    return value;
}

std::vector<std::string_view> split (std::string_view text, char separator)
{
    std::vector<std::string_view> parts;
    for (;;)
    {
        const auto position = text.find (separator);
        parts.push_back (text.substr (0, position));
        if (position == std::string_view::npos)
            return parts;
        text.remove_prefix (position + 1);
    }
}

TuneNote parseNote (std::string_view text)
{
    const auto parts = split (text, ':');
    if (parts.size() != 4)
        refuse ("a note is KEY:VEL:ON:OFF");
    constexpr double longest = 3600.0;
    const double on = parseNumber (parts[2], 0.0, longest);
    return { parseNumber (parts[0], 0, 127), parseNumber (parts[1], 1, 127), on, parseNumber (parts[3], on, longest) };
}

std::vector<int> parseBlocks (std::string_view text)
{
    std::vector<int> blocks;
    for (const auto part : split (text, ','))
        blocks.push_back (parseNumber (part, 1, 65536));
    return blocks;
}

using Setters = std::map<std::string_view, std::function<void (std::string_view)>>;

Setters makeSetters (HostOptions& options)
{
    return { { "--plugin", [&] (auto text) { options.plugin = text; } },
             { "--state", [&] (auto text) { options.state = text; } },
             { "--bank", [&] (auto text) { options.bank = text; } },
             { "--slot", [&] (auto text) { options.slot = parseNumber (text, 0, 63); } },
             { "--note", [&] (auto text) { options.notes.push_back (parseNote (text)); } },
             { "--seconds", [&] (auto text) { options.seconds = parseNumber (text, 0.001, 3600.0); } },
             { "--rate", [&] (auto text) { options.rate = parseNumber (text, 8000.0, 384000.0); } },
             { "--block", [&] (auto text) { options.blocks = parseBlocks (text); } },
             { "--screenshot", [&] (auto text) { options.screenshot = text; } },
             { "-o", [&] (auto text) { options.output = text; } } };
}

} // namespace

HostOptions parseHostOptions (int count, const char* const* arguments)
{
    HostOptions options;
    const auto setters = makeSetters (options);
    for (int i = 1; i < count; ++i)
    {
        const std::string_view name = arguments[i];
        if (name == "--realtime" || name == "--reopen")
        {
            (name == "--realtime" ? options.realtime : options.reopen) = true;
            continue;
        }
        const auto setter = setters.find (name);
        if (setter == setters.end())
            refuse ("unknown option: " + std::string (name));
        if (++i >= count)
            refuse ("a value is missing behind " + std::string (name));
        setter->second (arguments[i]);
    }
    if (options.plugin.empty())
        refuse ("--plugin is missing");
    if (! options.state.empty() && ! options.bank.empty())
        refuse ("--state and --bank exclude each other");
    if (options.notes.empty())
        options.notes = builtInTune();
    if (options.seconds <= 0.0)
        options.seconds = tuneLength (options.notes) + 2.0;
    return options;
}

} // namespace morvanelab::host
