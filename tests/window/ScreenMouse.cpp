// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/ScreenMouse.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <initializer_list>

namespace morvanelab::test
{

namespace
{

struct Hit
{
    Window window = 0; ///< the innermost one
    Window top = 0;    ///< the one that lies on the screen itself
    int x = 0;         ///< inside the innermost one
    int y = 0;
};

Hit windowAt (Display* display, int x, int y)
{
    const Window root = DefaultRootWindow (display);
    Hit hit { root, root, x, y };
    Window child = 0;
    while (XTranslateCoordinates (display, root, hit.window, x, y, &hit.x, &hit.y, &child) != False && child != 0)
    {
        if (hit.window == root)
            hit.top = child;
        hit.window = child;
    }
    return hit;
}

} // namespace

void nudgePointer (void* display)
{
    for (const int place : { 2, 3 })
        movePointer (display, place, place);
}

void movePointer (void* display, int x, int y)
{
    auto* screen = static_cast<Display*> (display);
    XWarpPointer (screen, None, DefaultRootWindow (screen), 0, 0, 0, 0, x, y);
    XSync (screen, False);
}

void clickOnScreen (void* display, int x, int y)
{
    auto* screen = static_cast<Display*> (display);
    const Window root = DefaultRootWindow (screen);
    movePointer (display, x, y);
    const auto hit = windowAt (screen, x, y);
    for (const int type : { ButtonPress, ButtonRelease })
    {
        XEvent event {};
        event.xbutton.type = type;
        event.xbutton.window = hit.window;
        event.xbutton.root = root;
        event.xbutton.time = CurrentTime;
        event.xbutton.x = hit.x;
        event.xbutton.y = hit.y;
        event.xbutton.x_root = x;
        event.xbutton.y_root = y;
        event.xbutton.button = Button1;
        event.xbutton.state = type == ButtonRelease ? Button1Mask : 0;
        event.xbutton.same_screen = True;
        XSendEvent (screen, hit.window, True, type == ButtonPress ? ButtonPressMask : ButtonReleaseMask, &event);
    }
    XSync (screen, False);
}

void focusTopWindow (void* display, int x, int y)
{
    auto* screen = static_cast<Display*> (display);
    XSetInputFocus (screen, windowAt (screen, x, y).top, RevertToParent, CurrentTime);
    XSync (screen, False);
}

void focusWindow (void* display, unsigned long window)
{
    auto* screen = static_cast<Display*> (display);
    XSetInputFocus (screen, window, RevertToParent, CurrentTime);
    XSync (screen, False);
}

unsigned long focusedWindow (void* display)
{
    Window window = 0;
    int revertsTo = 0;
    XGetInputFocus (static_cast<Display*> (display), &window, &revertsTo);
    return window;
}

unsigned long makeWindow (void* display, unsigned long parent, int x, int y)
{
    auto* screen = static_cast<Display*> (display);
    const Window window =
        XCreateSimpleWindow (screen, parent != 0 ? parent : DefaultRootWindow (screen), x, y, 10, 10, 0, 0, 0);
    XMapWindow (screen, window);
    XSync (screen, False);
    return window;
}

void markAsManaged (void* display, unsigned long window)
{
    auto* screen = static_cast<Display*> (display);
    const Atom name = XInternAtom (screen, "WM_STATE", False);
    const long state[] { NormalState, None };
    XChangeProperty (screen, window, name, name, 32, PropModeReplace, reinterpret_cast<const unsigned char*> (state),
                     2);
    XSync (screen, False);
}

bool hearsKeys (void* display, int x, int y)
{
    auto* screen = static_cast<Display*> (display);
    XWindowAttributes attributes {};
    XGetWindowAttributes (screen, windowAt (screen, x, y).window, &attributes);
    return (attributes.all_event_masks & KeyPressMask) != 0;
}

void pressOnScreen (void* display, const std::string& key)
{
    auto* screen = static_cast<Display*> (display);
    XEvent event {};
    event.xkey.window = focusedWindow (screen);
    event.xkey.root = DefaultRootWindow (screen);
    event.xkey.time = CurrentTime;
    event.xkey.same_screen = True;
    event.xkey.keycode = XKeysymToKeycode (screen, XStringToKeysym (key.c_str()));
    for (const int type : { KeyPress, KeyRelease })
    {
        event.xkey.type = type;
        XSendEvent (screen, event.xkey.window, True, type == KeyPress ? KeyPressMask : KeyReleaseMask, &event);
    }
    XSync (screen, False);
}

std::vector<std::uint32_t> readScreen (void* display, int x, int y, int width, int height)
{
    auto* screen = static_cast<Display*> (display);
    XSync (screen, False);
    std::vector<std::uint32_t> colours;
    XImage* image = XGetImage (screen, DefaultRootWindow (screen), x, y, static_cast<unsigned> (width),
                               static_cast<unsigned> (height), AllPlanes, ZPixmap);
    if (image == nullptr)
        return colours;
    for (int row = 0; row < height; ++row)
        for (int column = 0; column < width; ++column)
            colours.push_back (static_cast<std::uint32_t> (XGetPixel (image, column, row) & 0xFFFFFFU));
    XDestroyImage (image);
    return colours;
}

} // namespace morvanelab::test
