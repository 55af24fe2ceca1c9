// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace morvanelab
{

/** Messages to the window, by number. */
enum SordelinCommand_t : int
{
    commandUpdateFromPatch = 16401,
    commandUpdateChangedSliders = 16406,
    commandRepaint = 16407,
    commandRepaintParameters = 16409,
    commandRefreshLayout = 16422,
    commandStartUpComplete = 16430
};

/** Where the engine's side leaves messages for the window. */
class SordelinCommandSink
{
public:
    virtual ~SordelinCommandSink() = default;

    /** Any thread but the audio thread; returns at once. The message arrives on the message thread. */
    virtual void postSordelinCommand (int commandId) = 0;
};

} // namespace morvanelab
