// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>

namespace morvanelab
{

class MVPolyPatch_proxy;

/** A handle to a patch snapshot, given out by MVRenderEngine::acquirePatchAccessor and read through the queries
    there. Copies share the snapshot and keep it alive, also when the patch, the part or the engine has gone, so
    a reader never holds a stale one. The copies of a handle belong to one thread each. */
struct MVPatchAccessorProxy
{
    std::shared_ptr<const MVPolyPatch_proxy> proxy; ///< null in an empty handle
    std::uint64_t proxyId = 0;                      ///< the identity it was asked by
};

/** The small number by which a user interface knows a class of operators: 2 to 27 in the order of their type
    identifiers, 1 for anything else. A keyboard input is 5. */
int patchNodeTypeNumber (std::uint32_t typeId);

} // namespace morvanelab
