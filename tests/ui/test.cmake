# What needs a window is skipped where there is no display, so all runs once more with a virtual one.
find_program (XVFB_PROGRAM Xvfb)
if (XVFB_PROGRAM)
    add_test (NAME Ui.allTestsOnAVirtualDisplay COMMAND "${CMAKE_SOURCE_DIR}/tools/with-display.sh" $<TARGET_FILE:test_ui>)
    set_tests_properties (Ui.allTestsOnAVirtualDisplay PROPERTIES TIMEOUT 300)
endif()
target_include_directories (test_ui PRIVATE "${CMAKE_SOURCE_DIR}/tools")
