// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVString.h"

namespace morvanelab
{

/** Thrown by value where a deep loader cannot go on. The layer that catches it shows the message to the user. */
class MVException
{
public:
    MVException (std::uint32_t resultCode, const char* text);
    MVException (std::uint32_t resultCode, const MVSmartPtr<MVString>& text);
    virtual ~MVException() = default;

    std::uint32_t getCode() const { return code; }
    const MVSmartPtr<MVString>& getMessage() const { return message; }
    /** The message, never null. */
    const char* text() const { return message ? message->text() : ""; }

private:
    std::uint32_t code;
    MVSmartPtr<MVString> message;
};

} // namespace morvanelab
