// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVOpenGlProbe.h"

#if defined(__linux__)

#include "ui/opengl/GlxLibrary.h"

#include <GL/glx.h>
#include <dlfcn.h>

#include <cstring>

namespace morvanelab
{

namespace
{

/** The few functions of the X library that are needed; it is opened like the OpenGL library, since plug-ins also load
    where there is neither. */
struct XLibrary
{
    XLibrary()
    {
        void* const handle = dlopen ("libX11.so.6", RTLD_LAZY | RTLD_LOCAL);
        if (handle == nullptr)
            return;
        open = reinterpret_cast<decltype (open)> (dlsym (handle, "XOpenDisplay"));
        close = reinterpret_cast<decltype (close)> (dlsym (handle, "XCloseDisplay"));
        sync = reinterpret_cast<decltype (sync)> (dlsym (handle, "XSync"));
        free = reinterpret_cast<decltype (free)> (dlsym (handle, "XFree"));
        screen = reinterpret_cast<decltype (screen)> (dlsym (handle, "XDefaultScreen"));
        setHandler = reinterpret_cast<decltype (setHandler)> (dlsym (handle, "XSetErrorHandler"));
    }

    bool complete() const
    {
        return open != nullptr && close != nullptr && sync != nullptr && free != nullptr && screen != nullptr
               && setHandler != nullptr;
    }

    decltype (&XOpenDisplay) open = nullptr;
    decltype (&XCloseDisplay) close = nullptr;
    decltype (&XSync) sync = nullptr;
    decltype (&XFree) free = nullptr;
    decltype (&XDefaultScreen) screen = nullptr;
    decltype (&XSetErrorHandler) setHandler = nullptr;
};

Display* probed = nullptr;
XErrorHandler handlerBefore = nullptr;
bool errorSeen = false;

/** Keeps errors of the probe's own connection to itself; all others go where they would have gone. */
int noteError (Display* display, XErrorEvent* event)
{
    if (display == probed)
    {
        errorSeen = true;
        return 0;
    }
    return handlerBefore != nullptr ? handlerBefore (display, event) : 0;
}

bool canMakeContext (const XLibrary& x, Display* display)
{
    using QueryExtension = Bool (*) (Display*, int*, int*);
    const auto query = reinterpret_cast<QueryExtension> (glxFunction ("glXQueryExtension"));
    if (query == nullptr || query (display, nullptr, nullptr) == False)
        return false;

    const int wanted[] { GLX_RENDER_TYPE,
                         GLX_RGBA_BIT,
                         GLX_DOUBLEBUFFER,
                         True,
                         GLX_RED_SIZE,
                         8,
                         GLX_GREEN_SIZE,
                         8,
                         GLX_BLUE_SIZE,
                         8,
                         None };
    int count = 0;
    GLXFBConfig* const configs = glXChooseFBConfig (display, x.screen (display), wanted, &count);
    if (configs == nullptr)
        return false;
    bool made = false;
    if (count > 0)
    {
        const XVisualInfo* const visual = glXGetVisualFromFBConfig (display, configs[0]); // the next call frees it
        GLXContext const context = glXCreateNewContext (display, configs[0], GLX_RGBA_TYPE, nullptr, True);
        x.sync (display, False);
        made = visual != nullptr && context != nullptr && ! errorSeen;
        if (context != nullptr)
            glXDestroyContext (display, context);
    }
    x.free (configs);
    x.sync (display, False);
    return made;
}

/** Asks the driver whether hardware draws. One that does not answer is the maker's own, and they make hardware. */
bool isHardware (const XLibrary& x, Display* display)
{
    using QueryExtensions = const char* (*)(Display*, int);
    using QueryRenderer = Bool (*) (Display*, int, int, int, unsigned int*);
    const auto queryExtensions = reinterpret_cast<QueryExtensions> (glxFunction ("glXQueryExtensionsString"));
    const auto* const extensions = queryExtensions != nullptr ? queryExtensions (display, x.screen (display)) : nullptr;
    if (extensions == nullptr || std::strstr (extensions, "GLX_MESA_query_renderer") == nullptr)
        return true;
    const auto* const name = reinterpret_cast<const GLubyte*> ("glXQueryRendererIntegerMESA");
    const auto queryRenderer = reinterpret_cast<QueryRenderer> (glXGetProcAddress (name));
    constexpr int accelerated = 0x8186; // GLX_RENDERER_ACCELERATED_MESA
    unsigned int value = 1;
    return queryRenderer == nullptr || queryRenderer (display, x.screen (display), 0, accelerated, &value) == False
           || value != 0;
}

OpenGlKind probe()
{
    const XLibrary x;
    if (! x.complete() || ! glxLibraryIsThere())
        return OpenGlKind::none;
    probed = x.open (nullptr);
    if (probed == nullptr)
        return OpenGlKind::none;
    errorSeen = false;
    handlerBefore = x.setHandler (noteError);
    OpenGlKind kind = OpenGlKind::none;
    if (canMakeContext (x, probed))
        kind = isHardware (x, probed) ? OpenGlKind::hardware : OpenGlKind::software;
    x.setHandler (handlerBefore);
    x.close (probed);
    probed = nullptr;
    return kind;
}

} // namespace

OpenGlKind openGlKind()
{
    static const OpenGlKind kind = probe();
    return kind;
}

} // namespace morvanelab

#else

namespace morvanelab
{

OpenGlKind openGlKind() { return OpenGlKind::hardware; }

} // namespace morvanelab

#endif
