// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVWaveforms.h"

#include "dsp/MVDspBase.h"
#include "foundation/MVSmartPtr.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

constexpr int size = MVWaveforms::tableSize;
constexpr double entry = 1.0 / size;
using Table = std::vector<double>;

/** The square tables stay below full scale and slope over 327 samples, in place of band limiting. */
constexpr double flatTop = 0.9990000128746033;
constexpr double slopeStep = 0.0030517578125;
constexpr int slopeEntries = 327;
constexpr int squareFlatEntries = 15729;
constexpr int squareFallEntries = 655;
constexpr int pulseFlatEntries = 31785;

template <typename Function>
Table tableOf (Function&& function)
{
    Table table (size);
    for (int i = 0; i < size; ++i)
        table[static_cast<std::size_t> (i)] = function (i);
    return table;
}

Table squarePeriod()
{
    Table table;
    table.reserve (size);
    double running = 0.0;

    const auto slope = [&] (int count, double step)
    {
        for (int i = 0; i < count; ++i, running += step)
            table.push_back (running);
    };

    slope (slopeEntries, slopeStep);
    table.insert (table.end(), squareFlatEntries, flatTop);
    slope (squareFallEntries, -slopeStep);
    table.insert (table.end(), squareFlatEntries, -flatTop);
    slope (size - static_cast<int> (table.size()), slopeStep);
    return table;
}

Table trianglePeriod()
{
    constexpr double step = 0.0001220703125;
    return tableOf ([] (int i) { return i < size / 2 ? -1.0 + i * step : 1.0 - (i - size / 2 + 1) * step; });
}

Table squarePulse()
{
    return tableOf (
        [] (int i)
        { return i < slopeEntries ? i * slopeStep : (i < slopeEntries + pulseFlatEntries ? flatTop : 0.0); });
}

Table parabolicPulse()
{
    return tableOf (
        [] (int i)
        {
            const double x = -4.0 + i * 0.000244140625;
            return 1.0 - x * x * 0.0625;
        });
}

/** The cosine and its argument are single precision, which the sound of the voice depends on. */
Table glottalPulse()
{
    return tableOf (
        [] (int i)
        {
            const float t = static_cast<float> (i * entry);
            return (1.0 - static_cast<double> (std::cos (t * t * 6.2831855f))) * 0.5;
        });
}

Table inverseGlottalPulse()
{
    Table table = glottalPulse();
    std::reverse (table.begin(), table.end());
    return table;
}

Table cardinalSinePulse()
{
    return tableOf (
        [] (int i)
        {
            const double y = (-20.0 + i * 0.001220703125) * dspPi;
            return y == 0.0 ? 1.0 : std::sin (y) / y;
        });
}

Table glottalDerivative()
{
    const Table pulse = glottalPulse();
    Table table (size);
    double greatest = 0.0;

    for (std::size_t i = 0; i + 1 < table.size(); ++i)
    {
        table[i] = pulse[i + 1] - pulse[i];
        greatest = std::max (greatest, std::abs (table[i]));
    }

    table[size - 1] = table[size - 2];
    for (double& value : table)
        value /= greatest;
    return table;
}

} // namespace

MVWaveforms& MVWaveforms::instance()
{
    static const MVSmartPtr<MVWaveforms> shared (new MVWaveforms);
    return *shared;
}

const char* MVWaveforms::name (int index)
{
    static constexpr const char* names[waveformCount] {
        "Sine Period",           "Square Period",       "Triangle Period",   "Sawtooth Period",
        "Hanning Pulse",         "Square Pulse",        "Parabolic Pulse",   "Glottal Pulse",
        "Inverse Glottal Pulse", "Cardinal Sine Pulse", "Glottal Derivative"
    };
    return index >= 0 && index < waveformCount ? names[index] : nullptr;
}

const double* MVWaveforms::table (int index)
{
    if (index < 0 || index >= waveformCount)
        return nullptr;

    const auto slot = static_cast<std::size_t> (index);
    std::call_once (built[slot], [this, index] { build (index); });
    return tables[slot].data();
}

void MVWaveforms::build (int index)
{
    Table& table = tables[static_cast<std::size_t> (index)];

    switch (index)
    {
        case waveSinePeriod:
            table = tableOf ([] (int i) { return std::sin (i * dspTwoPi * entry); });
            break;
        case waveSquarePeriod:
            table = squarePeriod();
            break;
        case waveTrianglePeriod:
            table = trianglePeriod();
            break;
        case waveSawtoothPeriod:
            table = tableOf ([] (int i) { return -1.0 + i * 6.103515625e-05; });
            break;
        case waveHanningPulse:
            table = tableOf ([] (int i) { return (1.0 - std::cos (i * 0.0001917476038215682)) * 0.5; });
            break;
        case waveSquarePulse:
            table = squarePulse();
            break;
        case waveParabolicPulse:
            table = parabolicPulse();
            break;
        case waveGlottalPulse:
            table = glottalPulse();
            break;
        case waveInverseGlottalPulse:
            table = inverseGlottalPulse();
            break;
        case waveCardinalSinePulse:
            table = cardinalSinePulse();
            break;
        default:
            table = glottalDerivative();
            break;
    }
}

} // namespace morvanelab
