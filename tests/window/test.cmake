# The rigs of the plug-in's own tests, and the window of the small host.
target_sources (test_window PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}/plugin/CoreRig.cpp"
                                    "${CMAKE_CURRENT_SOURCE_DIR}/plugin/PluginRig.cpp"
                                    "${CMAKE_CURRENT_SOURCE_DIR}/plugin/RigBank.cpp"
                                    "${CMAKE_SOURCE_DIR}/tools/host/EditorWindow.cpp")
target_link_libraries (test_window PRIVATE mv_vst_host X11::X11 PNG::PNG)
add_dependencies (test_window iSordelin64)
target_compile_definitions (test_window PRIVATE SORDELIN_PLUGIN_FILE="$<TARGET_FILE:iSordelin64>")

# Each test gets a screen of its own where there can be one: tests run side by side, and a keyboard has one owner.
set_target_properties (test_window PROPERTIES CROSSCOMPILING_EMULATOR
                                              "${CMAKE_SOURCE_DIR}/tools/with-display.sh;--if-possible")
