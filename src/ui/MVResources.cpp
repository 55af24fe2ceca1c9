// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVResources.h"

#include <algorithm>

namespace morvanelab
{

std::string_view resourceData (std::string_view name)
{
    const auto* end = embeddedResources + embeddedResourceCount;
    const auto* found =
        std::find_if (embeddedResources, end, [name] (const auto& entry) { return entry.name == name; });
    return found != end ? found->data : std::string_view {};
}

} // namespace morvanelab
