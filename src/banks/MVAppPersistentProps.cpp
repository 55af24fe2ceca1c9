// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/MVAppPersistentProps.h"

#include "banks/MVPropertiesFile.h"

#include <juce_data_structures/juce_data_structures.h>
#include <juce_events/juce_events.h>

#include <map>
#include <mutex>

namespace morvanelab
{

namespace
{

constexpr const char* settingsFolder = "Application Support";
constexpr int saveDelayMilliseconds = 3000;

juce::PropertiesFile::Options makeOptions (const juce::String& applicationName, const juce::String& subFolder)
{
    juce::PropertiesFile::Options options;
    options.applicationName = applicationName;
    options.filenameSuffix = "props";
    options.folderName = settingsFolder;
    options.osxLibrarySubFolder = subFolder;
    options.commonToAllUsers = false;
    options.ignoreCaseOfKeyNames = false;
    options.doNotSave = false;
    options.storageFormat = juce::PropertiesFile::storeAsXML;

    // The delayed save is a timer, which needs a message manager to call it.
    const bool timersRun = juce::MessageManager::getInstanceWithoutCreating() != nullptr;
    options.millisecondsBeforeSaving = timersRun ? saveDelayMilliseconds : -1;
    return options;
}

#if JUCE_LINUX || JUCE_BSD
juce::File systemDirectory (const juce::PropertiesFile::Options& options)
{
    const auto configHome = juce::SystemStats::getEnvironmentVariable ("XDG_CONFIG_HOME", {});
    const auto base = configHome.startsWithChar ('/') ? juce::File (configHome) : juce::File ("~/.config");
    return base.getChildFile (options.folderName);
}
#else
juce::File systemDirectory (const juce::PropertiesFile::Options& options)
{
    return options.getDefaultFile().getParentDirectory();
}
#endif

juce::File findFile (const juce::PropertiesFile::Options& options)
{
    const auto home = juce::SystemStats::getEnvironmentVariable ("SORDELIN_HOME", {});
    const auto directory =
        home.isNotEmpty() ? juce::File::getCurrentWorkingDirectory().getChildFile (home) : systemDirectory (options);
    return directory.getChildFile (options.applicationName + "." + options.filenameSuffix);
}

/** The open properties files of this process. Objects of one file share it, so that none saves over what another
    has set. */
struct OpenFiles
{
    std::mutex lock;
    std::map<juce::String, std::weak_ptr<MVPropertiesFile>> files;
};

OpenFiles& openFiles()
{
    static OpenFiles files;
    return files;
}

std::shared_ptr<MVPropertiesFile> acquire (const juce::PropertiesFile::Options& options)
{
    auto& open = openFiles();
    const std::lock_guard guard (open.lock);

    const auto file = findFile (options);
    auto& known = open.files[file.getFullPathName()];
    auto properties = known.lock();
    if (properties == nullptr)
    {
        properties = std::make_shared<MVPropertiesFile> (file, options.millisecondsBeforeSaving);
        known = properties;
    }
    return properties;
}

} // namespace

MVAppPersistentProps::MVAppPersistentProps (const juce::String& applicationName, const juce::String& subFolder,
                                            MVUserPrompt& userPrompt)
    : properties (acquire (makeOptions (applicationName, subFolder))), prompt (userPrompt)
{
}

MVAppPersistentProps::~MVAppPersistentProps()
{
    // The last owner saves while no one can open the file anew.
    const std::lock_guard guard (openFiles().lock);
    properties.reset();
}

void MVAppPersistentProps::flush() { properties->saveIfNeeded(); }

bool MVAppPersistentProps::removeAllBut (const juce::StringArray& keptKeys)
{
    return properties->removeAllBut (keptKeys);
}

juce::String MVAppPersistentProps::getDataDirectory (bool& existed)
{
    const auto directory = getFile().getParentDirectory();
    existed = true;

    if (! directory.isDirectory())
    {
        existed = false;
        if (! directory.existsAsFile() || directory.deleteFile())
            directory.createDirectory();
    }

    if (directory.isDirectory())
        return directory.getFullPathName();

    prompt.tell ("Application Permissions Failure",
                 "Persistent application settings directory could not be created, resulting in an unknown state.  "
                 "Please check your file system permissions and restart.");
    return {};
}

juce::File MVAppPersistentProps::getFile() const { return properties->getFile(); }

juce::String MVAppPersistentProps::getString (const juce::String& key) const { return properties->getValue (key); }

int MVAppPersistentProps::getInt (const juce::String& key, int defaultValue) const
{
    return properties->getValue (key, juce::String (defaultValue)).getIntValue();
}

bool MVAppPersistentProps::getBool (const juce::String& key, bool defaultValue) const
{
    return getInt (key, defaultValue ? 1 : 0) != 0;
}

bool MVAppPersistentProps::setString (const juce::String& key, const juce::String& value)
{
    properties->setValue (key, value);
    return true;
}

bool MVAppPersistentProps::setInt (const juce::String& key, int value) { return setString (key, juce::String (value)); }

bool MVAppPersistentProps::setBool (const juce::String& key, bool value) { return setInt (key, value ? 1 : 0); }

} // namespace morvanelab
