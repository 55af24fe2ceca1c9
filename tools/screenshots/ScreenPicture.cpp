// SPDX-License-Identifier: GPL-3.0-or-later
#include "screenshots/ScreenPicture.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace morvanelab
{

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
