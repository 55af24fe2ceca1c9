// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOperatorTable.h"

#include "operators/MVOpConstantPcm.h"
#include "operators/MVOpInput.h"
#include "operators/MVOpMidiKeyIn.h"
#include "operators/MVOpNoise.h"
#include "operators/MVOpOscillator.h"
#include "operators/MVOpOutput.h"
#include "operators/MVOpPassThrough.h"
#include "operators/MVOpProduct.h"
#include "operators/MVOpPulseWidthModulator.h"
#include "operators/MVOpRouter.h"
#include "operators/MVOpSum.h"
#include "operators/MVOperatorClassFactory.h"

#include <algorithm>
#include <iterator>

namespace morvanelab
{

namespace
{

template <class Operator>
constexpr OperatorRow row()
{
    return { &Operator::spec, []() -> std::unique_ptr<MVVirtualOperatorFactory> {
                return std::make_unique<MVOperatorClassFactory<Operator>>();
            } };
}

// The order is the one of registration.
constexpr OperatorRow table[] {
    row<MVOpOutput>(),  row<MVOpOscillator>(),          row<MVOpConstantPcm>(), row<MVOpSum>(),
    row<MVOpProduct>(), row<MVOpMidiKeyIn>(),           row<MVOpPassThrough>(), row<MVOpInput>(),
    row<MVOpNoise>(),   row<MVOpPulseWidthModulator>(), row<MVOpRouter>()
};

template <typename Predicate>
const OperatorSpec* findSpec (Predicate predicate)
{
    const auto* const found =
        std::find_if (std::begin (table), std::end (table), [&] (const OperatorRow& r) { return predicate (*r.spec); });
    return found != std::end (table) ? found->spec : nullptr;
}

} // namespace

std::span<const OperatorRow> operatorTable() { return table; }

const OperatorSpec* findOperatorSpec (std::uint32_t typeId)
{
    return findSpec ([typeId] (const OperatorSpec& spec) { return spec.typeId == typeId; });
}

const OperatorSpec* findOperatorSpec (std::string_view classOrShortName)
{
    return findSpec ([classOrShortName] (const OperatorSpec& spec)
                     { return classOrShortName == spec.className || classOrShortName == spec.shortName; });
}

void registerOperators (MVRenderEngineAttributes& attributes)
{
    for (const OperatorRow& operatorRow : operatorTable())
        attributes.addOperatorFactory (operatorRow.spec->typeId, operatorRow.makeFactory());
}

} // namespace morvanelab
