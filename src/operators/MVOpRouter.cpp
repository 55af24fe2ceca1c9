// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpRouter.h"

#include "dsp/MVBlockMath.h"
#include "foundation/MVMath.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

constexpr double smallestStep = 0.009999999776482582;
constexpr MVFRange stepRange { smallestStep, 0.9900000002235174 };
/** A millisecond, as it is rounded to single precision. */
constexpr double secondsPerMillisecond = 0.0010000000474974513;
/** Share of the longest change time that a change takes at least. */
constexpr double smallestInterval = 0.009999999776482582;
constexpr int routeCount = 16;

constexpr ParameterSpec parameters[] {
    intSpec ("Max Change Time", "Maximum Re-route transition time in milliseconds.",
             offsetof (RouterAttributes, maxChangeTime), { 10, 9990 }, 10),
    floatSpec ("Modulo Step Stride", "Step threshold at which routing moves between sets of four output ports.",
               offsetof (RouterAttributes, stepStride), stepRange, 0.25),
    floatSpec ("Modulo Step Offset", "Step threshold at which routing adds offset of output ports.",
               offsetof (RouterAttributes, stepOffset), stepRange, 0.25)
};

constexpr const char* inputNames[] { "Input Signal", "Route Address X", "Route Address Y", "Interval Scalar" };

std::string outputName (const void*, int port)
{
    return "Routed Output #" + std::to_string (port / 4) + " - " + std::to_string (port % 4);
}

/** 0 to 3: how many times the address holds the step, wrapping at four. */
int addressOf (double address, double step) { return truncToInt (address / step) & 3; }

} // namespace

constinit const OperatorSpec MVOpRouter::spec {
    .typeId = 0xA70018,
    .className = "MVOpRouter",
    .shortName = "Router",
    .description = "A multi-output signal router.",
    .numInputs = 4,
    .numOutputs = routeCount,
    .inputNames = inputNames,
    .outputNameOf = outputName,
    .attributeSize = sizeof (RouterAttributes),
    .parameters = parameters,
};

MVOpRouter::MVOpRouter (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpRouter::attributesChanged()
{
    maxChangeSamples = truncToInt (values.maxChangeTime * sampleRate() * secondsPerMillisecond);
    fadeSamples = std::min (fadeSamples, std::max (0, maxChangeSamples));
    strideInverse = 1.0 / (values.stepStride + 1.0);
    offsetInverse = 1.0 / (values.stepOffset + 1.0);
}

void MVOpRouter::setActive (bool flag)
{
    MVOperator::setActive (flag);
    attributesChanged();
}

void MVOpRouter::reset()
{
    currentRoute = previousRoute = 0;
    fadeSamples = 0;
    fade = fadeStep = 0.0;
}

void MVOpRouter::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                          int frames, const MVOpExecDesc& desc)
{
    if (fadeSamples == 0)
        readAddress (inputs);

    for (int i = 0; i < outputCount; ++i)
        blockClear (outputs[i], frames);

    const int faded = renderFade (inputs[0], outputs, frames);
    blockCopy (outputs[currentRoute] + faded, inputs[0] + faded, frames - faded);
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

void MVOpRouter::readAddress (const double* const* inputs)
{
    const double x = std::abs (inputs[1][0]) * getInputScale (1) * controlFactor (1);
    const double y = std::abs (inputs[2][0]) * getInputScale (2) * controlFactor (2);
    const int route = addressOf (y, offsetInverse) + addressOf (x, strideInverse) * 4;

    if (route != currentRoute)
        startFade (route, std::abs (inputs[3][0]) * controlFactor (3));
}

void MVOpRouter::startFade (int route, double interval)
{
    previousRoute = currentRoute;
    currentRoute = route;
    fadeSamples = std::max (0, truncToInt (maxChangeSamples * limitTo (interval, smallestInterval, 1.0)));
    fade = 1.0;
    fadeStep = fadeSamples > 0 ? 1.0 / fadeSamples : 0.0;
}

int MVOpRouter::renderFade (const double* in, double* const* outputs, int frames)
{
    const int count = std::min (fadeSamples, frames);
    if (count == 0)
        return 0;

    const double fadeEnd = fade - count * fadeStep;
    rampCopy (outputs[previousRoute], in, count, fade, fadeEnd);
    rampCopy (outputs[currentRoute], in, count, 1.0 - fade, 1.0 - fadeEnd);
    fade = fadeEnd;
    fadeSamples -= count;
    return count;
}

} // namespace morvanelab
