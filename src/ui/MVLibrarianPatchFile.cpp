// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVLibrarianPatchFile.h"

#include "banks/MVBankBytes.h"
#include "banks/MVFileSwap.h"
#include "foundation/MVException.h"
#include "foundation/MVMath.h"
#include "foundation/MVResult.h"
#include "ui/MVLibrarianText.h"

namespace morvanelab
{

namespace
{

constexpr juce::int64 largestPatchFile = 64 << 20;

std::vector<std::uint8_t> toBytes (const MVSmartPtr<MVDataBlock>& block)
{
    const auto bytes = bytesOf (block);
    return { bytes.begin(), bytes.end() };
}

MVSmartPtr<MVDataBlock> toBlock (const std::vector<std::uint8_t>& bytes)
{
    return makeSmart<MVDataBlock> (bytes.data(), static_cast<int> (bytes.size()));
}

/** The tree in a file's bytes, its checksum verified as the player does. */
MVSmartPtr<MVRiffPacker> parseVerified (const MVSmartPtr<MVDataBlock>& block)
{
    const auto bytes = bytesOf (block);
    auto tree = makeSmart<MVRiffPacker> (bytes.data(), static_cast<int> (bytes.size()), true);
    if (! tree->isWellFormed())
        throw MVException (resultFailed, "Error:  Invalid patch data.");
    return tree;
}

void requirePatch (const MVSmartPtr<MVDataBlock>& patch)
{
    if (parseVerified (patch)->getChunkId() != fourCC ("ptch"))
        throw MVException (resultFailed, "Error:  Not a well-formed patch.");
}

} // namespace

MVSlotBytes readPatchFile (const juce::File& file)
{
    juce::MemoryBlock bytes;
    if (file.getSize() > largestPatchFile || ! file.existsAsFile() || ! file.loadFileAsData (bytes))
        throw MVException (resultFileUnreadable, "File read access not allowed.");

    const auto contents = makeSmart<MVDataBlock> (bytes.getData(), static_cast<int> (bytes.getSize()));
    const auto tree = parseVerified (contents);
    MVMetaData metadata;
    auto patch = contents;
    MVSmartPtr<MVDataBlock> formerSlot;
    if (tree->getChunkId() == fourCC ("RIFF"))
    {
        formerSlot = contents;
        patch = MVBankFile::unpackSlot (contents);
        if (const auto stored = tree->findChild (MVMetaData::chunkType))
            metadata.unpackRiff (*stored);
    }
    requirePatch (patch);

    if (metadata.getName().isEmpty())
        metadata.setName (toStoredText (file.getFileNameWithoutExtension()));
    return { toBytes (MVBankFile::packSlot (patch, formerSlot)), toBytes (packChunks (metadata.packRiff())) };
}

void writePatchFile (const MVSlotBytes& slot, const juce::File& file)
{
    const auto patch = slot.isOccupied() ? MVBankFile::unpackSlot (toBlock (slot.patch)) : makeSmart<MVDataBlock>();
    const auto bytes = bytesOf (patch);
    if (bytes.empty())
        throw MVException (resultFailed, "Error:  Invalid or corrupt patch.");
    if (! replaceFileContents (file, bytes.data(), bytes.size()))
        throw MVException (resultFileFailure, "Could not write to file");
}

} // namespace morvanelab
