// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOperatorTable.h"

#include "operators/MVOpAdsrEnvelope.h"
#include "operators/MVOpBiquad.h"
#include "operators/MVOpConstantPcm.h"
#include "operators/MVOpDelay.h"
#include "operators/MVOpEnvFollower.h"
#include "operators/MVOpExponential.h"
#include "operators/MVOpFreqTweaker.h"
#include "operators/MVOpGate.h"
#include "operators/MVOpInput.h"
#include "operators/MVOpMidiKeyIn.h"
#include "operators/MVOpNoise.h"
#include "operators/MVOpOscillator.h"
#include "operators/MVOpOutput.h"
#include "operators/MVOpPassThrough.h"
#include "operators/MVOpPitchTracker.h"
#include "operators/MVOpProduct.h"
#include "operators/MVOpPulseWidthModulator.h"
#include "operators/MVOpRouter.h"
#include "operators/MVOpSampleHold.h"
#include "operators/MVOpSampler.h"
#include "operators/MVOpSignalShaper.h"
#include "operators/MVOpSlawvox.h"
#include "operators/MVOpSmoother.h"
#include "operators/MVOpSum.h"
#include "operators/MVOpTimeSequencer.h"
#include "operators/MVOpValueSequencer.h"
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
constexpr OperatorRow table[] { row<MVOpOutput>(),         row<MVOpOscillator>(),
                                row<MVOpConstantPcm>(),    row<MVOpSum>(),
                                row<MVOpProduct>(),        row<MVOpDelay>(),
                                row<MVOpMidiKeyIn>(),      row<MVOpSignalShaper>(),
                                row<MVOpAdsrEnvelope>(),   row<MVOpPassThrough>(),
                                row<MVOpInput>(),          row<MVOpEnvFollower>(),
                                row<MVOpPitchTracker>(),   row<MVOpBiquad>(),
                                row<MVOpExponential>(),    row<MVOpSampler>(),
                                row<MVOpNoise>(),          row<MVOpFreqTweaker>(),
                                row<MVOpValueSequencer>(), row<MVOpTimeSequencer>(),
                                row<MVOpSampleHold>(),     row<MVOpPulseWidthModulator>(),
                                row<MVOpRouter>(),         row<MVOpSlawvox>(),
                                row<MVOpGate>(),           row<MVOpSmoother>() };

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
