target_link_libraries (test_plugin PRIVATE mv_vst_host)
add_dependencies (test_plugin iSordelin64)
target_compile_definitions (test_plugin PRIVATE SORDELIN_PLUGIN_FILE="$<TARGET_FILE:iSordelin64>")
