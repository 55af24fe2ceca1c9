// SPDX-License-Identifier: GPL-3.0-or-later
// The exported entry of the plug-in. The toolkit's wrapper brings one of its own, which becomes an inner function.
// The wrapper sets switches for the toolkit's headers, so it has to be the first to include them.
#define VSTPluginMain wrapperPluginMain
#include <juce_audio_plugin_client/juce_audio_plugin_client_VST2.cpp>
#undef VSTPluginMain

#include "plugin/SordelinAudioProcessor.h"
#include "plugin/SordelinParameter.h"

juce::AudioProcessor* JUCE_CALLTYPE createPluginFilter() { return new morvanelab::SordelinAudioProcessor(); }

namespace
{

/** The wrapper's function, one for all instances. */
std::atomic<Vst2::AEffectSetParameterProc> wrapperSetParameter { nullptr };

void setParameter (Vst2::AEffect* effect, Vst2::VstInt32 index, float value)
{
    const morvanelab::SordelinParameter::HostWrite scope;
    wrapperSetParameter.load (std::memory_order_relaxed) (effect, index, value);
}

} // namespace

#if defined(_WIN32)
#define SORDELIN_ENTRY extern "C" __declspec(dllexport)
#else
#define SORDELIN_ENTRY extern "C" __attribute__ ((visibility ("default")))
#endif

SORDELIN_ENTRY Vst2::AEffect* VSTPluginMain (Vst2::audioMasterCallback host)
{
    auto* effect = wrapperPluginMain (host);
    if (effect != nullptr)
    {
        wrapperSetParameter.store (effect->setParameter, std::memory_order_relaxed);
        effect->setParameter = setParameter;
    }
    return effect;
}
