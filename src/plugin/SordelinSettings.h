// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "banks/MVAppPersistentProps.h"

#include <juce_core/juce_core.h>

#include <memory>

namespace morvanelab
{

/** The settings of the plug-in by name and type, over the properties that all instances of a process share. Stored
    values that are damaged or out of their limits count as their defaults. Any thread. */
class SordelinSettings
{
public:
    static constexpr int monoMode = 1;
    static constexpr int polyMode = 2;
    static constexpr int oneShotMode = 3;
    static constexpr int smallestVoices = 1;
    static constexpr int mostVoices = 64;
    static constexpr int defaultVoices = 16;
    static constexpr int smallestZoom = 75;
    static constexpr int largestZoom = 250;
    static constexpr int defaultZoom = 100;

    /** Window and librarian as the user left them. */
    struct Dimensions
    {
        int width = 0; ///< at 100 percent zoom; 0 if never stored
        int height = 0;
        bool librarianShown = false;
        std::shared_ptr<const juce::XmlElement> librarian; ///< `bank_mgr_settings`, the librarian's own; null if none
    };

    /** The properties outlive the settings. */
    explicit SordelinSettings (MVAppPersistentProps& propertiesToUse) : properties (propertiesToUse) {}

    /** `dimension_settings`: XML, `xml_wrapper` holding `main_window_rect` (width, height, bank_mgr_displayed) and
        `bank_mgr_settings`. */
    Dimensions getDimensions() const { return readDimensions ("dimension_settings"); }
    void setDimensions (const Dimensions& dimensions) { writeDimensions ("dimension_settings", dimensions); }
    /** `mv_custom_app_values`: such a document that the user keeps on purpose. */
    Dimensions getCustomAppValues() const { return readDimensions ("mv_custom_app_values"); }
    void setCustomAppValues (const Dimensions& dimensions) { writeDimensions ("mv_custom_app_values", dimensions); }

    /** `mv_custom_look_and_feel`: the XML text of the colours that the user has changed (see MVLookAndFeel). Empty if
        there are none, or if the text would be more than our own XML classes take. */
    juce::String getCustomLookAndFeel() const;
    void setCustomLookAndFeel (const juce::String& xml) { properties.setString ("mv_custom_look_and_feel", xml); }

    /** `window_zoom`, in percent. The setter folds into the limits. */
    int getZoom() const;
    void setZoom (int percent);
    /** `show_help_buttons`: tooltips and help controls. */
    bool getShowHelp() const { return properties.getBool ("show_help_buttons", false); }
    void setShowHelp (bool on) { properties.setBool ("show_help_buttons", on); }
    /** `help_path_root`: where the user guide lies; empty for the default. */
    juce::String getHelpRoot() const { return properties.getString ("help_path_root"); }

    /** `play_mode`, `voices` and `play_host_notes`. SordelinMainComponent has the setters, which also let the engine
        know. */
    int getPlayMode() const;
    int getVoices() const;
    bool getPlayHostNotes() const { return properties.getBool ("play_host_notes", false); }
    void storePlayMode (int mode) { properties.setInt ("play_mode", mode); }
    void storeVoices (int voices) { properties.setInt ("voices", voices); }
    void storePlayHostNotes (bool on) { properties.setBool ("play_host_notes", on); }

    void flush() { properties.flush(); }

private:
    Dimensions readDimensions (const char* key) const;
    void writeDimensions (const char* key, const Dimensions& dimensions);
    int getWithin (const char* key, int low, int high, int fallback) const;

    MVAppPersistentProps& properties;
};

} // namespace morvanelab
