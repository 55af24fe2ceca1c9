// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpFreqTweaker.h"

#include "dsp/MVBlockMath.h"
#include "foundation/MVMath.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace morvanelab
{

namespace
{

constexpr ChoiceSpec algorithmChoices[] {
    { tweakStretched, "Stretched" },
    { tweakShifted, "Shifted" },
    { tweakConvolved, "Convolved" },
    { tweakSelfConvolved, "Self-convolved" },
    { tweakPhaseSwapped, "Phase-swapped" },
    { tweakMagSwapped, "Mag-swapped" },
    { tweakReversed, "Reversed" },
    { tweakWrapped, "Wrapped" },
    { tweakTwisted, "Twisted" },
    { tweakAttractor, "Attractor" },
    { tweakMorph, "Morph" },
    { tweakBlur, "Blur" },
};
static_assert (std::size (algorithmChoices) == tweakCount);

constexpr ParameterSpec parameters[] { choiceSpec ("Algorithm", "Signal alteration algorithm",
                                                   offsetof (FreqTweakerAttributes, algorithm), algorithmChoices,
                                                   tweakStretched) };

constexpr int inputTotal = 3;
constexpr const char* unused = "(Not Used)";

/** By algorithm, in the order of the choices. */
constexpr const char* inputNames[tweakCount][inputTotal] {
    { "Input Signal", unused, "Stretch Factor" },
    { "Input Signal", unused, "Shift Ratio" },
    { "First Convolved Signal", "Second Convolved Signal", unused },
    { "Self-convolved Signal", "Second Pre-Convolution Signal", unused },
    { "Phase Component Signal", "Magnitude Component Signal", unused },
    { "Magnitude Component Signal", "Phase Component Signal", unused },
    { "Input Signal", unused, unused },
    { "Input Signal", unused, "Wrap Frequency Ratio" },
    { "Input Signal", "Twist Center Frequency", "Twist Frequency Spread" },
    { "Input Signal", "Attraction Magnitude", "Center Attraction Position" },
    { "First Extreme Morphed Signal", "Second Extreme Morphed Signal", "Morph Balance" },
    { "Input Signal", "Blurring Direction", "Persistence Factor" },
};

std::string inputName (const void* record, int port)
{
    FreqTweakerAttributes stored;
    std::memcpy (&stored, record, sizeof (stored));
    const int algorithm = foldChoice (stored.algorithm, tweakCount);
    return port >= 0 && port < inputTotal ? inputNames[algorithm - 1][port] : std::string();
}

constexpr const char* outputNames[] { "Tweaked Signal" };

/** Appends a block; what finds no room is dropped. */
void append (MVCircularBuffer& ring, const double* samples, int count)
{
    int left = count * int { sizeof (double) };
    const auto* source = reinterpret_cast<const std::byte*> (samples);

    while (left > 0)
    {
        int run = left;
        std::byte* const room = ring.writePointer (run);
        if (run == 0)
            return;
        std::memcpy (room, source, static_cast<std::size_t> (run));
        ring.commitWrite (run);
        source += run;
        left -= run;
    }
}

using Hop = double[MVFreqTweaker::hopSize];

/** Takes the oldest hop. The ring holds whole hops, so a hop that starts at a hop's place lies in one piece. */
void takeHop (MVCircularBuffer& ring, Hop& hop)
{
    int bytes = sizeof (Hop);
    const std::byte* const data = ring.readPointer (bytes);
    std::memcpy (hop, data, static_cast<std::size_t> (bytes));
    ring.commitRead (bytes);
}

} // namespace

constinit const OperatorSpec MVOpFreqTweaker::spec {
    .typeId = 0xA70013,
    .className = "MVOpFreqTweaker",
    .shortName = "Tweaker",
    .description = "A signal tweak operator.",
    .numInputs = inputTotal,
    .numOutputs = 1,
    .outputNames = outputNames,
    .inputNameOf = inputName,
    .attributeSize = sizeof (FreqTweakerAttributes),
    .parameters = parameters,
};

MVOpFreqTweaker::MVOpFreqTweaker (MVRenderEngineAttributes* renderAttributes,
                                  const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpFreqTweaker::setActive (bool flag)
{
    MVOperator::setActive (flag);
    tweaker.init (flag, sampleRate());
    for (MVCircularBuffer* const ring : { &inputA, &inputB, &output })
        ring->setActive (flag);
    silentSamples = MVFreqTweaker::hopSize;
}

void MVOpFreqTweaker::reset()
{
    tweaker.reset();
    for (MVCircularBuffer* const ring : { &inputA, &inputB, &output })
        ring->reset();
    silentSamples = MVFreqTweaker::hopSize;
}

std::size_t MVOpFreqTweaker::runtimeBytes() const
{
    // Two frames, the spectrum being made, and the overlap; and the three rings.
    constexpr std::size_t samples = 3 * MVFreqTweaker::fftSize + MVFreqTweaker::hopSize;
    return sizeof (*this) + samples * sizeof (double) + 3 * std::size_t { ringBytes };
}

void MVOpFreqTweaker::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                               int frames, const MVOpExecDesc& desc)
{
    const double control = inputs[2][0] * getInputScale (2) * controlFactor (2);
    append (inputA, inputs[0], frames);
    append (inputB, inputs[1], frames);
    tweakWaitingHops (control);
    readOutput (outputs[0], frames);
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

void MVOpFreqTweaker::tweakWaitingHops (double control)
{
    while (inputA.fillLevel() >= hopBytes && inputB.fillLevel() >= hopBytes)
    {
        Hop first;
        Hop second;
        takeHop (inputA, first);
        takeHop (inputB, second);
        tweaker.process (first, first, second, control);
        append (output, first, MVFreqTweaker::hopSize);
    }
}

void MVOpFreqTweaker::readOutput (double* out, int frames)
{
    int done = 0;
    while (done < frames)
    {
        int bytes = (frames - done) * int { sizeof (double) };
        const std::byte* const data = output.readPointer (bytes);
        if (bytes == 0)
            break;
        std::memcpy (out + done, data, static_cast<std::size_t> (bytes));
        output.commitRead (bytes);
        done += bytes / int { sizeof (double) };
    }
    blockClear (out + done, frames - done);

    // Blocks that are shorter than a hop would otherwise let the beginning of the first frame through, which holds
    // no signal but, with most algorithms, some of what the second half left there.
    const int silent = std::min (frames, silentSamples);
    blockClear (out, silent);
    silentSamples -= silent;
}

} // namespace morvanelab
