# What needs a window is skipped where there is no display, so all runs once more with a virtual one.
find_program (XVFB_PROGRAM Xvfb)
if (XVFB_PROGRAM)
    set (on_display "${CMAKE_SOURCE_DIR}/tools/with-display.sh" $<TARGET_FILE:test_ui>)
    set (opengl_tests "Display3dOnScreen.*")
    add_test (NAME Ui.allTestsOnAVirtualDisplay COMMAND ${on_display} "--gtest_filter=-${opengl_tests}")
    # OpenGL drivers lose a few bytes of their own, which a search for leaks cannot tell from ours: they have gone by
    # then. Everything else is looked at here too.
    add_test (NAME Ui.openGlOnAVirtualDisplay COMMAND ${on_display} "--gtest_filter=${opengl_tests}")
    set_tests_properties (Ui.openGlOnAVirtualDisplay PROPERTIES ENVIRONMENT "ASAN_OPTIONS=detect_leaks=0")
    set_tests_properties (Ui.allTestsOnAVirtualDisplay Ui.openGlOnAVirtualDisplay PROPERTIES TIMEOUT 300)
endif()
target_include_directories (test_ui PRIVATE "${CMAKE_SOURCE_DIR}/tools")
