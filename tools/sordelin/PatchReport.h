// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVRiffPacker.h"
#include "foundation/MVSmartPtr.h"

#include <string>

namespace morvanelab
{

/** Loads a patch as a voice does and tells its operators, routes, execution order, root and feedback inputs.
    Throws MVException with the loader's own text. */
std::string patchReport (MVSmartPtr<MVRiffPacker> patch);

} // namespace morvanelab
