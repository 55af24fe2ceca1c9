// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/MVPropertiesFile.h"

#include "banks/MVDirectoryLock.h"
#include "banks/MVFileSwap.h"

#include <string>
#include <string_view>
#include <utility>

namespace morvanelab
{

namespace
{

constexpr const char* rootTag = "PROPERTIES";
constexpr const char* valueTag = "VALUE";
constexpr const char* nameAttribute = "name";
constexpr const char* valueAttribute = "val";
constexpr int deepestNesting = 64;

/** Where a tag ends that begins at a position: behind its ">", which may not stand in quotes. */
std::size_t endOfTag (std::string_view text, std::size_t begin)
{
    char quote = 0;
    for (std::size_t at = begin; at < text.size(); ++at)
    {
        const char character = text[at];
        if (quote != 0)
            quote = character == quote ? '\0' : quote;
        else if (character == '"' || character == '\'')
            quote = character;
        else if (character == '>')
            return at + 1;
    }
    return text.size();
}

/** Whether a document may be given to the toolkit's parser, which calls itself once a level and expands whatever
    entities a document declares. */
bool isHarmless (std::string_view text)
{
    int depth = 0;
    for (std::size_t at = text.find ('<'); at != std::string_view::npos; at = text.find ('<', at))
    {
        const auto tag = text.substr (at);
        if (tag.starts_with ("<!--"))
        {
            const auto end = text.find ("-->", at);
            if (end == std::string_view::npos)
                return false;
            at = end;
            continue;
        }
        if (tag.starts_with ("<!"))
            return false;

        at = endOfTag (text, at);
        const bool closesItself = at >= 2 && text[at - 2] == '/';
        if (tag.starts_with ("</"))
            --depth;
        else if (! tag.starts_with ("<?") && ! closesItself && ++depth > deepestNesting)
            return false;
    }
    return true;
}

bool parse (const juce::MemoryBlock& bytes, juce::StringPairArray& values)
{
    const auto* const text = static_cast<const char*> (bytes.getData());
    if (! isHarmless ({ text, bytes.getSize() }))
        return false;
    const auto document =
        juce::parseXML (juce::String::createStringFromData (text, static_cast<int> (bytes.getSize())));
    if (document == nullptr || ! document->hasTagName (rootTag))
        return false;

    for (const auto* element : document->getChildWithTagNameIterator (valueTag))
    {
        const auto name = element->getStringAttribute (nameAttribute);
        const auto* const child = element->getFirstChildElement();
        if (name.isNotEmpty())
            values.set (name, child != nullptr
                                  ? child->toString (juce::XmlElement::TextFormat().singleLine().withoutHeader())
                                  : element->getStringAttribute (valueAttribute));
    }
    return true;
}

std::string format (const juce::StringPairArray& values)
{
    juce::XmlElement document (rootTag);
    for (int i = 0; i < values.size(); ++i)
    {
        auto* const element = document.createNewChildElement (valueTag);
        element->setAttribute (nameAttribute, values.getAllKeys()[i]);
        element->setAttribute (valueAttribute, values.getAllValues()[i]);
    }
    return document.toString().toStdString();
}

} // namespace

MVPropertiesFile::MVPropertiesFile (const juce::File& propertiesFile, int saveDelayMilliseconds)
    : file (propertiesFile), saveDelay (saveDelayMilliseconds)
{
    followFile();
}

MVPropertiesFile::~MVPropertiesFile()
{
    stopTimer();
    saveIfNeeded();
}

MVPropertiesFile::Stamp MVPropertiesFile::readStamp() const
{
    Stamp result;
    std::error_code error;
    const auto path = toSystemPath (file);
    if (const auto size = std::filesystem::file_size (path, error); ! error)
        result = { static_cast<juce::int64> (size), std::filesystem::last_write_time (path, error) };
    return result;
}

MVPropertiesFile::Contents MVPropertiesFile::read (const juce::File& file, juce::MemoryBlock& bytes,
                                                   juce::StringPairArray& stored)
{
    bytes.reset();
    if (! file.exists())
        return Contents::none;
    if (! readFileContents (file, bytes))
        return Contents::unreadable;
    if (bytes.isEmpty())
        return Contents::none;
    return parse (bytes, stored) ? Contents::good : Contents::damaged;
}

void MVPropertiesFile::followFile()
{
    // Looked at before the file is read: a change in between is found the next time.
    const auto present = readStamp();
    if (present == stamp)
        return;

    juce::MemoryBlock bytes;
    juce::StringPairArray stored (false);
    takeOver (read (file, bytes, stored), stored);
    stamp = present;
}

void MVPropertiesFile::takeOver (Contents contents, const juce::StringPairArray& stored)
{
    // A file that has gone or was spoilt tells of no removals.
    if (contents != Contents::good)
        return;

    const auto former = std::exchange (values, stored);
    for (const auto& key : unsavedKeys)
        values.set (key, former[key]);
}

juce::String MVPropertiesFile::getValue (const juce::String& key, const juce::String& fallback)
{
    const juce::ScopedLock guard (lock);
    followFile();
    return values.getValue (key, fallback);
}

void MVPropertiesFile::setValue (const juce::String& key, const juce::String& value)
{
    const juce::ScopedLock guard (lock);
    followFile();
    if (key.isEmpty() || (values.containsKey (key) && values[key] == value))
        return;

    values.set (key, value);
    unsavedKeys.insert (key);
    if (saveDelay >= 0)
        startTimer (saveDelay);
}

void MVPropertiesFile::timerCallback() { saveIfNeeded(); }

bool MVPropertiesFile::saveIfNeeded()
{
    {
        const juce::ScopedLock guard (lock);
        stopTimer();
        if (unsavedKeys.empty())
            return true;
        if (file.getParentDirectory().createDirectory().failed())
            return false;
    }
    // Before our own lock, as for those who hold it to change several files of the directory.
    const MVDirectoryLock directoryLock (file.getParentDirectory());
    const juce::ScopedLock guard (lock);
    return unsavedKeys.empty() || write();
}

bool MVPropertiesFile::removeAllBut (const juce::StringArray& keptKeys)
{
    const MVDirectoryLock directoryLock (file.getParentDirectory());
    const juce::ScopedLock guard (lock);
    stopTimer();
    followFile();
    for (const auto& key : juce::StringArray (values.getAllKeys()))
        if (! keptKeys.contains (key))
            values.remove (juce::StringRef (key));
    unsavedKeys.clear();

    const auto text = format (values);
    const bool done =
        backupSiblingOf (file).deleteFile()
        && (values.size() == 0 ? file.deleteFile() : replaceFileContents (file, text.data(), text.size()));
    stamp = readStamp();
    return done;
}

bool MVPropertiesFile::write()
{
    juce::MemoryBlock bytes;
    juce::StringPairArray stored (false);
    const auto contents = read (file, bytes, stored);
    if (contents == Contents::unreadable
        || (contents == Contents::damaged
            && ! replaceFileContents (backupSiblingOf (file), bytes.getData(), bytes.getSize())))
        return false;
    takeOver (contents, stored);

    const auto text = format (values);
    if (! replaceFileContents (file, text.data(), text.size()))
        return false;
    unsavedKeys.clear();
    stamp = readStamp();
    return true;
}

} // namespace morvanelab
