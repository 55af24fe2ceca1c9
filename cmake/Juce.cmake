# The JUCE modules, compiled once into two static libraries that everything of ours links:
#
#   mv_juce_core  files, values, messages, audio buffers and formats; no graphics, no display
#   mv_juce_gui   graphics, components and the plug-in processor base, on top of mv_juce_core
#
# The modules are not linked as interface targets, since then every user would compile them again and could
# do so with other settings. Headers are system headers here: our warnings are about our own code. No module
# opens an audio device.

find_package (JUCE CONFIG REQUIRED)
find_package (ZLIB REQUIRED)
find_package (PNG REQUIRED)
find_package (JPEG REQUIRED)

# mv_juce_sources (out module...): the one source file that compiles a whole module on this platform.
function (mv_juce_sources out)
    set (sources "")
    foreach (module IN LISTS ARGN)
        set (path "${JUCE_MODULES_DIR}/${module}/${module}")
        if (APPLE AND EXISTS "${path}.mm")
            list (APPEND sources "${path}.mm")
        else()
            list (APPEND sources "${path}.cpp")
        endif()
    endforeach()
    set (${out} "${sources}" PARENT_SCOPE)
endfunction()

# mv_juce_library (name module...): a static library of modules with the settings all of them share.
function (mv_juce_library name)
    mv_juce_sources (sources ${ARGN})
    add_library (${name} STATIC ${sources})
    target_include_directories (${name} SYSTEM PUBLIC "${JUCE_MODULES_DIR}")
    foreach (module IN LISTS ARGN)
        target_compile_definitions (${name} PUBLIC JUCE_MODULE_AVAILABLE_${module}=1)
    endforeach()
endfunction()

mv_juce_library (mv_juce_core juce_core juce_events juce_data_structures juce_audio_basics juce_audio_formats)
target_compile_definitions (
    mv_juce_core
    PUBLIC JUCE_GLOBAL_MODULE_SETTINGS_INCLUDED=1
           $<IF:$<CONFIG:Debug>,DEBUG=1,NDEBUG=1>
           $<IF:$<CONFIG:Debug>,_DEBUG=1,_NDEBUG=1>
           JUCE_WEB_BROWSER=0
           JUCE_USE_CURL=0
           JUCE_USE_FLAC=0
           JUCE_USE_OGGVORBIS=0
           JUCE_VST3_CAN_REPLACE_VST2=0
           JUCE_DISPLAY_SPLASH_SCREEN=0
           JUCE_REPORT_APP_USAGE=0
           JUCE_STRICT_REFCOUNTEDPOINTER=1
           JUCE_STANDALONE_APPLICATION=0)
target_link_libraries (mv_juce_core PUBLIC Threads::Threads ${CMAKE_DL_LIBS} PRIVATE ZLIB::ZLIB)

mv_juce_library (mv_juce_gui juce_graphics juce_gui_basics juce_gui_extra juce_audio_processors)
target_link_libraries (mv_juce_gui PUBLIC mv_juce_core PRIVATE PNG::PNG JPEG::JPEG ZLIB::ZLIB)

if (UNIX AND NOT APPLE)
    # X11 itself is loaded when a window is first needed, so that the plug-in also runs where there is none.
    find_package (Freetype REQUIRED)
    find_package (X11 REQUIRED COMPONENTS Xext Xrandr Xinerama Xcursor)
    target_link_libraries (mv_juce_core PUBLIC rt)
    target_link_libraries (mv_juce_gui PRIVATE Freetype::Freetype)
elseif (APPLE)
    target_link_libraries (mv_juce_core PUBLIC "-framework Cocoa" "-framework Foundation" "-framework IOKit"
                                               "-framework Security" "-framework Accelerate" "-framework AudioToolbox")
    target_link_libraries (mv_juce_gui PUBLIC "-framework Carbon" "-framework QuartzCore" "-framework CoreAudioKit")
endif()

# mv_juce_opengl: OpenGL contexts in components. Only who draws with it links it.
if (UNIX AND NOT APPLE)
    # On this platform the module binds the oldest OpenGL functions and the window system's when it is loaded, which
    # would keep a plug-in from loading where there is no OpenGL. A copy of its one source file is told to look all of
    # them up at run time; what is left are a few functions of the window system, which GlxLibrary.cpp passes on.
    find_path (GLX_INCLUDE_DIR GL/glx.h REQUIRED)
    file (READ "${JUCE_MODULES_DIR}/juce_opengl/juce_opengl.cpp" opengl_source)
    foreach (version IN ITEMS 1_0 1_1)
        set (bound "#define JUCE_STATIC_LINK_GL_VERSION_${version} 1")
        string (FIND "${opengl_source}" "${bound}" found)
        if (found EQUAL -1)
            message (FATAL_ERROR "juce_opengl.cpp does not read as expected: no '${bound}'")
        endif()
        string (REPLACE "${bound}" "#define JUCE_STATIC_LINK_GL_VERSION_${version} 0" opengl_source "${opengl_source}")
    endforeach()
    set (opengl_copy "${CMAKE_BINARY_DIR}/juce/juce_opengl_at_run_time.cpp")
    file (CONFIGURE OUTPUT "${opengl_copy}" CONTENT "@opengl_source@" @ONLY)
    add_library (mv_juce_opengl STATIC "${opengl_copy}" "${CMAKE_SOURCE_DIR}/src/ui/opengl/GlxLibrary.cpp")
    target_include_directories (mv_juce_opengl SYSTEM PRIVATE "${JUCE_MODULES_DIR}/juce_opengl" "${GLX_INCLUDE_DIR}")
    target_include_directories (mv_juce_opengl PRIVATE "${CMAKE_SOURCE_DIR}/src")
else()
    mv_juce_library (mv_juce_opengl juce_opengl)
    if (APPLE)
        target_link_libraries (mv_juce_opengl PUBLIC "-framework OpenGL")
    endif()
endif()
target_compile_definitions (mv_juce_opengl PUBLIC JUCE_MODULE_AVAILABLE_juce_opengl=1)
target_link_libraries (mv_juce_opengl PUBLIC mv_juce_gui)
