// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVBankFileManager.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace morvanelab
{

/** A slot of a bank in the list. */
struct MVPatchAddress
{
    int bank = -1;
    int slot = -1;

    bool operator== (const MVPatchAddress&) const = default;
    auto operator<=> (const MVPatchAddress&) const = default;
};

/** What is shown of a slot. Texts are fit to be drawn; the metadata is as stored, but without its image. */
struct MVSlotInfo
{
    bool occupied = false;
    MVSmartPtr<MVMetaData> metadata = makeSmart<MVMetaData>(); ///< never null
    juce::String name; ///< "unnamed" for a patch without a name, empty for an empty slot
    juce::String author;
    juce::String genre;
};

/** What is shown of a bank. */
struct MVBankInfo
{
    juce::File file;
    MVBankUuid uuid;
    juce::String name; ///< the stored one, else the file's
    juce::String author;
    juce::String description;
    int usedSlots = 0;
    bool readable = false; ///< false: the file has gone or cannot be read; every slot then shows as empty
    std::array<MVSlotInfo, MVBankFile::maxPatchesPerBank> slots;
};

/** The metadata of all slots of all banks, read from the files once and again only where a bank has changed: searching
    and drawing touch no file. Message thread. */
class MVLibrarianCatalogue
{
public:
    MVLibrarianCatalogue();
    ~MVLibrarianCatalogue();

    /** Follows the manager's list; the caller holds the manager's lock. A bank is read again if its identity, its
       file's size or the head of its file (which holds a checksum) has changed. Returns whether anything did. */
    bool update (MVBankFileManager& manager);
    /** The next update reads that bank again whatever its file looks like. */
    void forget (const juce::File& bankFile);

    int bankCount() const { return static_cast<int> (banks.size()); }
    /** A bank by its place in the list; an empty one out of range. */
    const MVBankInfo& bank (int index) const;
    /** A slot; an empty one out of range. */
    const MVSlotInfo& slot (MVPatchAddress address) const;
    int indexOf (const juce::File& bankFile) const;

    /** How many banks have been read from disk so far; for tests and diagnostics. */
    int readCount() const { return reads; }

private:
    struct Entry;

    std::vector<std::shared_ptr<Entry>> banks;
    int reads = 0;
};

} // namespace morvanelab
