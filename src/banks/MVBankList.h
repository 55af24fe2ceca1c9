// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVBankUuid.h"
#include "foundation/MVDataBlock.h"
#include "foundation/MVRiffPacker.h"
#include "foundation/MVSmartPtr.h"

#include <juce_core/juce_core.h>

#include <functional>
#include <string>
#include <vector>

namespace morvanelab
{

class MVMetaData;
class MVUserPrompt;

/** A bank as the list names it. */
struct MVBankListEntry
{
    juce::File file; ///< empty unless the stored path is a whole path in valid UTF-8
    MVBankUuid uuid; ///< a fresh one if none is stored
    bool selected = false;
    MVSmartPtr<MVRiffPacker> form; ///< as stored, or as it is to be stored; never null in a list that was read

    /** An entry with its form. The metadata, which may be null, is for other programs: nobody reads it back. */
    static MVBankListEntry make (const juce::File& file, const MVBankUuid& uuid, bool selected,
                                 const MVSmartPtr<MVMetaData>& metadata);
    /** The entry of a form 'bank'. */
    static MVBankListEntry parse (const MVSmartPtr<MVRiffPacker>& form);
};

/** What a path holds when a list is looked for. */
enum class MVBankListState
{
    missing,
    empty, ///< of no length: a valid list without banks
    good,
    damaged,   ///< bytes that are no list
    unreadable ///< no plain file, no permission, or too large
};

/** The contents of a ".mv_bankmgr" file, without opening the banks that it names.

    The file is a packed form 'bmgr' with a root checksum and one form 'bank' for each bank, holding 'uuid' (the 16
    identity bytes as payload), 'path' (the full path, UTF-8, as a packed MVString), the bank's metadata ('meta', not
    read back) and 'selc' (one byte).

    An entry is recognised in another version of the list by its file, and by its place among the entries of one
    file: identities change. Any one thread. */
class MVBankList
{
public:
    /** Asks whether a damaged list may be purged; true for yes. The caller then keeps its bytes. Where the prompt
        may be used. */
    static bool askToPurge (MVUserPrompt& prompt);

    std::vector<MVBankListEntry> entries;

    /** Reads a file; bytes receives all it holds, also if damaged. The list is empty unless good. Raises nothing. */
    static MVBankListState read (const juce::File& file, MVBankList& list, juce::MemoryBlock& bytes);
    static MVBankListState read (const juce::File& file, MVBankList& list);
    /** False, with an empty list, if the bytes are no list. */
    static bool parse (const juce::MemoryBlock& bytes, MVBankList& list);

    /** The packed list; empty if it cannot be packed. Never null. */
    MVSmartPtr<MVDataBlock> pack() const;

    /** Changes a list file in place, safe against other writers and against being killed: reads it, applies the change,
        keeps the former contents under "_bak" and writes it anew. Fails, with nothing written, if the file is
        damaged or unreadable (state tells), if change returns false, or if the disk does not take it. A missing file
        counts as an empty list. The files of the banks are not touched. */
    static bool edit (const juce::File& file, const std::function<bool (MVBankList&)>& change, MVBankListState& state);

    /** Joins two lists that both began as base: what either added stays, at its place as well as it goes; what either
        removed is gone; the order is ours if we changed it, else theirs. An identity that we have not changed is
        theirs; the rest of an entry is ours where we have it. */
    static MVBankList merge (const MVBankList& base, const MVBankList& ours, const MVBankList& theirs);

    /** Inserts the entries of another list that are wanted and missing here, each behind its predecessor there. */
    void insertMissing (const MVBankList& other, const std::function<bool (const std::string& key)>& isWanted);

    /** What recognises each entry, in order: unique within the list. */
    std::vector<std::string> keys() const;
};

} // namespace morvanelab
