// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/MVPatchSummary.h"
#include "foundation/MVLocker.h"
#include "plugin/SordelinState.h"

#include <array>
#include <atomic>
#include <string>

namespace morvanelab
{

/** Which patch parameter each host parameter stands for: the enabled patch parameters in ascending order, packed
    from 0. Any thread; the index lookups take no lock. */
class SordelinParameterTable
{
public:
    SordelinParameterTable();

    /** Rebuilds everything from the patch that is loaded now. */
    void rebuild (const MVPatchSummary& patch);

    /** The patch parameter of a host parameter; -1 if it has none or is out of range. */
    int hostToPatch (int hostIndex) const { return lookUp (hostToPatchParam, hostIndex); }
    /** The host parameter of a patch parameter; -1 if it is not exposed or out of range. */
    int patchToHost (int patchIndex) const { return lookUp (patchToHostParam, patchIndex); }
    int getActiveCount() const { return activeParamCount.load (std::memory_order_relaxed); }

    /** Name and description for a host parameter: empty where it stands for nothing, "-----" for an empty text. */
    std::string getName (int hostIndex) const;
    std::string getText (int hostIndex) const;
    /** A copy of what the table was built from. */
    MVPatchSummary getPatch() const;

private:
    using Indices = std::array<std::atomic<int>, hostParameterCount>;

    static int lookUp (const Indices& indices, int index);
    std::string textOf (int hostIndex, std::string MVPatchSummary::Variable::*text) const;

    Indices hostToPatchParam;
    Indices patchToHostParam;
    std::atomic<int> activeParamCount { 0 };
    mutable MVLocker paramLock; ///< over the texts
    MVPatchSummary loaded;
};

} // namespace morvanelab
