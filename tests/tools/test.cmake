add_dependencies (test_tools sordelin)
target_compile_definitions (test_tools PRIVATE SORDELIN_PROGRAM="$<TARGET_FILE:sordelin>"
                                               SORDELIN_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
