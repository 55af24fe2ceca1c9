// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVException.h"

namespace morvanelab
{

MVException::MVException (std::uint32_t resultCode, const char* text)
    : code (resultCode), message (makeSmart<MVString> (text))
{
}

MVException::MVException (std::uint32_t resultCode, const MVSmartPtr<MVString>& text)
    : code (resultCode), message (text)
{
}

} // namespace morvanelab
