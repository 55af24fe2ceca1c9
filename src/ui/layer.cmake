target_link_libraries (mv_ui PUBLIC mv_juce_gui)
target_link_libraries (mv_ui PRIVATE mv_juce_opengl)

# Fonts and drawings are part of the program, so that it needs no files beside it.
file (GLOB resourceFiles CONFIGURE_DEPENDS RELATIVE "${CMAKE_SOURCE_DIR}/resources"
      "${CMAKE_SOURCE_DIR}/resources/fonts/*.otf" "${CMAKE_SOURCE_DIR}/resources/icons/*.svg")
list (SORT resourceFiles)
list (TRANSFORM resourceFiles PREPEND "${CMAKE_SOURCE_DIR}/resources/" OUTPUT_VARIABLE resourcePaths)
set (embeddedResources "${CMAKE_BINARY_DIR}/ui/EmbeddedResources.cpp")
file (MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/ui")
add_custom_command (
    OUTPUT "${embeddedResources}"
    COMMAND "${CMAKE_COMMAND}" "-DROOT=${CMAKE_SOURCE_DIR}/resources" "-DFILES=${resourceFiles}"
            "-DOUTPUT=${embeddedResources}" -P "${CMAKE_SOURCE_DIR}/cmake/EmbedResources.cmake"
    DEPENDS ${resourcePaths} "${CMAKE_SOURCE_DIR}/cmake/EmbedResources.cmake"
    COMMENT "Embedding fonts and drawings"
    VERBATIM)
target_sources (mv_ui PRIVATE "${embeddedResources}")
