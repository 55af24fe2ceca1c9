// SPDX-License-Identifier: GPL-3.0-or-later
#include "screenshots/ScreenPicture.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <stdexcept>

namespace morvanelab
{

PreparedDisplay::PreparedDisplay()
{
    auto* opened = XOpenDisplay (nullptr);
    if (opened == nullptr)
        throw std::runtime_error ("no display");
    for (const char* name :
         { "WM_PROTOCOLS", "WM_TAKE_FOCUS", "WM_DELETE_WINDOW", "WM_CHANGE_STATE", "WM_STATE", "_NET_WM_PING",
           "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_NORMAL", "_NET_WM_WINDOW_TYPE_COMBO", "_NET_WM_STATE",
           "_NET_WM_STATE_HIDDEN", "_NET_FRAME_EXTENTS", "_NET_WORKAREA", "_NET_WM_ALLOWED_ACTIONS" })
        XInternAtom (opened, name, False);
    XSync (opened, False);
    display = opened;
}

PreparedDisplay::~PreparedDisplay() { XCloseDisplay (static_cast<::Display*> (display)); }

juce::Image readScreen (juce::Rectangle<int> area)
{
    ::Display* display = XOpenDisplay (nullptr);
    if (display == nullptr)
        return {};
    const juce::Rectangle<int> screen (DisplayWidth (display, DefaultScreen (display)),
                                       DisplayHeight (display, DefaultScreen (display)));
    area = area.getIntersection (screen);
    XImage* pixels = area.isEmpty() ? nullptr
                                    : XGetImage (display, DefaultRootWindow (display), area.getX(), area.getY(),
                                                 static_cast<unsigned> (area.getWidth()),
                                                 static_cast<unsigned> (area.getHeight()), AllPlanes, ZPixmap);
    juce::Image image;
    if (pixels != nullptr)
    {
        image = juce::Image (juce::Image::RGB, area.getWidth(), area.getHeight(), true);
        for (int y = 0; y < area.getHeight(); ++y)
            for (int x = 0; x < area.getWidth(); ++x)
                image.setPixelAt (x, y,
                                  juce::Colour (0xFF000000U | static_cast<juce::uint32> (XGetPixel (pixels, x, y))));
        XDestroyImage (pixels);
    }
    XCloseDisplay (display);
    return image;
}

bool writePicture (const juce::Image& image, const juce::File& file)
{
    if (! image.isValid() || file.getParentDirectory().createDirectory().failed())
        return false;
    juce::TemporaryFile temporary (file);
    {
        juce::FileOutputStream stream (temporary.getFile());
        if (! stream.openedOk() || ! juce::PNGImageFormat().writeImageToStream (image, stream))
            return false;
    }
    return temporary.overwriteTargetFileWithTemporary();
}

} // namespace morvanelab
