// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace morvanelab
{

/** What draws when a program uses OpenGL on the window system in use. */
enum class OpenGlKind
{
    none,     ///< no context can be made
    software, ///< the processor, slower than it would draw a picture made for it
    hardware
};

/** Finds out by making a context, once a process and out of sight, on a connection of its own: the toolkit takes every
    step towards a context for granted, and an error that the X server reports would end the host's process. May take
    some tens of milliseconds the first time. Message thread. */
OpenGlKind openGlKind();

} // namespace morvanelab
