// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVDisplayBackdrop.h"
#include "ui/MVOrbitView.h"
#include "ui/MVRepaintPacedDisplay.h"
#include "ui/MVRidgePicture.h"
#include "ui/MVSpectrumHistory.h"

namespace morvanelab
{

class MVOpenGlRidges;

/** Spectra drawn in perspective, one ridge a picture, the newest in front. Dragging turns the scene, the wheel zooms, a
    double-click puts it back.

    It is drawn through OpenGL where a context of the graphics hardware comes up, else as a picture made here from the
   same history with the same projection; the decision falls while it shows, a little after it was first shown. The
   context lives only while the display is on the screen with nothing before it. Message thread; the renderer has a
   thread of its own. */
class MVSpectrogram3d : public MVRepaintPacedDisplay
{
public:
    static constexpr int transformSize = 1024;
    static constexpr int numBins = transformSize / 2; ///< all; the lower half is drawn, the upper mirrors it

    /** How new ridges are drawn. */
    static constexpr int linesMode = 1;
    static constexpr int filledMode = 2; ///< surfaces in the colours of the spectrogram

    MVSpectrogram3d();
    ~MVSpectrogram3d() override;

    void processData (const double* samples, int byteCount) override;
    /** How ridges that come in from now on are drawn; those that stand keep their way. Anything but filledMode draws
        lines. */
    void setMode (int newMode) { mode = newMode; }
    int getMode() const { return mode; }

    /** When to draw through OpenGL. */
    enum class OpenGlUse
    {
        never,
        withHardware, ///< where the processor would do the drawing, a picture made for it is much cheaper
        always        ///< wherever a context comes up
    };

    /** At first withHardware. */
    void setOpenGlUse (OpenGlUse use);
    /** Whether OpenGL draws what is seen now. */
    bool isUsingOpenGl() const;
    /** Whether drawing through OpenGL was tried and given up. */
    bool hasOpenGlFailed() const;
    /** The component that draws through OpenGL. */
    MVOpenGlRidges& openGl() { return *surface; }

    const MVOrbitView& view() const { return orbit; }
    const MVSpectrumHistory& history() const { return ridges; }
    /** y of each bin of the newest frame. */
    const std::array<double, numBins>& bins() const { return values; }

    void paintDisplay (juce::Graphics& graphics) override;
    void resized() override;
    void mouseDown (const juce::MouseEvent& event) override;
    void mouseDrag (const juce::MouseEvent& event) override;
    void mouseDoubleClick (const juce::MouseEvent& event) override;
    void mouseWheelMove (const juce::MouseEvent& event, const juce::MouseWheelDetails& wheel) override;

private:
    void afterTick() override { updateOpenGl(); }
    void activityChanged (bool isActive) override;
    void sampleRateChanged() override;
    void viewChanged();
    void updateOpenGl();
    void showThroughOpenGl();
    void showMenu();
    void paintFloor (juce::Graphics& graphics) const;
    juce::Point<float> placeOf (double x, double z) const;

    int mode = linesMode;
    double baseline = 0.0;
    double span = 0.0;
    std::array<double, transformSize> spectrum {};
    std::array<double, numBins> values {};
    MVSpectrumHistory ridges;
    MVOrbitView orbit;
    MVOrbitView orbitAtPress;
    MVDisplayBackdrop floorPicture;
    MVRidgeColours colours;
    MVRidgePicture picture;
    juce::Image canvas; ///< the picture made without OpenGL, in pixels of the screen
    float scale = 1.0F; ///< pixels of the screen a pixel of the display
    OpenGlUse openGlUse = OpenGlUse::withHardware;
    int ticksUntouched = 0;
    std::unique_ptr<MVOpenGlRidges> surface;
};

} // namespace morvanelab
