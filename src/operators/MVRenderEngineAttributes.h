// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVLocker.h"
#include "foundation/MVMap.h"
#include "foundation/MVRiffPacker.h"
#include "foundation/MVSmartPtr.h"
#include "operators/MVVirtualOperatorFactory.h"

#include <array>
#include <cstdint>
#include <memory>

namespace morvanelab
{

class MVOperator;

/** Samples of a signal block. */
constexpr int blockFrames = 256;

/** What all parts of one engine share: operator factories, rates, channel counts, the silence that stands in
    for unconnected inputs, and the audio lock. Fields change only while the audio is excluded. */
class MVRenderEngineAttributes
{
public:
    /** Starts without factories; see registerOperators. */
    MVRenderEngineAttributes();
    virtual ~MVRenderEngineAttributes();
    MVRenderEngineAttributes (const MVRenderEngineAttributes&) = delete;
    MVRenderEngineAttributes& operator= (const MVRenderEngineAttributes&) = delete;

    /** The operator of a stored "op  " list, owned by the caller. The low 16 bits of its "clas" chunk choose the
        class. Null if there is no such chunk, it has fewer than two bytes, or the class is not known. */
    virtual MVOperator* createOperator (const MVSmartPtr<MVRiffPacker>& opChunk);
    /** The factory of a class, not owned by the caller; null if none is registered. */
    virtual MVVirtualOperatorFactory* operatorFactoryFor (std::uint32_t typeId);
    /** Takes the factory; one that is there already is replaced. */
    void addOperatorFactory (std::uint32_t typeId, std::unique_ptr<MVVirtualOperatorFactory> factory);

    double sampleRate = 44100.0; ///< of the operators, in Hz
    double rateScale = 1.0;
    int numOutputChannels = 2;
    int numInputChannels = 2;
    int numParameters = 16;
    int numLayers = 4;
    /** 256 zeros each; nobody writes to silence. */
    std::array<double, blockFrames> silence {};
    std::array<double, blockFrames> scratch {};
    MVLocker audioLock;

private:
    MVMap<std::uint32_t, std::shared_ptr<MVVirtualOperatorFactory>> operatorFactories;
};

} // namespace morvanelab
