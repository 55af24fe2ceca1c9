// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/MVBankList.h"

#include "banks/MVBankBytes.h"
#include "banks/MVDirectoryLock.h"
#include "banks/MVFileSwap.h"
#include "banks/MVUserPrompt.h"
#include "foundation/MVChunks.h"
#include "foundation/MVMath.h"
#include "foundation/MVMetaData.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <unordered_map>
#include <unordered_set>

namespace morvanelab
{

namespace
{

constexpr std::uint32_t listForm = fourCC ("bmgr");
constexpr std::uint32_t bankForm = fourCC ("bank");
constexpr std::uint32_t uuidChunk = fourCC ("uuid");
constexpr std::uint32_t pathChunk = fourCC ("path");
constexpr std::uint32_t selectedChunk = fourCC ("selc");

/** The file that a stored path names; an empty one unless it is valid UTF-8 and a whole path. */
juce::File toFile (const MVString& path)
{
    if (! juce::CharPointer_UTF8::isValidString (path.text(), path.length()))
        return {};
    const auto text = juce::String::fromUTF8 (path.text(), path.length());
    return juce::File::isAbsolutePath (text) ? juce::File (text) : juce::File();
}

/** Whether packed bytes say of themselves that they end in a checksum. */
bool carriesChecksum (const juce::MemoryBlock& bytes)
{
    constexpr std::size_t flagPosition = 7;
    return bytes.getSize() > flagPosition && std::memcmp (bytes.getData(), "FRVM", 4) == 0 && bytes[flagPosition] == 1;
}

MVSmartPtr<MVRiffPacker> makeForm (const MVBankListEntry& entry, const MVSmartPtr<MVMetaData>& metadata)
{
    auto form = makeSmart<MVRiffPacker> (bankForm);
    form->addChild (entry.uuid.packRiff (uuidChunk));
    addTextChunk (*form, pathChunk, MVString (entry.file.getFullPathName().toRawUTF8()));
    if (metadata)
        form->addChild (metadata->packRiff());
    addChunk (*form, selectedChunk, static_cast<std::uint8_t> (entry.selected ? 1 : 0));
    return form;
}

/** Gives an entry another identity, in its form too; what else is stored stays as it is. */
void takeIdentity (MVBankListEntry& entry, const MVBankUuid& uuid)
{
    auto form = makeSmart<MVRiffPacker> (bankForm);
    form->addChild (uuid.packRiff (uuidChunk));
    for (int i = 0; i < entry.form->childCount(); ++i)
        if (auto child = entry.form->childAt (i); child->getChunkId() != uuidChunk)
            form->addChild (child);
    entry.uuid = uuid;
    entry.form = form;
}

/** Where each key of a list stands. */
using Places = std::unordered_map<std::string, std::size_t>;

Places placesOf (const std::vector<std::string>& keys)
{
    Places places;
    for (std::size_t i = 0; i < keys.size(); ++i)
        places.emplace (keys[i], i);
    return places;
}

/** The keys for which the test holds, in order. */
template <typename Test>
std::vector<std::string> filtered (const std::vector<std::string>& keys, Test test)
{
    std::vector<std::string> result;
    std::copy_if (keys.begin(), keys.end(), std::back_inserter (result), test);
    return result;
}

} // namespace

MVBankListEntry MVBankListEntry::make (const juce::File& file, const MVBankUuid& uuid, bool selected,
                                       const MVSmartPtr<MVMetaData>& metadata)
{
    MVBankListEntry entry { file, uuid, selected, {} };
    entry.form = makeForm (entry, metadata);

    // A bank's metadata may be nested as deep as a tree may be, and would then make the list too deep to be written.
    // It is not read back.
    MVBankList probe;
    probe.entries.push_back (entry);
    if (probe.pack()->totalSize() < 1)
        entry.form = makeForm (entry, {});
    return entry;
}

MVBankListEntry MVBankListEntry::parse (const MVSmartPtr<MVRiffPacker>& form)
{
    const auto path = childText (*form, pathChunk);
    MVBankListEntry entry;
    entry.file = path ? toFile (*path) : juce::File();
    if (! entry.uuid.unpackRiff (form->findChild (uuidChunk)))
        entry.uuid = MVBankUuid::createRandom();
    entry.selected = childNumber<std::uint8_t> (*form, selectedChunk).value_or (0) != 0;
    entry.form = form;
    return entry;
}

bool MVBankList::parse (const juce::MemoryBlock& bytes, MVBankList& list)
{
    list.entries.clear();
    const MVRiffPacker packer (bytes.getData(), static_cast<int> (bytes.getSize()), carriesChecksum (bytes));
    if (! packer.isWellFormed() || packer.getChunkId() != listForm)
        return false;

    for (int i = 0; i < packer.childCount(); ++i)
        if (const auto form = packer.childAt (i); form->getChunkId() == bankForm)
            list.entries.push_back (MVBankListEntry::parse (form));
    return true;
}

MVBankListState MVBankList::read (const juce::File& file, MVBankList& list, juce::MemoryBlock& bytes)
{
    list.entries.clear();
    bytes.reset();
    if (! file.exists())
        return MVBankListState::missing;
    if (! readFileContents (file, bytes))
        return MVBankListState::unreadable;
    if (bytes.isEmpty())
        return MVBankListState::empty;
    return parse (bytes, list) ? MVBankListState::good : MVBankListState::damaged;
}

MVBankListState MVBankList::read (const juce::File& file, MVBankList& list)
{
    juce::MemoryBlock bytes;
    return read (file, list, bytes);
}

MVSmartPtr<MVDataBlock> MVBankList::pack() const
{
    auto packer = makeSmart<MVRiffPacker> (listForm);
    for (const auto& entry : entries)
        packer->addChild (MVSmartPtr<MVRiffPacker> (entry.form));
    return packChunks (packer);
}

bool MVBankList::edit (const juce::File& file, const std::function<bool (MVBankList&)>& change, MVBankListState& state)
{
    const MVDirectoryLock lock (file.getParentDirectory());
    MVBankList list;
    juce::MemoryBlock former;
    state = read (file, list, former);
    if (state == MVBankListState::damaged || state == MVBankListState::unreadable || ! change (list))
        return false;

    const auto packed = list.pack();
    const auto bytes = bytesOf (packed);
    return ! bytes.empty() && ! isWriteProtected (file)
           && (former.isEmpty() || replaceFileContents (backupSiblingOf (file), former.getData(), former.getSize()))
           && replaceFileContents (file, bytes.data(), bytes.size());
}

std::vector<std::string> MVBankList::keys() const
{
    std::vector<std::string> result;
    std::map<std::string, int> occurrences;
    for (const auto& entry : entries)
    {
        const auto path = entry.file.getFullPathName().toStdString();
        result.push_back (path + '\n' + std::to_string (occurrences[path]++));
    }
    return result;
}

void MVBankList::insertMissing (const MVBankList& other, const std::function<bool (const std::string& key)>& isWanted)
{
    // What is here already keeps its order; each newcomer stands right behind its nearest predecessor, so that a run of
    // newcomers stays together.
    const auto otherKeys = other.keys();
    const auto here = placesOf (keys());
    std::vector<std::vector<std::size_t>> newcomers (entries.size() + 1);
    std::size_t behind = 0;
    for (std::size_t i = 0; i < otherKeys.size(); ++i)
    {
        if (const auto found = here.find (otherKeys[i]); found != here.end())
            behind = found->second + 1;
        else if (isWanted (otherKeys[i]))
            newcomers[behind].push_back (i);
    }

    std::vector<MVBankListEntry> joined;
    for (std::size_t i = 0; i < newcomers.size(); ++i)
    {
        for (const auto newcomer : newcomers[i])
            joined.push_back (other.entries[newcomer]);
        if (i < entries.size())
            joined.push_back (entries[i]);
    }
    entries = std::move (joined);
}

MVBankList MVBankList::merge (const MVBankList& base, const MVBankList& ours, const MVBankList& theirs)
{
    const auto baseKeys = base.keys();
    const auto ourKeys = ours.keys();
    const auto theirKeys = theirs.keys();
    const auto inBase = placesOf (baseKeys);
    const auto inOurs = placesOf (ourKeys);
    const auto inTheirs = placesOf (theirKeys);

    const auto survives = [&] (const std::string& key)
    { return inBase.count (key) == 0 || (inOurs.count (key) != 0 && inTheirs.count (key) != 0); };
    const auto isCommon = [&] (const std::string& key)
    { return inBase.count (key) != 0 && inOurs.count (key) != 0 && inTheirs.count (key) != 0; };

    const auto common = filtered (baseKeys, isCommon);
    const bool weMoved = filtered (ourKeys, isCommon) != common;
    const bool theyMoved = filtered (theirKeys, isCommon) != common;
    const bool oursLeads = weMoved || ! theyMoved;
    const auto& leader = oursLeads ? ours : theirs;
    const auto& leaderKeys = oursLeads ? ourKeys : theirKeys;

    MVBankList merged;
    for (std::size_t i = 0; i < leaderKeys.size(); ++i)
        if (survives (leaderKeys[i]))
            merged.entries.push_back (leader.entries[i]);
    merged.insertMissing (oursLeads ? theirs : ours, survives);

    const auto mergedKeys = merged.keys();
    for (std::size_t i = 0; i < mergedKeys.size(); ++i)
    {
        const auto our = inOurs.find (mergedKeys[i]);
        const auto their = inTheirs.find (mergedKeys[i]);
        if (our == inOurs.end() || their == inTheirs.end())
            continue;

        auto& entry = merged.entries[i];
        entry = ours.entries[our->second];
        // Of a bank that both added, the identity that is on disk already may be in somebody's stored state.
        const auto before = inBase.find (mergedKeys[i]);
        if (before == inBase.end() || base.entries[before->second].uuid == entry.uuid)
            takeIdentity (entry, theirs.entries[their->second].uuid);
    }
    return merged;
}

bool MVBankList::askToPurge (MVUserPrompt& prompt)
{
    return prompt.askYesNo ("Load Banks Failure",
                            "Ondrelith has detected that persistent state for your loaded banks is corrupt.  "
                            "Do you wish to purge this state and load reload banks manually (recommended)?");
}

} // namespace morvanelab
