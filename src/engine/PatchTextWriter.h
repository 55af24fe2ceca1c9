// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/PatchTextChunks.h"
#include "engine/StoredOperator.h"

#include <optional>
#include <string>
#include <vector>

namespace morvanelab
{

/** Puts a stored patch tree into words. One use an instance. */
class PatchTextWriter
{
public:
    explicit PatchTextWriter (const MVRiffPacker& patch) : tree (patch) {}

    /** The whole tree with operators and ports by name. It may not compile to the same bytes where the tree
        holds more than the words can tell; the caller compares. */
    patchText::Json write();

private:
    using Json = patchText::Json;

    struct Entry
    {
        std::string name;
        std::optional<StoredOperator> op;
        MVSmartPtr<MVRiffPacker> chunk;
    };

    void collectOperators();
    Json writeParameters();
    Json writeOperator (std::size_t index) const;
    void writeRecord (Json& json, const StoredOperator& op) const;
    void writeInputs (Json& json, std::size_t index) const;
    Json writeControl (int control) const;
    bool isNamed (std::size_t index, const StoredOperator::Route& route) const;

    const MVRiffPacker& tree;
    std::vector<Entry> entries;
    std::vector<std::string> parameterNames;
};

} // namespace morvanelab
