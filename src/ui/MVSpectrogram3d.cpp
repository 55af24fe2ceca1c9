// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVSpectrogram3d.h"

#include "dsp/MVSpectralMath.h"
#include "ui/MVDisplayMath.h"
#include "ui/MVOpenGlRidges.h"

#include <algorithm>
#include <cmath>

namespace morvanelab
{

namespace
{

constexpr int stretch = MVSpectrogram3d::transformSize / 2; // samples that are transformed
constexpr float lineWidth = 1.3F;
constexpr double radiansAPixel = 0.008;
constexpr double zoomAWheelStep = 1.5;
constexpr int ticksBeforeOpenGl = 3; // with nothing before the display

const MVFrequencyAxis& frequencyAxis()
{
    static const MVFrequencyAxis axis (stretch / 2);
    return axis;
}

} // namespace

MVSpectrogram3d::MVSpectrogram3d()
    : MVRepaintPacedDisplay (shortestInterval, stretch),
      surface (std::make_unique<MVOpenGlRidges> ([this] { needsData = true; }))
{
    prepareSpectra (stretch);
    addChildComponent (*surface);
}

MVSpectrogram3d::~MVSpectrogram3d() { surface->detach(); }

void MVSpectrogram3d::resized()
{
    baseline = static_cast<float> (getHeight()) * 0.95F;
    span = static_cast<float> (getHeight()) * -0.9F;
    values.fill (baseline);
    surface->setBounds (getLocalBounds());
    viewChanged();
}

void MVSpectrogram3d::sampleRateChanged() { viewChanged(); }

void MVSpectrogram3d::viewChanged()
{
    floorPicture.invalidate();
    if (surface->isDrawing())
        showThroughOpenGl();
    repaint();
}

void MVSpectrogram3d::processData (const double* samples, int byteCount)
{
    const BusyScope busy (*this, samples, byteCount);
    if (! needsData)
        return;
    if (busy.size() >= stretch)
        displayMath::spectrumHeights (samples, stretch, spectrum.data(), values.data(), baseline, span);
    else
        values.fill (baseline);

    MVSpectrumHistory::Ridge ridge;
    ridge.filled = mode == filledMode;
    frequencyAxis().curve (values.data(), ridge.heights.data(), MVSpectrumHistory::numPoints, false);
    for (float& height : ridge.heights)
        height = span != 0.0 ? static_cast<float> ((height - baseline) / span) : 0.0F;
    ridges.add (ridge);
    needsData = false;
    if (surface->isAttached())
        showThroughOpenGl();
    repaint();
}

void MVSpectrogram3d::setOpenGlUse (OpenGlUse use)
{
    openGlUse = use;
    updateOpenGl();
}

bool MVSpectrogram3d::isUsingOpenGl() const { return surface->isDrawing(); }

bool MVSpectrogram3d::hasOpenGlFailed() const { return surface->hasFailed(); }

void MVSpectrogram3d::activityChanged (bool isActive)
{
    ticksUntouched = 0;
    if (! isActive)
        updateOpenGl();
}

void MVSpectrogram3d::updateOpenGl()
{
    // The context's window lies before every other component, so it gives way to whatever comes over the display, and
    // comes back when that has been gone for a moment.
    const bool possible =
        running && openGlUse != OpenGlUse::never && ! surface->hasFailed() && isShowing() && ! isTouchedByOthers();
    ticksUntouched = possible ? ticksUntouched + 1 : 0;
    if (! possible)
    {
        if (surface->isVisible())
        {
            surface->detach();
            surface->setVisible (false);
            needsData = true;
            repaint();
        }
        return;
    }
    if (ticksUntouched < ticksBeforeOpenGl || surface->isAttached())
        return;
    surface->setVisible (true);
    surface->attach (openGlUse == OpenGlUse::always);
    if (surface->isAttached())
        showThroughOpenGl();
    else
        surface->setVisible (false);
}

void MVSpectrogram3d::showThroughOpenGl()
{
    colours.update();
    const auto& floor =
        floorPicture.imageFor (getLocalBounds(), scale, [this] (juce::Graphics& graphics) { paintFloor (graphics); });
    surface->show (floor, ridges, orbit, colours, lineWidth * scale);
}

juce::Point<float> MVSpectrogram3d::placeOf (double x, double z) const
{
    const auto matrix = orbit.matrix (static_cast<double> (getWidth()) / std::max (getHeight(), 1));
    const auto point = MVOrbitView::project (matrix, x, 0.0, z);
    return { static_cast<float> ((point.x * 0.5 + 0.5) * getWidth()),
             static_cast<float> ((0.5 - point.y * 0.5) * getHeight()) };
}

void MVSpectrogram3d::paintFloor (juce::Graphics& graphics) const
{
    const auto bounds = getLocalBounds();
    displayAxes::paintBackground (graphics, bounds);
    const auto label = [&] (juce::Point<float> place, const juce::String& text, juce::Justification side)
    {
        const juce::Rectangle<float> box (place.x - (side.testFlags (juce::Justification::left) ? 0.0F : 30.0F),
                                          place.y, 60.0F, fontHeights::tiny + 2.0F);
        if (bounds.toFloat().contains (box.reduced (10.0F, 0.0F)))
            displayAxes::paintText (graphics, box, text, side);
    };

    // Powers of ten have their texts first.
    auto marks = frequencyAxis().marks (sampleRate());
    std::stable_partition (marks.begin(), marks.end(),
                           [] (double hz) { return std::log10 (hz) == std::floor (std::log10 (hz)); });
    std::vector<float> taken;
    for (const double hz : marks)
    {
        const double x = 2.0 * frequencyAxis().positionOf (hz, sampleRate()) - 1.0;
        const auto front = placeOf (x, 0.0);
        graphics.setColour (themeColour (MVThemeColour::displayGrid));
        graphics.drawLine ({ front, placeOf (x, 1.0) }, metrics::hairline);
        if (std::any_of (taken.begin(), taken.end(), [&] (float other) { return std::abs (front.x - other) < 44.0F; }))
            continue;
        taken.push_back (front.x);
        label (front.translated (0.0F, 5.0F), displayAxes::frequencyText (hz), juce::Justification::centred);
    }

    const double shown = MVSpectrumHistory::numRidges * timerInterval / 1000.0;
    for (double seconds = 0.0; seconds < shown; seconds += 1.0)
    {
        const double z = seconds / shown;
        graphics.setColour (themeColour (MVThemeColour::displayGrid));
        graphics.drawLine ({ placeOf (-1.0, z), placeOf (1.0, z) }, metrics::hairline);
        if (seconds > 0.0)
            label (placeOf (1.0, z).translated (6.0F, -6.0F), displayAxes::secondsText (-seconds),
                   juce::Justification::centredLeft);
    }
    displayAxes::paintTitle (graphics, bounds, "3d Spectrogram");
}

void MVSpectrogram3d::paintDisplay (juce::Graphics& graphics)
{
    const float newScale = displayScale (graphics);
    if (newScale != scale)
    {
        scale = newScale;
        floorPicture.invalidate();
    }
    colours.update();
    const auto& floor = floorPicture.imageFor (getLocalBounds(), scale, [this] (juce::Graphics& g) { paintFloor (g); });
    if (canvas.getBounds() != floor.getBounds())
        canvas = juce::Image (juce::Image::RGB, floor.getWidth(), floor.getHeight(), false, juce::SoftwareImageType());
    {
        const juce::Image::BitmapData from (floor, juce::Image::BitmapData::readOnly);
        const juce::Image::BitmapData to (canvas, juce::Image::BitmapData::writeOnly);
        for (int y = 0; y < to.height; ++y)
            std::copy_n (from.getLinePointer (y), to.width * to.pixelStride, to.getLinePointer (y));
    }
    picture.draw (canvas, ridges, orbit, colours, lineWidth * scale);
    graphics.setOpacity (1.0F);
    graphics.drawImageTransformed (canvas, juce::AffineTransform::scale (1.0F / scale));
    if (isSilent())
        displayAxes::paintNoSignal (graphics, getLocalBounds());
    needsData = true;
}

void MVSpectrogram3d::mouseDown (const juce::MouseEvent& event)
{
    orbitAtPress = orbit;
    if (event.mods.isPopupMenu())
        showMenu();
}

void MVSpectrogram3d::mouseDrag (const juce::MouseEvent& event)
{
    if (event.mods.isPopupMenu())
        return;
    orbit = orbitAtPress;
    orbit.turn (-radiansAPixel * event.getDistanceFromDragStartX(), radiansAPixel * event.getDistanceFromDragStartY());
    viewChanged();
}

void MVSpectrogram3d::mouseDoubleClick (const juce::MouseEvent&)
{
    orbit.reset();
    viewChanged();
}

void MVSpectrogram3d::mouseWheelMove (const juce::MouseEvent&, const juce::MouseWheelDetails& wheel)
{
    orbit.zoom (std::pow (zoomAWheelStep, -wheel.deltaY));
    viewChanged();
}

void MVSpectrogram3d::showMenu()
{
    const juce::Component::SafePointer<MVSpectrogram3d> self (this);
    juce::PopupMenu menu;
    const auto choose = [self] (int newMode)
    {
        return [self, newMode]
        {
            if (self != nullptr)
                self->setMode (newMode);
        };
    };
    menu.addItem ("Lines", true, mode != filledMode, choose (linesMode));
    menu.addItem ("Filled ridges", true, mode == filledMode, choose (filledMode));
    menu.addSeparator();
    menu.addItem ("Reset view",
                  [self]
                  {
                      if (self == nullptr)
                          return;
                      self->orbit.reset();
                      self->viewChanged();
                  });
    menu.showMenuAsync (juce::PopupMenu::Options().withTargetComponent (this).withMousePosition());
}

} // namespace morvanelab
