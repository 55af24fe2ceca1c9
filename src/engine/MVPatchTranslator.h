// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVObject.h"

namespace morvanelab
{

/** A name to test for: it holds no state. The reading and writing of patches is done by MVPolyPatch. */
class MVPatchTranslator : public MVObject
{
public:
    MVPatchTranslator* clone() const override { return new MVPatchTranslator (*this); }
    const char* className() const override { return "MVPatchTranslator"; }
};

} // namespace morvanelab
