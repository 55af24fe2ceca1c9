// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVBankFile.h"
#include "banks/MVBankUuid.h"

namespace morvanelab
{

/** A loaded bank in the manager's list. Message thread. */
struct MVBankFile_wrapper final
{
    MVSmartPtr<MVMetaData> metadata; ///< the bank's, as read when it was opened
    bool selected = false;
    MVBankFile bank;
    MVBankUuid uuid = MVBankUuid::createRandom(); ///< redrawn whenever a patch in the bank is replaced
};

} // namespace morvanelab
