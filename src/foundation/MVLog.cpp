// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVLog.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>

#if defined(__GNUC__)
#include <cxxabi.h>
#endif

namespace morvanelab
{

namespace
{

std::atomic<std::FILE*> stream { nullptr };
std::atomic<bool> enabled { false };

void writeLine (const char* category, const char* function, const char* format, std::va_list arguments)
{
    std::FILE* const out = stream.load (std::memory_order_acquire);

    if (function != nullptr && *function != '\0')
        std::fprintf (out, "[%s] %s ", category != nullptr ? category : "", function);

    if (format != nullptr && *format != '\0')
    {
        char text[2048];
        std::vsnprintf (text, sizeof (text), format, arguments);
        std::fputs (text, out);
    }

    std::fputc ('\n', out);
    std::fflush (out);
}

std::string plainTypeName (const std::type_info& type)
{
#if defined(__GNUC__)
    int status = 0;
    const std::unique_ptr<char, decltype (&std::free)> name (
        abi::__cxa_demangle (type.name(), nullptr, nullptr, &status), &std::free);
    if (status == 0 && name != nullptr)
        return name.get();
#endif
    return type.name();
}

/** Puts "class " before each qualified name and parts closing brackets: "A<ns::B<ns::C>>" is written
    "A<class ns::B<class ns::C> >". */
std::string withClassKeys (const std::string& name, bool outermostIsClass)
{
    std::string result;

    for (std::size_t i = 0; i < name.size(); ++i)
    {
        const bool startsName = i == 0 || name[i - 1] == '<' || (name[i - 1] == ' ' && i > 1 && name[i - 2] == ',');

        if (startsName && name[i] != ' ')
        {
            const std::string own = name.substr (i, name.find_first_of ("<>,", i) - i);
            const bool alreadyKeyed = own.rfind ("class ", 0) == 0 || own.rfind ("struct ", 0) == 0;
            if (! alreadyKeyed && ((i == 0 && outermostIsClass) || own.find ("::") != std::string::npos))
                result += "class ";
        }
        else if (name[i] == '>' && result.ends_with ('>'))
        {
            result += ' ';
        }

        result += name[i];
    }

    return result;
}

} // namespace

void mvLogOpen (const char* path)
{
    // A file that is replaced stays open: another thread may be in the middle of a line.
    std::FILE* next = path != nullptr ? std::fopen (path, "w") : stream.load();

    stream.store (next != nullptr ? next : stdout, std::memory_order_release);
    enabled.store (true, std::memory_order_release);
}

bool mvLogEnabled() { return enabled.load (std::memory_order_acquire); }

void mvLog (const char* category, const char* function, const char* format, ...)
{
    if (! mvLogEnabled())
        return;

    std::va_list arguments;
    va_start (arguments, format);
    writeLine (category, function, format, arguments);
    va_end (arguments);
}

void mvLogOutOfRange (const char* container, const std::type_info& element, bool isClass, int index, int size)
{
    if (! mvLogEnabled())
        return;

    const std::string type = withClassKeys (plainTypeName (element), isClass);
    const std::string function =
        std::string ("morvanelab::") + container + "<" + type + (type.ends_with ('>') ? " >" : ">") + "::itemAt";
    mvLog ("ERROR", function.c_str(), "Attempting to access item %d out of range %d", index, size);
}

} // namespace morvanelab
