// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpSlawvox.h"

#include "foundation/MVMath.h"
#include "operators/AttributeRecord.h"

#include <cmath>

namespace morvanelab
{

namespace
{

constexpr int initialVowel = 6;
constexpr double initialShift = 0.5;
constexpr double formantBandwidth = 0.3499999940395355;
constexpr double initialSmoothing = 0.009999999776482582;
constexpr double highestShift = 4.0;
constexpr double highestIdleQuaver = 0.009999999776482582;
constexpr double quaverScale = 0.05000000074505806;
constexpr double ownPulseWidth = 0.6000000238418579;
constexpr double ownPulseModulation = 0.4000000059604645;

enum Input : int
{
    glottalSource,
    mapX,
    mapY,
    articulationSpeed,
    reductionAmount,
    formantShift
};

constexpr ChoiceSpec topologyChoices[] { { topologySeries, "Series" }, { topologyParallel, "Parallel" } };

constexpr ParameterSpec depthSpec =
    floatSpec ("Quaver Depth", "Vocal quaver depth", offsetof (SlawvoxAttributes, quaverDepth), { 0.0, 1.0 }, 0.0,
               Storage::fixedUnsigned15);
constexpr ParameterSpec rateSpec =
    floatSpec ("Quaver Rate", "Vocal quaver rate", offsetof (SlawvoxAttributes, quaverRate), { 0.0, 16.0 }, 0.0,
               Storage::fixedUnsigned15);
constexpr ParameterSpec breathSpec =
    floatSpec ("Breathniess", "Breathy glottal noise level", offsetof (SlawvoxAttributes, breathiness), { 0.0, 1.0 },
               0.0, Storage::fixedUnsigned15);

constexpr ParameterSpec parameters[] { choiceSpec ("Filter Topology", "Arrangement of formant filters",
                                                   offsetof (SlawvoxAttributes, filterTopology), topologyChoices,
                                                   topologySeries),
                                       depthSpec, rateSpec, breathSpec };

constexpr const char* inputNames[] { "Glottal Source", "Formant Map X", "Formant Map Y",
                                     "Articulation",   "Reduction",     "Formant Shift" };
constexpr const char* outputNames[] { "Vocalized Signal" };

// Where the quaver of a formant starts and how it moves is computed in single precision: bit-exact.

double initialQuaverPosition (int formant) { return static_cast<float> (formant) * 0.2f * 32768.0f; }

double quaverStepPerHz (int formant) { return static_cast<float> (formant + 1) / 3.0f * 0.1f * 32768.0f; }

double quaverShare (int formant) { return static_cast<float> (formant) + 0.3f; }

double sineAt (const double* table, double position)
{
    return table[truncToInt (position) & (MVWaveforms::tableSize - 1)];
}

} // namespace

constinit const OperatorSpec MVOpSlawvox::spec {
    .typeId = 0xA70019,
    .className = "MVOpSlawvox",
    .shortName = "Sound Color",
    .description = "A vocal filter.",
    .numInputs = 6,
    .numOutputs = 1,
    .inputNames = inputNames,
    .outputNames = outputNames,
    .controlInputs = 0b011000,
    .attributeSize = sizeof (SlawvoxAttributes),
    .parameters = parameters,
};

MVOpSlawvox::MVOpSlawvox (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpSlawvox::attributesChanged()
{
    quaverDepth = attributeRecord::readNumber (&values, depthSpec);
    quaverRate = attributeRecord::readNumber (&values, rateSpec);
    breathiness = attributeRecord::readNumber (&values, breathSpec);

    if (quaverDepth > 0.0 || ! isActive())
    {
        findQuaverSteps();
        return;
    }

    // A quaver that is switched on again starts with all formants in step.
    for (Formant& formant : formants)
        formant.quaverPosition = formant.quaverStep = 0.0;
}

void MVOpSlawvox::findQuaverSteps()
{
    for (int k = 0; k < formantCount; ++k)
        formants[static_cast<std::size_t> (k)].quaverStep = quaverStepPerHz (k) / sampleRate();
}

void MVOpSlawvox::setActive (bool flag)
{
    MVOperator::setActive (flag);
    sine = MVWaveforms::instance().table (waveSinePeriod);
    glottis.setTable (MVWaveforms::instance().table (waveGlottalDerivative));
    glottis.setModulationType (pulseShapeModulated);
    glottis.init (flag, sampleRate());
    for (Formant& formant : formants)
        formant.filter.init (flag, sampleRate());
    start();
}

void MVOpSlawvox::reset()
{
    start();
    pitch.reset();
}

void MVOpSlawvox::start()
{
    vowel = initialVowel;
    shift = initialShift;
    articulation = reduction = 0.0;

    for (int k = 0; k < formantCount; ++k)
    {
        Formant& formant = formants[static_cast<std::size_t> (k)];
        formant.filter.reset();
        // Not moved by the initial shift: only a change of vowel, reduction or shift sets new frequencies.
        formant.filter.setFrequency (vowelMap::formants (vowel)[k]);
        formant.filter.setBandwidth (formantBandwidth);
        formant.filter.setSmoothing (initialSmoothing);
        formant.quaverPosition = initialQuaverPosition (k);
    }

    findQuaverSteps();
    glottis.reset();
    level.reset();
}

void MVOpSlawvox::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                           int frames, const MVOpExecDesc& desc)
{
    double sourceBuffer[blockFrames];
    pitch.advance();

    const double* const source = desc.isInputConnected (glottalSource)
                                     ? inputs[glottalSource]
                                     : ownSource (sourceBuffer, inputs[formantShift], frames);
    const auto control = [&] (int port) { return inputs[port][0] * controlFactor (port); };

    articulate (limitTo (control (articulationSpeed), 0.0, 1.0));
    moveFormants (vowelMap::vowelAt (control (mapX), control (mapY)), limitTo (control (reductionAmount), 0.0, 1.0),
                  limitTo (getInputScale (formantShift) * inputs[formantShift][0] * pitch.end(), 0.0, highestShift));
    quaver();

    if (values.filterTopology == topologySeries)
        filterInSeries (outputs[0], source, frames);
    else
        filterInParallel (outputs[0], source, inputs[glottalSource], frames);

    level.process (outputs[0], source, frames);
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

const double* MVOpSlawvox::ownSource (double* buffer, const double* pitchSignal, int frames)
{
    const double scale = getInputScale (formantShift);
    glottis.process (buffer, pitchSignal, frames, scale * pitch.start(), scale * pitch.end(), ownPulseWidth,
                     ownPulseModulation);
    if (breathiness > 0.0)
        breath.addNoise (buffer, breathiness, frames);
    return buffer;
}

void MVOpSlawvox::articulate (double speed)
{
    if (speed == articulation)
        return;

    articulation = speed;
    const double smoothing = std::pow (speed * 0.93 + 0.07000000029802322, 7.0);
    for (Formant& formant : formants)
        formant.filter.setSmoothing (smoothing);
}

void MVOpSlawvox::moveFormants (int newVowel, double newReduction, double newShift)
{
    if (newVowel == vowel && newReduction == reduction && newShift == shift)
        return;

    vowel = newVowel;
    reduction = newReduction;
    shift = newShift;

    const double* const hz = vowelMap::formants (vowel);
    const double middle = hz[0] + (hz[1] - hz[0]) * 0.5;
    for (int k = 0; k < formantCount; ++k)
        formants[static_cast<std::size_t> (k)].filter.setFrequency (((middle - hz[k]) * reduction * 0.75 + hz[k])
                                                                    * (shift * 2.0 + 0.5));
}

void MVOpSlawvox::quaver()
{
    for (int k = 0; k < formantCount; ++k)
    {
        Formant& formant = formants[static_cast<std::size_t> (k)];

        if (quaverDepth <= highestIdleQuaver || sine == nullptr)
        {
            formant.filter.setQuaver();
            continue;
        }

        const double wander = sineAt (sine, formant.quaverPosition) * 0.5 + 1.0;
        formant.filter.setQuaver (quaverShare (k) * quaverDepth * quaverScale, wander * quaverRate);
        formant.quaverPosition += formant.quaverStep;
        if (formant.quaverPosition >= MVWaveforms::tableSize)
            formant.quaverPosition -= MVWaveforms::tableSize;
    }
}

void MVOpSlawvox::filterInSeries (double* out, const double* source, int frames)
{
    for (Formant& formant : formants)
    {
        formant.filter.process (out, source, frames, false);
        source = out;
    }
}

void MVOpSlawvox::filterInParallel (double* out, const double* source, const double* input, int frames)
{
    double work[blockFrames];
    formants[0].filter.process (out, source, frames, false);

    for (std::size_t k = 1; k < formants.size(); ++k)
    {
        formants[k].filter.process (work, input, frames, false);
        const double sign = k == 2 ? 1.0 : -1.0;
        for (int i = 0; i < frames; ++i)
            out[i] += sign * work[i];
    }
}

} // namespace morvanelab
