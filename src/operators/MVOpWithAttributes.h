// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/MVOperator.h"

#include <bit>
#include <type_traits>

namespace morvanelab
{

static_assert (std::endian::native == std::endian::little, "attribute records are stored little-endian");

/** The record of a class without parameters. */
struct NoAttributes
{
};

/** What a concrete operator stands on: its attribute record, its size, and clone.

    Operator is the class itself; it has a static member spec, a constructor taking the render attributes and a
    stored chunk (which may be null), and ends that constructor with setAttributes (nullptr). Attributes is a
    plain record, stored byte for byte. */
template <class Operator, class Attributes>
class MVOpWithAttributes : public MVOperator
{
    static_assert (std::is_trivially_copyable_v<Attributes> && std::is_standard_layout_v<Attributes>);

public:
    MVOperator* clone() const override { return new Operator (static_cast<const Operator&> (*this)); }
    std::size_t runtimeBytes() const override { return sizeof (Operator); }

    using MVOperator::attributeData;
    void* attributeData() override
    {
        if constexpr (std::is_empty_v<Attributes>)
            return nullptr;
        else
            return &values;
    }

    int attributeSize() const override { return std::is_empty_v<Attributes> ? 0 : int { sizeof (Attributes) }; }

protected:
    MVOpWithAttributes (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& storedChunk)
        : MVOperator (Operator::spec, renderAttributes, storedChunk)
    {
        if constexpr (! std::is_empty_v<Attributes>)
            readRecord (storedChunk, &values);
    }

    MVOpWithAttributes (const MVOpWithAttributes&) = default;

    /** The record, always folded once the object is made. */
    Attributes values;
};

} // namespace morvanelab
