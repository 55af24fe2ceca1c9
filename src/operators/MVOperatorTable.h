// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/MVVirtualOperatorFactory.h"
#include "operators/OperatorSpec.h"

#include <memory>
#include <span>
#include <string_view>

namespace morvanelab
{

class MVRenderEngineAttributes;

/** One row of the table of operators. */
struct OperatorRow
{
    const OperatorSpec* spec;
    std::unique_ptr<MVVirtualOperatorFactory> (*makeFactory)();
};

/** Every operator of the program, in the order in which factories are registered. */
std::span<const OperatorRow> operatorTable();

/** The OperatorSpec of a class, by its 32-bit identifier; null if there is none. */
const OperatorSpec* findOperatorSpec (std::uint32_t typeId);
/** The same by class name or by the short name shown to users, byte for byte. */
const OperatorSpec* findOperatorSpec (std::string_view classOrShortName);

/** Registers a factory for every row. */
void registerOperators (MVRenderEngineAttributes& attributes);

} // namespace morvanelab
