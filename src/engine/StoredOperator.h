// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVRiffPacker.h"
#include "foundation/MVSmartPtr.h"
#include "operators/OperatorSpec.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace morvanelab
{

/** One operator as it lies in a patch tree, without an instance of its class: nothing is folded or looked up. */
struct StoredOperator
{
    struct Input
    {
        double scale = 1.0;
        std::int32_t control = -1;
    };

    struct Route
    {
        std::int32_t sourceDelta = 0; ///< the source's position minus this operator's
        std::int32_t output = 0;      ///< port of the source
        std::int32_t input = 0;       ///< port of this operator
    };

    /** What today's writers store: major, minor, revision, build. */
    static constexpr std::array<std::uint32_t, 4> currentVersion { 1, 4, 0, 1 };

    const OperatorSpec* spec = nullptr; ///< never null in a complete one
    std::vector<std::byte> record;      ///< spec->attributeSize bytes
    std::uint64_t id = 0;
    std::array<std::uint32_t, 4> version = currentVersion;
    std::vector<Input> inputs; ///< one for each input port
    std::vector<Route> routes;

    /** A new operator of a class: its record and ports as constructed. */
    static StoredOperator ofClass (const OperatorSpec& spec);
    /** Reads an 'op  ' chunk. None if this class is unknown, its record is of another layout, or anything in the
        chunk would not be written back as it stands. */
    static std::optional<StoredOperator> fromChunk (const MVRiffPacker& chunk);

    MVSmartPtr<MVRiffPacker> toChunk() const;

    /** Ports that an operator with this record has. */
    int portCount (int direction) const { return spec->portCount (record.data(), direction); }
    /** How a text calls a port: its name without blanks at the ends, or # and its index where another port has the
        same name. */
    std::string portLabel (int direction, int port) const;
    /** The port of a label, or -1. */
    int findPort (int direction, const std::string& label) const;
};

} // namespace morvanelab
