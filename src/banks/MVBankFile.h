// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVFilePacker.h"
#include "banks/MVUserPrompt.h"
#include "foundation/MVMetaData.h"

#include <vector>

namespace morvanelab
{

/** The file packer that knows a bank's layout: a container of type "cbnk" with one 'meta' (the bank's
    MVMetaData), 64 'pmta' (the slots' MVMetaData) and 64 'pdat' (the slots' patches).

    A slot is empty when its 'pdat' is one byte long or less. A stored patch is a packed form with the root id
    'RIFF', whose child 'data' has the bytes of a patch file as payload; 'pcom' and 'pane' (comment and panel)
    are carried along unread.

    Reading and writing raise MVException as MVFilePacker tells. Not thread-safe. */
class MVBankFile : public MVFilePacker
{
public:
    static constexpr int maxPatchesPerBank = 64;
    static constexpr const char* fileExtension = ".mv_onbank";
    static constexpr std::uint32_t bankFileType = 0x63626E6B; ///< "cbnk"

    /** What a slot is to hold. */
    struct SlotContent
    {
        int index = 0;
        MVSmartPtr<MVMetaData> metadata; ///< null leaves the slot's
        MVSmartPtr<MVDataBlock> bytes;   ///< null leaves the slot's; no bytes make it empty
    };

    /** Creates an empty bank on disk and opens it: meta, then pmta and pdat of each slot in turn. The 129 compartments
        are written in one go, and appear under the file's name all at once; bytes and order are those of adding them
        one by one. Raises like createFile and writeCompartment. */
    void createBank (const juce::File& file);

    /** Whether the directory holds exactly 1 'meta', exactly 64 'pmta' and as many 'pdat'. */
    bool isLayoutValid() const;

    /** resultDone (1) for a good file. Otherwise asks whether to repair: yes repairs and yields 1, even where the
        repair cannot help; no closes the file and yields resultRepairRefused (15), the disk untouched. */
    int validateAndRepair (MVUserPrompt& prompt = MVUserPrompt::cautious());

    /** Adds what is missing: an empty 'meta', empty 'pmta' and empty 'pdat' up to 64 each, at the end. Surplus
        compartments stay. */
    void repairBank();

    /** A new object; empty if 'meta' is missing or malformed. Never null. */
    MVSmartPtr<MVMetaData> getBankMeta();
    /** Replaces 'meta'. False for null, or when there is no open file. */
    bool setBankMeta (const MVSmartPtr<MVMetaData>& meta);
    /** A new object; empty for an index outside 0 to 63 or a missing or malformed 'pmta'. Never null. */
    MVSmartPtr<MVMetaData> getPatchMeta (int index);
    /** Replaces 'pmta' number index. False for null and for an index outside 0 to 63; the file is then untouched. */
    bool setPatchMeta (int index, const MVSmartPtr<MVMetaData>& meta);

    /** The raw bytes of a slot; an empty block for an index outside 0 to 63 or a missing entry. Never null. */
    MVSmartPtr<MVDataBlock> getPatchData (int index);
    /** Replaces the raw bytes of a slot. Null or empty bytes store the single zero byte of an empty slot, since an
        empty compartment would vanish and renumber the slots behind it. An index outside 0 to 63 does nothing.
        Returns what writeCompartment returns, resultOutOfRange for a bad index. */
    int setPatchData (int index, const MVSmartPtr<MVDataBlock>& bytes);
    /** Makes a slot empty: one zero byte, and empty metadata, in one rewrite. Returns like writeSlots. */
    int clearSlot (int index);
    /** Replaces metadata and bytes of slots in one rewrite: the file holds either all or none of it. Of two contents
        for one slot the later counts. resultDone; resultOutOfRange for an index outside 0 to 63, resultEmptyData for
        metadata that cannot be packed and resultNoEntry while no file is open, all without touching the file. Raises
        like replaceCompartments. */
    int writeSlots (const std::vector<SlotContent>& slots);

    /** Whether a slot's bytes hold a patch: more than one byte. */
    static bool isOccupied (const MVSmartPtr<MVDataBlock>& bytes);

    /** Turns a slot's bytes into what the engine loads: a packed form 'RIFF' with the slot's 'data', 'pcom' and
        'pane' where they exist, then the metadata (child 'meta') unless null. Empty if the bytes are no chunk tree.
        Never null. */
    static MVSmartPtr<MVDataBlock> buildPatchStream (const MVSmartPtr<MVMetaData>& meta,
                                                     const MVSmartPtr<MVDataBlock>& bytes);

    /** A slot's stored form around the bytes of a patch file, packed with a root checksum. 'pcom' and 'pane' are taken
        over from the slot's former bytes if these are given and have them. Empty for an empty patch; never null. */
    static MVSmartPtr<MVDataBlock> packSlot (const MVSmartPtr<MVDataBlock>& patch,
                                             const MVSmartPtr<MVDataBlock>& formerSlot = {});
    /** The bytes of the patch file inside a slot's stored form; empty if the slot is empty or not well-formed.
        Never null. */
    static MVSmartPtr<MVDataBlock> unpackSlot (const MVSmartPtr<MVDataBlock>& slot);

private:
    MVSmartPtr<MVMetaData> readMeta (std::uint32_t type, int index);
};

} // namespace morvanelab
