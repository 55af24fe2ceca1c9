// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

namespace morvanelab
{

/** How one slot, or the bank as such, differs between two banks. */
struct BankDifference
{
    enum class Kind
    {
        onlyInA,
        onlyInB,
        contents
    };

    static constexpr int wholeBank = -1;

    int slot; ///< 0 to 63, or wholeBank
    Kind kind;
    std::string nameInA;
    std::string nameInB;
    /** "patch", "comment", "panel", "slot form", the keys of metadata, "metadata form". A form differs when the parts
       are equal and the stored bytes are not. */
    std::vector<std::string> fields;
};

/** Nothing if every compartment of the banks holds the same bytes. Throws badData or MVException. */
std::vector<BankDifference> compareBanks (const std::string& pathA, const std::string& pathB);

/** One line a difference. */
std::string bankDifferencesAsText (const std::vector<BankDifference>& differences, const std::string& pathA,
                                   const std::string& pathB);
/** An array of objects: slot (null for the bank itself), onlyIn ("a", "b" or null), nameInA, nameInB, fields. */
std::string bankDifferencesAsJson (const std::vector<BankDifference>& differences);

} // namespace morvanelab
