// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpSignalShaper.h"

#include "operators/AttributeRecord.h"

namespace morvanelab
{

namespace
{

constexpr ParameterSpec parameters[] { curveSpec ("Breakpoints", "Segment Breakpoint Editor",
                                                  offsetof (SignalShaperAttributes, count)) };

constexpr const char* inputNames[] { "Input (index) Signal" };
constexpr const char* outputNames[] { "Distorted Output Signal" };

} // namespace

constinit const OperatorSpec MVOpSignalShaper::spec {
    .typeId = 0xA70008,
    .className = "MVOpSignalShaper",
    .shortName = "Signal Shaper",
    .description = "A signal distortortion curve mapper.",
    .numInputs = 1,
    .numOutputs = 1,
    .inputNames = inputNames,
    .outputNames = outputNames,
    .attributeSize = sizeof (SignalShaperAttributes),
    .parameters = parameters,
};

MVOpSignalShaper::MVOpSignalShaper (MVRenderEngineAttributes* renderAttributes,
                                    const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpSignalShaper::attributesChanged()
{
    const auto list = attributeRecord::readList (&values, parameters[0]);
    MVCurvePoint points[maxListEntries];

    for (int i = 0; i < list.count; ++i)
    {
        const auto entry = static_cast<std::size_t> (2 * i);
        points[i] = { list.values[entry], list.values[entry + 1] };
    }

    distorter.getCurve().setPoints (points, list.count);
    distorter.rebuild();
}

void MVOpSignalShaper::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                                int frames, const MVOpExecDesc& desc)
{
    scale.advance();
    distorter.process (outputs[0], inputs[0], frames, getInputScale (0) * scale.start(),
                       getInputScale (0) * scale.end());
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

} // namespace morvanelab
