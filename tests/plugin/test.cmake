target_link_libraries (test_plugin PRIVATE mv_vst_host)
add_dependencies (test_plugin iSordelin64)
target_compile_definitions (test_plugin PRIVATE SORDELIN_PLUGIN_FILE="$<TARGET_FILE:iSordelin64>")

# The whole way once more, from outside: first run, factory bank, a tune, the editor opened again and again meanwhile.
if (TARGET sordelin-host AND TARGET factory_bank)
    add_dependencies (test_plugin sordelin-host factory_bank)
    add_test (NAME PluginDemo.playsATuneWhileItsWindowOpensAndCloses
              COMMAND "${CMAKE_SOURCE_DIR}/tools/demo.sh" "${SORDELIN_DIST}" "${CMAKE_CURRENT_BINARY_DIR}/demo" --reopen)
    set_tests_properties (PluginDemo.playsATuneWhileItsWindowOpensAndCloses PROPERTIES TIMEOUT 120)
endif()
