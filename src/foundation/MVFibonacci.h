// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace morvanelab
{

/** Known by its class name only. */
class MVFibonacci
{
public:
    virtual ~MVFibonacci() = default;
    virtual const char* className() const { return "MVFibonacci"; }
};

} // namespace morvanelab
