// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/SordelinState.h"
#include "engine/MVPatchAccessorProxy.h"
#include "foundation/MVLocker.h"

#include <array>
#include <atomic>
#include <string>

namespace morvanelab
{

/** Which patch parameter each host parameter stands for: the enabled patch parameters in ascending order, packed
    from 0; and the snapshot of the patch from which all of that is read. Any thread; the index lookups take no lock. */
class SordelinParameterTable
{
public:
    SordelinParameterTable();

    /** Rebuilds everything from the patch that is loaded now; an empty handle, or one without nodes, is no patch. */
    void rebuild (const MVPatchAccessorProxy& patch);

    /** The patch parameter of a host parameter; -1 if it has none or is out of range. */
    int hostToPatch (int hostIndex) const { return lookUp (hostToPatchParam, hostIndex); }
    /** The host parameter of a patch parameter; -1 if it is not exposed or out of range. */
    int patchToHost (int patchIndex) const { return lookUp (patchToHostParam, patchIndex); }
    int getActiveCount() const { return activeParamCount.load (std::memory_order_relaxed); }

    /** Name and description for a host parameter: empty where it stands for nothing, "-----" for an empty text. */
    std::string getName (int hostIndex) const;
    std::string getText (int hostIndex) const;
    /** Whether there is a patch, and whether it holds an operator that follows keys. */
    bool isPatchLoaded() const { return patchLoaded.load (std::memory_order_relaxed); }
    /** Whether the patch holds an operator that reads the host's input. */
    bool readsHostInput() const { return hostInput.load (std::memory_order_relaxed); }
    bool hasKeyboardInput() const { return keyboardInput.load (std::memory_order_relaxed); }
    /** What the table was built from; empty without a patch. */
    MVPatchAccessorProxy getPatch() const;

private:
    using Indices = std::array<std::atomic<int>, hostParameterCount>;
    using TextQuery = int (*) (const MVPatchAccessorProxy&, int, std::string&);

    static int lookUp (const Indices& indices, int index);
    std::string textOf (int hostIndex, TextQuery query) const;
    void rebuildIndices (const MVPatchAccessorProxy& patch);

    Indices hostToPatchParam;
    Indices patchToHostParam;
    std::atomic<int> activeParamCount { 0 };
    std::atomic<bool> patchLoaded { false };
    std::atomic<bool> keyboardInput { false };
    std::atomic<bool> hostInput { false };
    mutable MVLocker paramLock; ///< over the handle
    MVPatchAccessorProxy loadedPatch;
};

} // namespace morvanelab
