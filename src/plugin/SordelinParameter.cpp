// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/SordelinParameter.h"

#include "plugin/SordelinAudioProcessor.h"

#include <limits>

namespace morvanelab
{

namespace
{

thread_local int hostWriteDepth = 0;

} // namespace

SordelinParameter::HostWrite::HostWrite() { ++hostWriteDepth; }
SordelinParameter::HostWrite::~HostWrite() { --hostWriteDepth; }

float SordelinParameter::getValue() const
{
    if (hostWriteDepth > 0)
        return std::numeric_limits<float>::quiet_NaN();
    return processor->getParameter (index);
}

void SordelinParameter::setValue (float value) { processor->setParameter (index, value); }

juce::String SordelinParameter::getName (int) const { return processor->getParameterName (index); }

juce::String SordelinParameter::getLabel() const { return processor->getParameterLabel (index); }

juce::String SordelinParameter::getCurrentValueAsText() const { return processor->getParameterText (index); }

} // namespace morvanelab
