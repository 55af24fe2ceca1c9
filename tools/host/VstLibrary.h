// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "host/Vst2.h"

#include <string>

namespace morvanelab::host
{

/** A plug-in file in memory. Instances made from it must be closed before it goes. */
class VstLibrary
{
public:
    using Entry = vst2::AEffect* (*)(vst2::audioMasterCallback);

    /** Loads the file and finds its entry; raises std::runtime_error with the loader's text. */
    explicit VstLibrary (const std::string& path);
    ~VstLibrary();
    VstLibrary (const VstLibrary&) = delete;
    VstLibrary& operator= (const VstLibrary&) = delete;

    Entry getEntry() const { return entry; }

private:
    void* handle = nullptr;
    Entry entry = nullptr;
};

} // namespace morvanelab::host
