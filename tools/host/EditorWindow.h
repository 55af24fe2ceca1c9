// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "host/VstInstance.h"

#include <memory>
#include <string>

namespace morvanelab::host
{

/** The display, made ready for windows as a window manager does: on a bare one, toolkits miss the names that one
    brings along. Made before the plug-in is loaded and kept until it has gone. */
class HostDisplay
{
public:
    /** Raises std::runtime_error if there is none. */
    HostDisplay();
    ~HostDisplay();
    HostDisplay (const HostDisplay&) = delete;
    HostDisplay& operator= (const HostDisplay&) = delete;

    void* native() const { return display; }

private:
    void* display;
};

/** A plain window that shows a plug-in's editor. Main thread. */
class EditorWindow
{
public:
    /** Opens a window as large as the editor wants and puts the editor in. Raises std::runtime_error if there is
        no editor. */
    EditorWindow (VstInstance& instance, HostDisplay& display);
    /** Closes the editor, then the window. */
    ~EditorWindow();
    EditorWindow (const EditorWindow&) = delete;
    EditorWindow& operator= (const EditorWindow&) = delete;

    /** Gives the editor its idle calls for a while. */
    void idle (double seconds);
    /** Writes what the window shows as a PNG file. Raises std::runtime_error on failure. */
    void savePicture (const std::string& path);

private:
    struct Window;

    VstInstance& plugin;
    std::unique_ptr<Window> window;
};

} // namespace morvanelab::host
