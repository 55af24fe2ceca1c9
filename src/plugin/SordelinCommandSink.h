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
    commandApplyAppValues = 16423, ///< apply the dimension settings in `mv_custom_app_values`
    commandRefreshBankList = 16427,
    commandStartUpComplete = 16430,
    commandUpdatePresets = 16440,  ///< the preset list, its selection or its buttons have changed
    commandShowVisualiser = 16441, ///< another view has been asked for
    commandShowPatchImage = 16442, ///< another patch brings another picture, or none
    commandUpdateSettings = 16443  ///< play mode, voices or host notes have changed
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
