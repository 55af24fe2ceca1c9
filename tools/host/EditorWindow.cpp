// SPDX-License-Identifier: GPL-3.0-or-later
#include "host/EditorWindow.h"

#include "host/WindowManagerNames.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <png.h>

#include <array>
#include <chrono>
#include <cstring>
#include <iostream>
#include <stdexcept>
#include <thread>
#include <vector>

namespace morvanelab::host
{

namespace
{

/** Without this an error of the plug-in's own window would end the program. */
int reportError (Display* display, XErrorEvent* event)
{
    std::array<char, 128> text {};
    XGetErrorText (display, event->error_code, text.data(), static_cast<int> (text.size()));
    std::cerr << "display: " << text.data() << " in request " << static_cast<int> (event->request_code) << "\n";
    return 0;
}

} // namespace

HostDisplay::HostDisplay()
{
    auto* opened = XOpenDisplay (nullptr);
    if (opened == nullptr)
        throw std::runtime_error ("no display");
    XSetErrorHandler (reportError);
    for (const char* name : windowManagerNames)
        XInternAtom (opened, name, False);
    XSync (opened, False);
    display = opened;
}

HostDisplay::~HostDisplay() { XCloseDisplay (static_cast<Display*> (display)); }

struct EditorWindow::Window
{
    Display* display = nullptr;
    ::Window handle = 0;
    unsigned width = 0;
    unsigned height = 0;

    ~Window()
    {
        if (handle != 0)
            XDestroyWindow (display, handle);
    }
};

EditorWindow::EditorWindow (VstInstance& instance, HostDisplay& display)
    : plugin (instance), window (std::make_unique<Window>())
{
    window->display = static_cast<Display*> (display.native());
    vst2::ERect* size = nullptr;
    plugin.dispatch (vst2::effEditGetRect, 0, 0, &size);
    if (size == nullptr)
        throw std::runtime_error ("the plug-in has no editor");
    window->width = static_cast<unsigned> (size->right - size->left);
    window->height = static_cast<unsigned> (size->bottom - size->top);

    const auto root = DefaultRootWindow (window->display);
    window->handle = XCreateSimpleWindow (window->display, root, 0, 0, window->width, window->height, 0, 0, 0);
    XMapWindow (window->display, window->handle);
    XSync (window->display, False);
    plugin.dispatch (vst2::effEditOpen, 0, 0, reinterpret_cast<void*> (window->handle));
}

EditorWindow::~EditorWindow() { plugin.dispatch (vst2::effEditClose); }

void EditorWindow::idle (double seconds)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::duration<double> (seconds);
    while (Clock::now() < end)
    {
        plugin.dispatch (vst2::effEditIdle);
        std::this_thread::sleep_for (std::chrono::milliseconds (10));
    }
}

void EditorWindow::savePicture (const std::string& path)
{
    XSync (window->display, False);
    XImage* image =
        XGetImage (window->display, window->handle, 0, 0, window->width, window->height, AllPlanes, ZPixmap);
    if (image == nullptr)
        throw std::runtime_error ("cannot read the window");

    std::vector<std::uint8_t> pixels;
    pixels.reserve (std::size_t { 3 } * window->width * window->height);
    for (unsigned y = 0; y < window->height; ++y)
        for (unsigned x = 0; x < window->width; ++x)
        {
            const auto pixel = XGetPixel (image, static_cast<int> (x), static_cast<int> (y));
            for (const int shift : { 16, 8, 0 })
                pixels.push_back (static_cast<std::uint8_t> ((pixel >> shift) & 0xFFU));
        }
    XDestroyImage (image);

    png_image picture;
    std::memset (&picture, 0, sizeof picture);
    picture.version = PNG_IMAGE_VERSION;
    picture.width = window->width;
    picture.height = window->height;
    picture.format = PNG_FORMAT_RGB;
    if (png_image_write_to_file (&picture, path.c_str(), 0, pixels.data(), 0, nullptr) == 0)
        throw std::runtime_error ("cannot write " + path);
}

} // namespace morvanelab::host
