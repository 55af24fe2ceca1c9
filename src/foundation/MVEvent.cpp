// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVEvent.h"

namespace morvanelab
{

void MVEvent::reset()
{
    type = 0;
    threadCategory = threadCategoryDefault;
    queueMode = queueModeCoalesce;
    targetId = 0;
    pointerArgs.fill (nullptr);
    intArgs.fill (0);
    doubleArgs.fill (0.0);
    clearObjects();
    setCompletion (nullptr, nullptr, nullptr);
}

void MVEvent::clearObjects()
{
    objectA.clear();
    objectB.clear();
}

void MVEvent::setCompletion (Completion function, void* contextA, void* contextB)
{
    completion = function;
    completionContextA = contextA;
    completionContextB = contextB;
}

void MVEvent::complete (int result, const char* message)
{
    const Completion function = completion;
    completion = nullptr;
    if (function != nullptr)
        function (completionContextA, completionContextB, result, message);
}

} // namespace morvanelab
