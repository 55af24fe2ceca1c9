// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "host/WindowManagerNames.h"

#include <dlfcn.h>

#include <cstdlib>
#include <initializer_list>

namespace morvanelab
{

/** A connection to the display, for tests that need real windows: while it lives, windowManagerNames exist. Make it
    before the toolkit. */
class ScreenForTests
{
public:
    ScreenForTests()
    {
        const auto open = reinterpret_cast<void* (*)(const char*)> (symbol ("XOpenDisplay"));
        const auto intern = reinterpret_cast<unsigned long (*) (void*, const char*, int)> (symbol ("XInternAtom"));
        if (open == nullptr || intern == nullptr || std::getenv ("DISPLAY") == nullptr)
            return;
        display = open (nullptr);
        if (display == nullptr)
            return;
        for (const char* name : host::windowManagerNames)
            intern (display, name, 0);
    }
    ~ScreenForTests()
    {
        if (display != nullptr)
            reinterpret_cast<int (*) (void*)> (symbol ("XCloseDisplay")) (display);
        if (library != nullptr)
            dlclose (library);
    }
    ScreenForTests (const ScreenForTests&) = delete;
    ScreenForTests& operator= (const ScreenForTests&) = delete;

    bool isThere() const { return display != nullptr; }

private:
    void* symbol (const char* name) const { return library != nullptr ? dlsym (library, name) : nullptr; }

    // Stays for good: each time that library is unloaded, it loses the tables it keeps.
    void* library = dlopen ("libX11.so.6", RTLD_NOW | RTLD_GLOBAL | RTLD_NODELETE);
    void* display = nullptr;
};

} // namespace morvanelab
