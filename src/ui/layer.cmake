target_link_libraries (mv_ui PUBLIC mv_juce_gui)
