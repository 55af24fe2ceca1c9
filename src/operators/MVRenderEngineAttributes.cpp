// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVRenderEngineAttributes.h"

#include "foundation/MVChunks.h"
#include "foundation/MVMath.h"

namespace morvanelab
{

namespace
{
/** What the 16 stored bits of a class are added to. */
constexpr std::uint32_t operatorIdBase = 0xA70000;
} // namespace

MVRenderEngineAttributes::MVRenderEngineAttributes() = default;
MVRenderEngineAttributes::~MVRenderEngineAttributes() = default;

MVOperator* MVRenderEngineAttributes::createOperator (const MVSmartPtr<MVRiffPacker>& opChunk)
{
    if (! opChunk)
        return nullptr;

    const auto number = childNumber<std::uint16_t> (*opChunk, fourCC ("clas"));
    MVVirtualOperatorFactory* const factory = number ? operatorFactoryFor (operatorIdBase + *number) : nullptr;
    return factory != nullptr ? factory->create (this, opChunk) : nullptr;
}

MVVirtualOperatorFactory* MVRenderEngineAttributes::operatorFactoryFor (std::uint32_t typeId)
{
    const auto* const found = operatorFactories.find (typeId);
    return found != nullptr ? found->get() : nullptr;
}

void MVRenderEngineAttributes::addOperatorFactory (std::uint32_t typeId,
                                                   std::unique_ptr<MVVirtualOperatorFactory> factory)
{
    operatorFactories.insert (typeId) = std::move (factory);
}

} // namespace morvanelab
