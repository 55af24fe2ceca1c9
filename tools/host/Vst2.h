// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

/** The plug-in interface, kept apart from our own names. */
namespace vst2
{
#include "plugin/abi/aeffect.h"
#include "plugin/abi/aeffectx.h"
} // namespace vst2
