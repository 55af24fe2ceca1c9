// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/opengl/GlxLibrary.h"

#include <GL/glx.h>
#include <dlfcn.h>

namespace morvanelab
{

namespace
{

void* library()
{
    static void* const handle = dlopen ("libGL.so.1", RTLD_LAZY | RTLD_LOCAL);
    return handle;
}

/** Calls the library's function of this name; what the library lacks gives a zero result. */
template <typename Function, typename... Arguments>
auto forward (const char* name, Arguments... arguments)
{
    using Result = decltype (static_cast<Function*> (nullptr) (arguments...));
    auto* const function = reinterpret_cast<Function*> (glxFunction (name));
    return function != nullptr ? function (arguments...) : Result();
}

/** Frees what the window system's library has allocated; that library is there whoever has a display. */
void freeForX (void* memory)
{
    static void* const x11 = dlopen ("libX11.so.6", RTLD_LAZY | RTLD_LOCAL);
    auto* const function = x11 != nullptr ? reinterpret_cast<decltype (XFree)*> (dlsym (x11, "XFree")) : nullptr;
    if (memory != nullptr && function != nullptr)
        function (memory);
}

} // namespace

bool glxLibraryIsThere() { return library() != nullptr; }

void* glxFunction (const char* name) { return library() != nullptr ? dlsym (library(), name) : nullptr; }

} // namespace morvanelab

using morvanelab::forward;
using morvanelab::freeForX;

// The names that the toolkit's OpenGL module is linked to. Hidden: other libraries of the process keep their own.
extern "C"
{
#pragma GCC visibility push(hidden)

    GLXFBConfig* glXChooseFBConfig (Display* display, int screen, const int* attributes, int* count)
    {
        return forward<decltype (glXChooseFBConfig)> ("glXChooseFBConfig", display, screen, attributes, count);
    }

    XVisualInfo* glXGetVisualFromFBConfig (Display* display, GLXFBConfig config)
    {
        // For the message thread, and good until the next call: the toolkit looks at it at once and never frees it.
        static XVisualInfo* visual = nullptr;
        freeForX (visual);
        visual = forward<decltype (glXGetVisualFromFBConfig)> ("glXGetVisualFromFBConfig", display, config);
        return visual;
    }

    GLXContext glXCreateNewContext (Display* display, GLXFBConfig config, int type, GLXContext shared, Bool direct)
    {
        return forward<decltype (glXCreateNewContext)> ("glXCreateNewContext", display, config, type, shared, direct);
    }

    void glXDestroyContext (Display* display, GLXContext context)
    {
        forward<decltype (glXDestroyContext)> ("glXDestroyContext", display, context);
    }

    Bool glXMakeCurrent (Display* display, GLXDrawable drawable, GLXContext context)
    {
        return forward<decltype (glXMakeCurrent)> ("glXMakeCurrent", display, drawable, context);
    }

    GLXContext glXGetCurrentContext() { return forward<decltype (glXGetCurrentContext)> ("glXGetCurrentContext"); }

    void glXSwapBuffers (Display* display, GLXDrawable drawable)
    {
        forward<decltype (glXSwapBuffers)> ("glXSwapBuffers", display, drawable);
    }

    __GLXextFuncPtr glXGetProcAddress (const GLubyte* name)
    {
        return forward<decltype (glXGetProcAddress)> ("glXGetProcAddress", name);
    }

#pragma GCC visibility pop
}
