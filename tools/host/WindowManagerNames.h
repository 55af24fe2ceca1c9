// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace morvanelab::host
{

/** Atoms that exist wherever a window manager runs. A bare virtual display has none of them, and toolkits may not set
    properties under names that they do not find. */
inline constexpr const char* windowManagerNames[] {
    "WM_PROTOCOLS",    "WM_TAKE_FOCUS",      "WM_DELETE_WINDOW",          "WM_CHANGE_STATE",
    "WM_STATE",        "_NET_WM_PING",       "_NET_WM_WINDOW_TYPE",       "_NET_WM_WINDOW_TYPE_NORMAL",
    "_NET_WM_STATE",   "_NET_WORKAREA",      "_NET_WM_WINDOW_TYPE_COMBO", "_NET_WM_STATE_HIDDEN",
    "_MOTIF_WM_HINTS", "_NET_FRAME_EXTENTS", "_NET_WM_ALLOWED_ACTIONS"
};

} // namespace morvanelab::host
