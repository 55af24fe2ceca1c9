# Some tests read the sources that the text form of patches is told by.
target_compile_definitions (test_engine PRIVATE SORDELIN_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
