// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/MVPatchText.h"
#include "engine/PatchTextChunks.h"
#include "engine/StoredOperator.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace morvanelab
{

/** Compiles a parsed text into a patch tree. One use an instance. */
class PatchTextReader
{
public:
    PatchTextReader (const patchText::Json& root, std::string sourceName);

    /** Raises MVException for anything the text gets wrong. */
    MVPatchText::Compiled compile();

private:
    using Json = patchText::Json;

    struct Entry
    {
        std::optional<StoredOperator> op;
        MVSmartPtr<MVRiffPacker> raw; ///< set where the text gives chunks
    };

    void checkKeys (const Json& object, const TextPlace& where, std::initializer_list<const char*> allowed) const;
    MVSmartPtr<MVRiffPacker> compileHead();
    MVSmartPtr<MVMetaData> compileMetadata() const;
    void declareOperators (const Json& list);
    Entry declareOperator (const Json& json, std::size_t index, const TextPlace& where);
    void readRecord (StoredOperator& op, const Json& json, const TextPlace& where) const;
    void connect (std::size_t index, const Json& json, const TextPlace& where);
    void connectInput (std::size_t index, int port, const Json& json, const TextPlace& where);
    int controlFrom (const Json& json, const TextPlace& where) const;
    int outputFrom (const Entry& source, const Json* label, const TextPlace& where) const;

    const Json& root;
    TextPlace place;
    std::vector<std::string> parameterNames;
    std::vector<Entry> entries;
    std::map<std::string, std::size_t> indexByName;
};

} // namespace morvanelab
