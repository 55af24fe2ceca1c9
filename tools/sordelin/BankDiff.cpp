// SPDX-License-Identifier: GPL-3.0-or-later
#include "BankDiff.h"

#include "BankSlots.h"
#include "SafeText.h"
#include "StoredMetadata.h"

#include "banks/MVBankBytes.h"
#include "foundation/MVMath.h"

#include <algorithm>

namespace morvanelab
{

using patchText::Json;
using patchText::member;

namespace
{

using Fields = std::vector<std::string>;

Bytes chunkBytes (const Bytes& slotData, std::uint32_t chunkId)
{
    const auto form = parseChunks (spanOf (slotData));
    const auto chunk = form ? form->findChild (chunkId) : MVSmartPtr<MVRiffPacker>();
    return chunk ? patchText::packed (*chunk) : Bytes();
}

Fields slotDataFields (const Bytes& a, const Bytes& b)
{
    Fields fields;
    if (patchIn (a) != patchIn (b))
        fields.emplace_back ("patch");
    if (chunkBytes (a, fourCC ("pcom")) != chunkBytes (b, fourCC ("pcom")))
        fields.emplace_back ("comment");
    if (chunkBytes (a, fourCC ("pane")) != chunkBytes (b, fourCC ("pane")))
        fields.emplace_back ("panel");
    if (fields.empty() && a != b)
        fields.emplace_back ("slot form");
    return fields;
}

Fields metadataDifferences (const Bytes& a, const Bytes& b)
{
    const Json inA = metadataFields (a), inB = metadataFields (b);
    Fields fields;
    for (const auto& [key, value] : inA.items())
        if (const Json* const other = member (inB, key.c_str()); other == nullptr || *other != value)
            fields.push_back (key);
    for (const auto& [key, value] : inB.items())
        if (member (inA, key.c_str()) == nullptr)
            fields.push_back (key);
    if (fields.empty() && a != b)
        fields.emplace_back ("metadata form");
    return fields;
}

std::string nameIn (const MVSmartPtr<MVMetaData>& metadata) { return printableText (metadata->getName().view()); }

} // namespace

std::vector<BankDifference> compareBanks (const std::string& pathA, const std::string& pathB)
{
    const auto a = openBank (pathA), b = openBank (pathB);
    std::vector<BankDifference> differences;
    using Kind = BankDifference::Kind;

    if (Fields fields = metadataDifferences (readStoredBankMeta (*a), readStoredBankMeta (*b)); ! fields.empty())
        differences.push_back ({ BankDifference::wholeBank, Kind::contents, nameIn (a->getBankMeta()),
                                 nameIn (b->getBankMeta()), std::move (fields) });

    for (int slot = 0; slot < MVBankFile::maxPatchesPerBank; ++slot)
    {
        const StoredSlot inA = readStoredSlot (*a, slot), inB = readStoredSlot (*b, slot);
        const bool usedInA = isOccupied (inA.data), usedInB = isOccupied (inB.data);
        BankDifference difference {
            slot, Kind::contents, nameIn (a->getPatchMeta (slot)), nameIn (b->getPatchMeta (slot)), {}
        };
        if (usedInA != usedInB)
            difference.kind = usedInA ? Kind::onlyInA : Kind::onlyInB;
        else
        {
            difference.fields = slotDataFields (inA.data, inB.data);
            std::ranges::copy (metadataDifferences (inA.metadata, inB.metadata),
                               std::back_inserter (difference.fields));
        }

        if (usedInA != usedInB || ! difference.fields.empty())
            differences.push_back (std::move (difference));
    }

    return differences;
}

std::string bankDifferencesAsText (const std::vector<BankDifference>& differences, const std::string& pathA,
                                   const std::string& pathB)
{
    std::string text;
    for (const BankDifference& difference : differences)
    {
        text +=
            difference.slot == BankDifference::wholeBank ? "bank: " : "slot " + std::to_string (difference.slot) + ": ";
        if (difference.kind == BankDifference::Kind::onlyInA)
            text += "only in " + pathA + " \"" + difference.nameInA + "\"";
        else if (difference.kind == BankDifference::Kind::onlyInB)
            text += "only in " + pathB + " \"" + difference.nameInB + "\"";
        else
        {
            std::string fields;
            for (const std::string& field : difference.fields)
                fields += (fields.empty() ? "" : ", ") + field;
            text += fields + " \"" + difference.nameInA + "\"";
            if (difference.nameInB != difference.nameInA)
                text += " \"" + difference.nameInB + "\"";
        }
        text += "\n";
    }
    return text;
}

std::string bankDifferencesAsJson (const std::vector<BankDifference>& differences)
{
    Json list = Json::array();
    for (const BankDifference& difference : differences)
    {
        Json row;
        row["slot"] = difference.slot == BankDifference::wholeBank ? Json() : Json (difference.slot);
        row["onlyIn"] = difference.kind == BankDifference::Kind::onlyInA   ? Json ("a")
                        : difference.kind == BankDifference::Kind::onlyInB ? Json ("b")
                                                                           : Json();
        row["nameInA"] = difference.nameInA;
        row["nameInB"] = difference.nameInB;
        row["fields"] = difference.fields;
        list.push_back (std::move (row));
    }
    return list.dump (2) + "\n";
}

} // namespace morvanelab
