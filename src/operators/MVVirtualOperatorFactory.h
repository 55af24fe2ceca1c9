// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVRiffPacker.h"
#include "foundation/MVSmartPtr.h"

namespace morvanelab
{

class MVOperator;
class MVRenderEngineAttributes;

/** Makes operators of one class. */
class MVVirtualOperatorFactory
{
public:
    virtual ~MVVirtualOperatorFactory() = default;

    /** A new operator, owned by the caller. storedChunk is a stored "op  " list; without one, or if it has no
        usable "attr", the operator is a default one. Allocates: not for the audio thread. */
    virtual MVOperator* create (MVRenderEngineAttributes* attributes,
                                const MVSmartPtr<MVRiffPacker>& storedChunk) const = 0;
};

} // namespace morvanelab
