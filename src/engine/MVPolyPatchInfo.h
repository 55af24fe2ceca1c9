// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "network/MVNetworkInfo.h"

#include <cstdint>

namespace morvanelab
{

/** The compiled order of one layer of a voice: a network description whose entries carry buffer pointers. */
class MVPolyPatchInfo : public MVNetworkInfo
{
public:
    MVPolyPatchInfo() = default;
    MVPolyPatchInfo (const MVPolyPatchInfo& other) = default;

    MVPolyPatchInfo* clone() const override { return new MVPolyPatchInfo (*this); }
    const char* className() const override { return "MVPolyPatchInfo"; }

    /** Puts a new MVOpExecDesc at the front of the list and returns it. */
    MVNodeExecDesc* addExecDesc() override;
};

} // namespace morvanelab
