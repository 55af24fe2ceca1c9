// SPDX-License-Identifier: GPL-3.0-or-later

// Stored trees that are read beside patches. The first byte chooses: full preset, parameter map, control values. What
// was read is saved and read again.

#include "FuzzInput.h"
#include "control/MVControlManager.h"
#include "engine/MVParameterManager.h"
#include "engine/MVRendererManager.h"
#include "foundation/MVEventManager.h"
#include "foundation/MVException.h"
#include "operators/MVOperatorTable.h"
#include "operators/MVRenderEngineAttributes.h"

using namespace morvanelab;

namespace
{

/** The parts of an engine that own what a preset describes, without threads. */
struct Engine
{
    Engine() : controls (&events), parameters (&controls, &events), renderers (&events, &attributes, &controls)
    {
        registerOperators (attributes);
        attributes.numLayers = 2;
        events.addThreadCategory (threadCategoryEvent);
        events.addThreadCategory (threadCategoryRender);
        events.setActive (true);
        controls.resizeControls (65);
    }
    ~Engine()
    {
        renderers.destroyAllRenderers();
        events.setActive (false);
    }

    MVEventManager events;
    MVRenderEngineAttributes attributes;
    MVControlManager controls;
    MVParameterManager parameters;
    MVRendererManager renderers;
};

void useFullPreset (Engine& engine, MVSmartPtr<MVRiffPacker>& tree)
{
    if (engine.renderers.loadFullPresetRiff (tree) != 1)
        return;
    auto saved = engine.renderers.saveFullPresetRiff();
    engine.renderers.destroyAllRenderers();
    fuzz::require (engine.renderers.loadFullPresetRiff (saved) == 1, "a saved preset loads");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    if (size < 1)
        return 0;

    const auto bytes = fuzz::exactCopy (data + 1, size - 1);
    auto tree = makeSmart<MVRiffPacker> (bytes.data(), static_cast<int> (bytes.size()), false);
    if (! tree->isWellFormed())
        return 0;

    Engine engine;

    try
    {
        switch (data[0] % 3)
        {
            case 0:
                useFullPreset (engine, tree);
                break;
            case 1:
                (void)engine.parameters.loadRiff (*tree);
                fuzz::require (engine.parameters.loadRiff (*engine.parameters.saveRiff()) == 1, "a saved map loads");
                break;
            default:
                (void)engine.controls.unpackRiff (*tree);
                fuzz::require (engine.controls.unpackRiff (*engine.controls.packRiff()) == 1, "saved values load");
                break;
        }
    }
    catch (const MVException&)
    {
        // Bad patches are told this way.
    }

    return 0;
}
