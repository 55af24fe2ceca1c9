// SPDX-License-Identifier: GPL-3.0-or-later

// Stored patches: the tree is read without its checksum, into one layer of one voice, which then plays a note. What
// can be saved must load again, and its text form must compile to a patch.

#include "FuzzInput.h"
#include "engine/MVPatchText.h"
#include "engine/MVPolyPatch.h"
#include "foundation/MVException.h"
#include "operators/MVOperatorTable.h"
#include "operators/MVRenderEngineAttributes.h"

#include <array>
#include <memory>

using namespace morvanelab;

namespace
{

/** A voice that plays one patch into two channels. */
class Voice
{
public:
    Voice()
    {
        registerOperators (attributes);
        attributes.numLayers = 2;
        patch = std::make_unique<MVPolyPatch> (&attributes);
        patch->setActive (true);
        patch->prepareBuffers (true);
    }

    bool load (MVSmartPtr<MVRiffPacker> tree)
    {
        try
        {
            MVSmartPtr<MVObject> data (tree);
            tree.clear();
            (void)patch->loadPatch (data, 0);
        }
        catch (const MVException&)
        {
            patch->clearLayer (0);
        }
        return patch->hasPatch (0);
    }

    void play()
    {
        // The engine bounds the memory of a patch before it activates one; this is the same test, smaller.
        constexpr std::size_t memoryLimit = std::size_t { 64 } << 20;
        if (const int root = patch->rootNode (0); root >= 0)
            patch->computeExecutionOrder (0, root);
        if (patch->memoryNeeded (0) > memoryLimit)
            return;

        patch->activateLayer (0);
        patch->setPatchPlaying (0, 0, true);
        patch->noteOn (60, 0.8);
        renderBlocks (3);
        patch->noteOn (60, 0.0);
        patch->releaseOperators();
        patch->setPatchPlaying (0, 1, false);
        renderBlocks (2);
        (void)patch->allOperatorsFinished();
    }

    std::unique_ptr<MVPolyPatch> patch;

private:
    void renderBlocks (int count)
    {
        std::array<std::array<double, MVPolyPatch::blockSize>, 2> in {}, out {};
        const double* inputs[] { in[0].data(), in[1].data() };
        double* outputs[] { out[0].data(), out[1].data() };
        for (int i = 0; i < count; ++i)
            patch->render (2, inputs, 2, outputs, MVPolyPatch::blockSize, 0);
    }

    MVRenderEngineAttributes attributes;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    const auto bytes = fuzz::exactCopy (data, size);
    auto tree = makeSmart<MVRiffPacker> (bytes.data(), static_cast<int> (size), false);
    if (! tree->isWellFormed())
        return 0;

    Voice voice;
    if (! voice.load (tree))
        return 0;
    voice.play();

    const auto saved = voice.patch->savePatch (0);
    fuzz::require (static_cast<bool> (saved), "a loaded patch can be saved");
    Voice second;
    fuzz::require (second.load (saved), "a saved patch loads");

    try
    {
        const auto compiled = MVPatchText::compile (MVPatchText::write (*saved), "saved");
        fuzz::require (static_cast<bool> (compiled.patch), "the text of a patch compiles");
    }
    catch (const MVException& error)
    {
        fuzz::require (false, error.text());
    }

    return 0;
}
