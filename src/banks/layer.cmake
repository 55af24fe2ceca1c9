target_link_libraries (mv_banks PUBLIC mv_juce_core)
