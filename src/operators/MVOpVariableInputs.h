// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVBlockMath.h"
#include "operators/MVOpWithAttributes.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace morvanelab
{

struct VariableInputAttributes
{
    std::int32_t inputCount;
};
static_assert (sizeof (VariableInputAttributes) == 4);

constexpr FieldSpec variableInputFields[] {
    { .name = "inputCount", .offset = offsetof (VariableInputAttributes, inputCount), .initial = 4 }
};

/** What the operators with a user-variable number of inputs share: the stored number, and a tracked gain for every
    input, the input's scale times its control. */
template <class Operator>
class MVOpVariableInputs : public MVOpWithAttributes<Operator, VariableInputAttributes>
{
public:
    void reset() override
    {
        for (PortControlTrack& track : gains)
            track.reset();
    }

    void refreshControls() override
    {
        for (int i = 0; i < maxOperatorPorts; ++i)
            gains[static_cast<std::size_t> (i)].control = this->trackedControl (i);
    }

    bool canSetPortCount (int direction) const override
    {
        return direction == portsIn && this->portCount (portsIn) < maxOperatorPorts;
    }

protected:
    using MVOpWithAttributes<Operator, VariableInputAttributes>::MVOpWithAttributes;

    /** The number of inputs of a stored record, whatever it says. */
    static int inputCountOf (const void* record)
    {
        VariableInputAttributes stored;
        std::memcpy (&stored, record, sizeof (stored));
        return std::clamp (stored.inputCount, 0, maxOperatorPorts);
    }

    void attributesChanged() override
    {
        this->values.inputCount = inputCountOf (&this->values);
        this->changePortCount (portsIn, this->values.inputCount);
    }

    void storeInputCount (int count)
    {
        this->values.inputCount = count;
        this->setAttributes (nullptr);
    }

    struct GainEnds
    {
        double start;
        double end;

        /** Multiplying by 1.0 changes no bit, so the loops without a gain may take over. */
        bool isUnity() const { return start == 1.0 && end == 1.0; }
    };

    /** Takes an input's gain on to the next block. */
    GainEnds nextGain (int port)
    {
        PortControlTrack& track = gains[static_cast<std::size_t> (port)];
        track.advance();
        const double scale = this->getInputScale (port);
        return { scale * track.start(), scale * track.end() };
    }

    /** Writes input 0 under its gain to out; without an input, zeros. */
    void startWithFirstInput (double* out, int inputCount, const double* const* inputs, int frames)
    {
        if (inputCount < 1)
        {
            blockClear (out, frames);
            return;
        }

        const GainEnds gain = nextGain (0);
        if (gain.isUnity())
            blockCopy (out, inputs[0], frames);
        else
            rampCopy (out, inputs[0], frames, gain.start, gain.end);
    }

private:
    std::array<PortControlTrack, maxOperatorPorts> gains;
};

} // namespace morvanelab
