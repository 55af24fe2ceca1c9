// SPDX-License-Identifier: GPL-3.0-or-later
// Questions and settings of MVPatchRenderer that concern all voices at once.
#include "engine/MVPatchRenderer.h"
#include "operators/MVRenderEngineAttributes.h"

namespace morvanelab
{

bool MVPatchRenderer::isLayerSounding (int layer) const
{
    const MVScopedLock audioLocked (attributes->audioLock);
    for (int index = 0; index < getNumVoices(); ++index)
        if (isSounding (index) && voice (index).patchState (layer) != PATCH_STOPPED)
            return true;
    return false;
}

double MVPatchRenderer::getOutputVolume() const
{
    const MVScopedLock voicesLocked (voiceLock);
    const MVScopedLock audioLocked (attributes->audioLock);
    return voice (0).getOutputVolume();
}

void MVPatchRenderer::setOutputVolume (double value)
{
    const MVScopedLock voicesLocked (voiceLock);
    const MVScopedLock audioLocked (attributes->audioLock);
    for (auto& each : voices)
        each->setOutputVolume (value);
}

double MVPatchRenderer::getCompressorRollOff() const
{
    const MVScopedLock voicesLocked (voiceLock);
    const MVScopedLock audioLocked (attributes->audioLock);
    return voice (0).getCompressorRollOff();
}

void MVPatchRenderer::setCompressorRollOff (double value)
{
    const MVScopedLock voicesLocked (voiceLock);
    const MVScopedLock audioLocked (attributes->audioLock);
    for (auto& each : voices)
        each->setCompressorRollOff (value);
}

double MVPatchRenderer::getCompressorThreshold() const
{
    const MVScopedLock voicesLocked (voiceLock);
    const MVScopedLock audioLocked (attributes->audioLock);
    return voice (0).getCompressorThreshold();
}

void MVPatchRenderer::setCompressorThreshold (double value)
{
    const MVScopedLock voicesLocked (voiceLock);
    const MVScopedLock audioLocked (attributes->audioLock);
    for (auto& each : voices)
        each->setCompressorThreshold (value);
}

} // namespace morvanelab
