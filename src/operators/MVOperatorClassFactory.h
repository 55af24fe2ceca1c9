// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/MVOperator.h"
#include "operators/MVVirtualOperatorFactory.h"

namespace morvanelab
{

template <class Operator>
class MVOperatorClassFactory final : public MVVirtualOperatorFactory
{
public:
    MVOperator* create (MVRenderEngineAttributes* attributes,
                        const MVSmartPtr<MVRiffPacker>& storedChunk) const override
    {
        return new Operator (attributes,
                             hasStoredRecord (Operator::spec, storedChunk) ? storedChunk : MVSmartPtr<MVRiffPacker>());
    }
};

} // namespace morvanelab
