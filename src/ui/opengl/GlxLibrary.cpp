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

} // namespace

bool glxLibraryIsThere() { return library() != nullptr; }

void* glxFunction (const char* name) { return library() != nullptr ? dlsym (library(), name) : nullptr; }

} // namespace morvanelab

using morvanelab::forward;

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
        return forward<decltype (glXGetVisualFromFBConfig)> ("glXGetVisualFromFBConfig", display, config);
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
