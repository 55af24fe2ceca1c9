// SPDX-License-Identifier: GPL-3.0-or-later
#include "DoctorCommand.h"

#include "banks/MVAppPersistentProps.h"
#include "banks/MVBankFileManager.h"

#include <CLI/CLI.hpp>

#include <cstdio>

namespace morvanelab
{

namespace
{

void print (const char* label, const juce::String& text) { std::printf ("%-22s %s\n", label, text.toRawUTF8()); }

juce::String found (const juce::File& file) { return file.getFullPathName() + (file.exists() ? "" : "  (not there)"); }

void reportPlugins (const juce::File& folder)
{
    for (const auto& file : folder.findChildFiles (juce::File::findFiles, false, "iSordelin64.*"))
        print ("plug-in", file.getFullPathName());
    for (const auto& file : folder.findChildFiles (juce::File::findFiles, true, "*.mv_onbank"))
        print ("bank", file.getFullPathName());
}

void runDoctor()
{
    MVAppPersistentProps properties;
    const juce::File settings = properties.getFile();

    print ("Sordelin", SORDELIN_VERSION);
    print ("JUCE", juce::SystemStats::getJUCEVersion());
    print ("system", juce::SystemStats::getOperatingSystemName() + ", " + juce::SystemStats::getCpuModel());
    print ("settings", found (settings));
    print ("data directory", found (settings.getParentDirectory()));

    // The manager's own way to its file may make the directory; only look where it would be.
    const juce::String override = properties.getString ("banks_path");
    const juce::File lists = override.isNotEmpty() ? settings.getSiblingFile (override) : settings.getParentDirectory();
    print ("bank list", found (lists.getChildFile (MVBankFileManager::managerFileName)));

    const juce::File program = juce::File::getSpecialLocation (juce::File::currentExecutableFile);
    print ("program", program.getFullPathName());
    for (const juce::File& folder :
         { program.getParentDirectory().getSiblingFile ("vst"),
           juce::File::getSpecialLocation (juce::File::userHomeDirectory).getChildFile (".vst"),
           juce::File ("/usr/lib/vst"), juce::File ("/usr/local/lib/vst") })
        if (folder.isDirectory())
            reportPlugins (folder);
}

} // namespace

void addDoctorCommand (CLI::App& app)
{
    app.add_subcommand ("doctor", "Print versions, the paths in use, and where plug-in and banks were found")
        ->callback (runDoctor);
}

} // namespace morvanelab
