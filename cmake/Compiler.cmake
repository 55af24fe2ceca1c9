# Language, warnings and floating-point rules that hold for every target of our own.

set (CMAKE_CXX_STANDARD 20)
set (CMAKE_CXX_STANDARD_REQUIRED ON)
set (CMAKE_CXX_EXTENSIONS OFF)
set (CMAKE_POSITION_INDEPENDENT_CODE ON)
set (CMAKE_CXX_VISIBILITY_PRESET hidden)
set (CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set (CMAKE_EXPORT_COMPILE_COMMANDS ON)

if (NOT CMAKE_BUILD_TYPE)
    set (CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

find_program (CCACHE_PROGRAM ccache)
if (CCACHE_PROGRAM)
    set (CMAKE_C_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
    set (CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

find_package (Threads REQUIRED)

# Contraction would give other bits on machines with fused multiply-add; not-a-number and infinity rules are
# part of the sound, so there is no fast-math. Unique symbols would keep an unloaded plug-in in memory.
add_compile_options (-ffp-contract=off)
if (CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options ($<$<COMPILE_LANGUAGE:CXX>:-fno-gnu-unique>)
endif()

if (SORDELIN_SANITIZE)
    add_compile_options (-fsanitize=${SORDELIN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options (-fsanitize=${SORDELIN_SANITIZE})
    # A host and a plug-in declare the types of the C interface between them each for itself, which that check takes for
    # two functions.
    if (CMAKE_CXX_COMPILER_ID MATCHES "Clang" AND SORDELIN_SANITIZE MATCHES "undefined")
        add_compile_options (-fno-sanitize=function)
    endif()
endif()

add_library (mv_warnings INTERFACE)
target_compile_options (mv_warnings INTERFACE -Wall -Wextra -Wshadow -Wconversion -Werror)
