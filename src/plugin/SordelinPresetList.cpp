// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinPresetList.h"

#include "banks/MVFileSwap.h"
#include "banks/SordelinPresetFile.h"
#include "foundation/MVLog.h"
#include "foundation/MVResult.h"
#include "foundation/MVXmlDocument.h"

namespace morvanelab
{

namespace
{

constexpr const char* rootName = "xml_wrapper";
constexpr const char* listName = "saved_presets";
constexpr const char* entryName = "preset_file";
constexpr const char* pathName = "path";
constexpr const char* asideFileName = "presets_list_bak.xml";

/** Settings files that held the document as XML of their own kind give back an entity for what is no plain character;
    the document's dialect knows none. */
juce::String withoutEntities (const juce::String& path)
{
    const auto element = juce::parseXML ("<path v=\"" + path + "\"/>");
    return element != nullptr ? element->getStringAttribute ("v") : path;
}

juce::File toFile (const juce::String& path)
{
    return juce::File::isAbsolutePath (path) ? juce::File (path) : juce::File();
}

/** The file that a listed path means: as it stands, or as the settings file has spelled it. */
juce::File findFile (const juce::String& path)
{
    const auto file = toFile (path);
    if (file.existsAsFile() || ! path.containsChar ('&'))
        return file;
    return toFile (withoutEntities (path));
}

MVSmartPtr<MVXmlElement> findList (const juce::String& text)
{
    const auto root = MVXmlDocument::read (text.toStdString());
    if (! root)
        return {};
    const auto wrapper = root->childNamed (rootName);
    return wrapper ? wrapper->childNamed (listName) : root->childNamed (listName);
}

/** Whether there are presets in the text that findList does not get at. */
bool isDamaged (const juce::String& text)
{
    return text.isNotEmpty() && ! findList (text)
           && (text.contains (SordelinPresetFile::extension) || ! MVXmlDocument::isSafeToParse (text.toStdString()));
}

bool canBeListed (const juce::File& file)
{
    const auto path = file.getFullPathName();
    return path.isNotEmpty() && MVXmlDocument::isSafeValue (path.toStdString());
}

} // namespace

SordelinPresetList::SordelinPresetList (MVAppPersistentProps& propertiesToUse) : properties (propertiesToUse) {}

SordelinPresetList::Files SordelinPresetList::parse (const juce::String& text, bool mustExist, int& result)
{
    Files files;
    result = resultDone;
    const auto list = findList (text);
    if (! list)
        return files;
    for (int i = 0; i < list->childCount(); ++i)
    {
        const auto entry = list->childAt (i);
        if (! entry)
            result = resultEmptyData;
        if (! entry || juce::StringRef (entry->getName()) != juce::StringRef (entryName))
            continue;
        const auto path = entry->getAttribute (pathName);
        const auto file = path ? findFile (juce::String::fromUTF8 (path->text(), path->length())) : juce::File();
        if (! path)
            result = resultEmptyPath;
        else if (file == juce::File() || (mustExist && ! file.existsAsFile()))
            result = resultPresetFileMissing;
        else
            files.add (file);
    }
    return files;
}

int SordelinPresetList::load()
{
    const std::lock_guard<std::mutex> scope (lock);
    presetFiles.clear();
    combo.items.clear();
    combo.selected = -1;
    lastText = properties.getString (listKey);
    mayOverwrite = true;
    if (isDamaged (lastText))
    {
        mayOverwrite = keepDamagedAside (lastText);
        return resultEmptyData;
    }
    int result = resultDone;
    presetFiles = parse (lastText, true, result);
    refillCombo();
    return result;
}

bool SordelinPresetList::keepDamagedAside (const juce::String& text)
{
    const auto bytes = text.toStdString();
    const auto aside = properties.getFile().getSiblingFile (asideFileName);
    const bool kept = replaceFileContents (aside, bytes.data(), bytes.size());
    mvLog ("ERROR", "morvanelab::SordelinPresetList::load", "damaged list of presets, %s in %s",
           kept ? "kept" : "could not be kept", aside.getFullPathName().toRawUTF8());
    return kept;
}

bool SordelinPresetList::save()
{
    const std::lock_guard<std::mutex> scope (lock);
    if (! mayOverwrite)
        return false;
    lastText = buildDocument();
    properties.setString (listKey, lastText);
    properties.flush();
    return true;
}

juce::String SordelinPresetList::buildDocument() const
{
    auto list = makeSmart<MVXmlElement> (MVXmlTag (listName));
    for (const auto& file : presetFiles)
    {
        if (! canBeListed (file))
            continue;
        MVXmlTag tag (entryName);
        tag.addAttribute (pathName, file.getFullPathName().toRawUTF8());
        list->addChild (makeSmart<MVXmlElement> (tag));
    }
    auto wrapper = makeSmart<MVXmlElement> (MVXmlTag (rootName));
    wrapper->addChild (list);
    MVXmlElement root;
    root.addChild (wrapper);
    return juce::String::fromUTF8 (root.getText(), root.getLength());
}

bool SordelinPresetList::hasRoomFor (const juce::File& file) const
{
    constexpr std::size_t frameBytes = 64; // of an entry, and as many for the whole
    const std::lock_guard<std::mutex> scope (lock);
    std::size_t bytes = 2 * frameBytes + file.getFullPathName().getNumBytesAsUTF8();
    for (const auto& listed : presetFiles)
        bytes += frameBytes + listed.getFullPathName().getNumBytesAsUTF8();
    return mayOverwrite && canBeListed (file) && bytes < MVXmlDocument::maxLength;
}

void SordelinPresetList::takeOverChanges()
{
    const std::lock_guard<std::mutex> scope (lock);
    const auto text = properties.getString (listKey);
    if (text == lastText)
        return;
    if (isDamaged (text))
    {
        mayOverwrite = keepDamagedAside (text);
        lastText = text;
        return;
    }

    int ignored = 0;
    const auto before = parse (lastText, false, ignored);
    const auto listed = parse (text, false, ignored);
    const auto chosen = combo.selected >= 0 ? presetFiles.itemAt (combo.selected) : juce::File();
    for (const auto& file : before)
        if (find (listed, file) < 0)
            presetFiles.removeValue (file);
    for (const auto& file : listed)
        if (find (before, file) < 0 && find (presetFiles, file) < 0 && file.existsAsFile())
            presetFiles.add (file);
    lastText = text;
    mayOverwrite = true;
    refillCombo();
    combo.selected = find (presetFiles, chosen);
}

int SordelinPresetList::find (const Files& files, const juce::File& file)
{
    for (int i = 0; i < files.size(); ++i)
        if (files[i] == file)
            return i;
    return -1;
}

int SordelinPresetList::size() const
{
    const std::lock_guard<std::mutex> scope (lock);
    return presetFiles.size();
}

juce::File SordelinPresetList::getFile (int index) const
{
    const std::lock_guard<std::mutex> scope (lock);
    return index >= 0 && index < presetFiles.size() ? presetFiles[index] : juce::File();
}

int SordelinPresetList::indexOf (const juce::File& file) const
{
    const std::lock_guard<std::mutex> scope (lock);
    return find (presetFiles, file);
}

void SordelinPresetList::add (const juce::File& file)
{
    const std::lock_guard<std::mutex> scope (lock);
    presetFiles.add (file);
}

void SordelinPresetList::remove (const juce::File& file)
{
    const std::lock_guard<std::mutex> scope (lock);
    presetFiles.removeValue (file);
}

void SordelinPresetList::rebuildCombo()
{
    const std::lock_guard<std::mutex> scope (lock);
    refillCombo();
}

void SordelinPresetList::refillCombo()
{
    combo.items.clear();
    combo.selected = -1;
    for (const auto& file : presetFiles)
        combo.items.add (file.getFileNameWithoutExtension());
}

void SordelinPresetList::select (int index)
{
    const std::lock_guard<std::mutex> scope (lock);
    combo.selected = index >= 0 && index < combo.items.size() ? index : -1;
}

int SordelinPresetList::getSelected() const
{
    const std::lock_guard<std::mutex> scope (lock);
    return combo.selected;
}

void SordelinPresetList::updateButtons()
{
    const std::lock_guard<std::mutex> scope (lock);
    combo.buttonsEnabled = ! presetFiles.isEmpty() && combo.selected >= 0;
}

SordelinPresetList::Combo SordelinPresetList::getCombo() const
{
    const std::lock_guard<std::mutex> scope (lock);
    return combo;
}

} // namespace morvanelab
