# mv_layer (name USES lower...): one static library for src/<name>, linked to the layers it may use.
#
# The order of the layers is fixed here; a link or an include that points upward stops the configuration.

set (MV_LAYER_ORDER foundation dsp network control operators engine banks ui plugin)
# Layers that stand side by side: neither may use the other.
set (MV_LAYER_PEERS_dsp network control)
set (MV_LAYER_PEERS_network dsp control)
set (MV_LAYER_PEERS_control dsp network)

function (mv_check_layer name)
    list (FIND MV_LAYER_ORDER ${name} own)
    if (own EQUAL -1)
        message (FATAL_ERROR "Unknown layer '${name}'")
    endif()

    foreach (used IN LISTS ARGN)
        list (FIND MV_LAYER_ORDER ${used} position)
        if (position EQUAL -1 OR NOT position LESS own OR used IN_LIST MV_LAYER_PEERS_${name})
            message (FATAL_ERROR "Layer '${name}' must not use '${used}'")
        endif()
    endforeach()

    file (GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/src/${name}/*.h" "${CMAKE_SOURCE_DIR}/src/${name}/*.cpp")
    foreach (source IN LISTS sources)
        file (STRINGS "${source}" includes REGEX "^#include \"[a-z]+/")
        foreach (line IN LISTS includes)
            string (REGEX REPLACE "^#include \"([a-z]+)/.*" "\\1" folder "${line}")
            list (FIND MV_LAYER_ORDER ${folder} position)
            if (position GREATER own OR folder IN_LIST MV_LAYER_PEERS_${name})
                message (FATAL_ERROR "${source} includes upward: ${line}")
            endif()
        endforeach()
    endforeach()
endfunction()

function (mv_layer name)
    cmake_parse_arguments (LAYER "" "" "USES" ${ARGN})
    mv_check_layer (${name} ${LAYER_USES})

    file (GLOB sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/src/${name}/*.cpp")
    if (sources)
        add_library (mv_${name} STATIC ${sources})
        set (scope PUBLIC)
        target_link_libraries (mv_${name} PRIVATE mv_warnings)
    else()
        add_library (mv_${name} INTERFACE)
        set (scope INTERFACE)
    endif()

    target_include_directories (mv_${name} ${scope} "${CMAKE_SOURCE_DIR}/src")
    target_link_libraries (mv_${name} ${scope} Threads::Threads)
    foreach (used IN LISTS LAYER_USES)
        target_link_libraries (mv_${name} ${scope} mv_${used})
    endforeach()

    # What only this layer needs beyond the common rules stands beside its sources.
    include ("${CMAKE_SOURCE_DIR}/src/${name}/layer.cmake" OPTIONAL)
endfunction()
