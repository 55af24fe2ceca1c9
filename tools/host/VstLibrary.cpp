// SPDX-License-Identifier: GPL-3.0-or-later
#include "host/VstLibrary.h"

#include <stdexcept>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace morvanelab::host
{

namespace
{

constexpr const char* entryName = "VSTPluginMain";

#if defined(_WIN32)
void* openLibrary (const std::string& path) { return LoadLibraryA (path.c_str()); }
void* findSymbol (void* library, const char* name)
{
    return reinterpret_cast<void*> (GetProcAddress (static_cast<HMODULE> (library), name));
}
void closeLibrary (void* library) { FreeLibrary (static_cast<HMODULE> (library)); }
std::string lastError() { return "error " + std::to_string (GetLastError()); }
#else
void* openLibrary (const std::string& path) { return dlopen (path.c_str(), RTLD_NOW | RTLD_LOCAL); }
void* findSymbol (void* library, const char* name) { return dlsym (library, name); }
void closeLibrary (void* library) { dlclose (library); }
std::string lastError()
{
    const char* text = dlerror();
    return text != nullptr ? text : "unknown error";
}
#endif

} // namespace

VstLibrary::VstLibrary (const std::string& path) : handle (openLibrary (path))
{
    if (handle == nullptr)
        throw std::runtime_error ("cannot load " + path + ": " + lastError());
    entry = reinterpret_cast<Entry> (findSymbol (handle, entryName));
    if (entry == nullptr)
    {
        closeLibrary (handle);
        throw std::runtime_error (path + " has no entry " + entryName);
    }
}

VstLibrary::~VstLibrary() { closeLibrary (handle); }

} // namespace morvanelab::host
