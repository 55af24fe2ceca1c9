// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpGate.h"

#include <bit>
#include <cmath>
#include <cstdint>

namespace morvanelab
{

namespace
{

constexpr int balancedAtZero = 1;

constexpr ChoiceSpec centerChoices[] { { balancedAtZero, "Balanced at zero" }, { 2, "Balanced at Half" } };

constexpr ParameterSpec parameters[] { choiceSpec ("Center Mix Pos", "Input position where mix is balanced",
                                                   offsetof (GateAttributes, centerMixPos), centerChoices,
                                                   balancedAtZero) };

constexpr const char* inputNames[] { "Signal A", "Signal B", "A/B Mix Balance" };
constexpr const char* outputNames[] { "Gate-mixed Signal" };

/** value, or 0 if the top bit of bits is 0. Comparisons would keep the loop out of vectors. */
double keepIfTopBit (std::uint64_t bits, double value)
{
    return std::bit_cast<double> (std::bit_cast<std::uint64_t> (value) & (0 - (bits >> 63)));
}

/** What lies behind the point of a size; 0 for one that is not finite. */
double fractionOf (double size)
{
    // From here on doubles are whole; adding it rounds smaller ones to a whole number.
    constexpr double whole = 4503599627370496.0;
    const auto belowWhole = std::bit_cast<std::uint64_t> (size) - std::bit_cast<std::uint64_t> (whole);
    const double x = keepIfTopBit (belowWhole, size);
    const double past = x - ((x + whole) - whole);
    return past + keepIfTopBit (std::bit_cast<std::uint64_t> (past), 1.0);
}

template <bool isBalancedAtZero>
void mix (double* out, const double* a, const double* b, const double* balance, int frames, double scale)
{
    for (int i = 0; i < frames; ++i)
    {
        const double x = balance[i] * scale;
        const double fraction = fractionOf (std::abs (x));
        const double m = isBalancedAtZero ? (std::copysign (fraction, x) + 1.0) * 0.5 : fraction;
        out[i] = (1.0 - m) * b[i] + m * a[i];
    }
}

} // namespace

constinit const OperatorSpec MVOpGate::spec {
    .typeId = 0xA7001A,
    .className = "MVOpGate",
    .shortName = "Gate",
    .description = "An A/B continuous signal gate.",
    .numInputs = 3,
    .numOutputs = 1,
    .inputNames = inputNames,
    .outputNames = outputNames,
    .attributeSize = sizeof (GateAttributes),
    .parameters = parameters,
};

MVOpGate::MVOpGate (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpGate::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                        int frames, const MVOpExecDesc& desc)
{
    const double scale = getInputScale (2) * controlFactor (2);

    if (values.centerMixPos == balancedAtZero)
        mix<true> (outputs[0], inputs[0], inputs[1], inputs[2], frames, scale);
    else
        mix<false> (outputs[0], inputs[0], inputs[1], inputs[2], frames, scale);

    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

} // namespace morvanelab
