target_link_libraries (bench_plugin PRIVATE mv_vst_host)
add_dependencies (bench_plugin iSordelin64)
target_compile_definitions (bench_plugin PRIVATE SORDELIN_PLUGIN_FILE="$<TARGET_FILE:iSordelin64>")
