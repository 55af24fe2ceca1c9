// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVOpenGlRenderer.h"

#include <cstdlib>

namespace morvanelab
{

using namespace juce::gl;

namespace
{

// One texture holds all colours: a row for the lines of each age, one for the surfaces of each age, and the background.
constexpr int numAges = MVSpectrumHistory::numRidges;
constexpr int backgroundRow = 2 * numAges;
constexpr int colourRows = backgroundRow + 1;
constexpr int numShades = MVRidgeColours::numShades;

constexpr const char* ridgeVertex = R"(#version 120
attribute vec2 corner;
uniform mat4 projection;
uniform float depth;
varying float level;
void main()
{
    level = corner.y;
    gl_Position = projection * vec4 (corner, depth, 1.0);
})";

constexpr const char* ridgeFragment = R"(#version 120
uniform sampler2D colours;
uniform float row;
uniform vec2 size;
varying float level;
void main()
{
    gl_FragColor = texture2D (colours, vec2 ((floor (level * (size.x - 1.0) + 0.5) + 0.5) / size.x, (row + 0.5) / size.y));
})";

constexpr const char* backgroundVertex = R"(#version 120
attribute vec2 corner;
varying vec2 place;
void main()
{
    place = vec2 (corner.x, -corner.y) * 0.5 + 0.5;
    gl_Position = vec4 (corner, 0.0, 1.0);
})";

constexpr const char* backgroundFragment = R"(#version 120
uniform sampler2D picture;
varying vec2 place;
void main() { gl_FragColor = texture2D (picture, place); })";

bool build (juce::OpenGLShaderProgram& program, const char* vertex, const char* fragment)
{
    return program.addVertexShader (vertex) && program.addFragmentShader (fragment) && program.link();
}

/** Gives the bound texture its pixels, 4 bytes each. */
void loadTexture (int width, int height, const std::vector<juce::uint8>& rgba, GLint filter)
{
    glTexParameteri (GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
    glTexParameteri (GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
    glTexParameteri (GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri (GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glPixelStorei (GL_UNPACK_ALIGNMENT, 4);
    glTexImage2D (GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
}

void append (std::vector<juce::uint8>& rgba, juce::PixelRGB pixel)
{
    for (const juce::uint8 part : { pixel.getRed(), pixel.getGreen(), pixel.getBlue(), juce::uint8 { 255 } })
        rgba.push_back (part);
}

} // namespace

/** What belongs to one context; made and destroyed while it is current. */
struct MVOpenGlRenderer::Resources
{
    explicit Resources (juce::OpenGLContext& context) : ridges (context), background (context)
    {
        usable = build (ridges, ridgeVertex, ridgeFragment) && build (background, backgroundVertex, backgroundFragment);
        glGenBuffers (1, &corners);
        glGenBuffers (1, &square);
        glGenTextures (1, &colourTexture);
        glGenTextures (1, &backgroundTexture);
        const GLfloat whole[] { -1.0F, -1.0F, 1.0F, -1.0F, -1.0F, 1.0F, 1.0F, 1.0F };
        glBindBuffer (GL_ARRAY_BUFFER, square);
        glBufferData (GL_ARRAY_BUFFER, sizeof (whole), whole, GL_STATIC_DRAW);
    }

    ~Resources()
    {
        glDeleteBuffers (1, &corners);
        glDeleteBuffers (1, &square);
        glDeleteTextures (1, &colourTexture);
        glDeleteTextures (1, &backgroundTexture);
    }

    Resources (const Resources&) = delete;

    juce::OpenGLShaderProgram ridges;
    juce::OpenGLShaderProgram background;
    GLuint corners = 0;
    GLuint square = 0;
    GLuint colourTexture = 0;
    GLuint backgroundTexture = 0;
    bool usable = false;
};

MVOpenGlRenderer::MVOpenGlRenderer (std::function<void()> pictureDrawn) : drawn (std::move (pictureDrawn)) {}

MVOpenGlRenderer::~MVOpenGlRenderer() = default;

void MVOpenGlRenderer::setScene (const juce::Image& background, const MVSpectrumHistory& history,
                                 const MVOrbitView& view, const MVRidgeColours& colours, float lineWidth)
{
    const std::scoped_lock guard (lock);
    if (next.background != background)
    {
        next.background = background;
        next.backgroundIsNew = true;
    }
    if (next.colours.version() != colours.version())
    {
        next.colours = colours;
        next.coloursAreNew = true;
    }
    next.history = history;
    next.view = view;
    next.lineWidth = lineWidth;
}

void MVOpenGlRenderer::takeScene()
{
    const std::scoped_lock guard (lock);
    if (std::exchange (next.backgroundIsNew, false))
    {
        scene.background = next.background;
        scene.backgroundIsNew = true;
    }
    if (std::exchange (next.coloursAreNew, false))
    {
        scene.colours = next.colours;
        scene.coloursAreNew = true;
    }
    scene.history = next.history;
    scene.view = next.view;
    scene.lineWidth = next.lineWidth;
}

juce::Image MVOpenGlRenderer::takeKeptPicture()
{
    const std::scoped_lock guard (lock);
    return std::exchange (kept, {});
}

void MVOpenGlRenderer::newOpenGLContextCreated()
{
    auto* const context = juce::OpenGLContext::getCurrentContext();
    const auto* const version = reinterpret_cast<const char*> (glGetString (GL_VERSION));
    const bool modern = version != nullptr && std::strtod (version, nullptr) >= 2.1 && glGenBuffers != nullptr
                        && glVertexAttribPointer != nullptr && glCreateShader != nullptr;
    if (context == nullptr || ! modern)
    {
        progress = State::refused;
        return;
    }
    resources = std::make_unique<Resources> (*context);
    scene.backgroundIsNew = true;
    scene.coloursAreNew = true;
    if (! resources->usable)
        progress = State::refused;
}

void MVOpenGlRenderer::openGLContextClosing() { resources.reset(); }

void MVOpenGlRenderer::uploadBackground()
{
    glBindTexture (GL_TEXTURE_2D, resources->backgroundTexture);
    if (! std::exchange (scene.backgroundIsNew, false) || scene.background.isNull())
        return;
    const juce::Image::BitmapData pixels (scene.background, juce::Image::BitmapData::readOnly);
    std::vector<juce::uint8> rgba;
    rgba.reserve (static_cast<std::size_t> (pixels.width) * static_cast<std::size_t> (pixels.height) * 4);
    for (int y = 0; y < pixels.height; ++y)
        for (int x = 0; x < pixels.width; ++x)
            append (rgba, *reinterpret_cast<const juce::PixelRGB*> (pixels.getPixelPointer (x, y)));
    loadTexture (pixels.width, pixels.height, rgba, GL_LINEAR);
}

void MVOpenGlRenderer::uploadColours()
{
    glBindTexture (GL_TEXTURE_2D, resources->colourTexture);
    if (! std::exchange (scene.coloursAreNew, false))
        return;
    std::vector<juce::uint8> rgba;
    rgba.reserve (static_cast<std::size_t> (numShades) * colourRows * 4);
    for (int age = 0; age < numAges; ++age)
        for (const auto& shade : scene.colours.lines (age))
            append (rgba, shade);
    for (int age = 0; age < numAges; ++age)
        for (const auto& shade : scene.colours.surfaces (age))
            append (rgba, shade);
    for (int shade = 0; shade < numShades; ++shade)
        append (rgba, scene.colours.background());
    loadTexture (numShades, colourRows, rgba, GL_NEAREST);
}

void MVOpenGlRenderer::uploadRidges()
{
    corners.clear();
    for (int age = 0; age < numAges; ++age)
    {
        const auto& heights = scene.history.ridge (age).heights;
        for (int point = 0; point < MVSpectrumHistory::numPoints; ++point)
        {
            const auto x = static_cast<float> (MVSpectrumHistory::xOf (point));
            corners.push_back ({ x, heights[static_cast<std::size_t> (point)] });
            corners.push_back ({ x, 0.0F });
        }
    }
    glBindBuffer (GL_ARRAY_BUFFER, resources->corners);
    glBufferData (GL_ARRAY_BUFFER, static_cast<GLsizeiptr> (corners.size() * sizeof (Corner)), corners.data(),
                  GL_STREAM_DRAW);
}

void MVOpenGlRenderer::drawBackground()
{
    auto& program = resources->background;
    program.use();
    program.setUniform ("picture", 0);
    glActiveTexture (GL_TEXTURE0);
    uploadBackground();
    glBindBuffer (GL_ARRAY_BUFFER, resources->square);
    const juce::OpenGLShaderProgram::Attribute corner (program, "corner");
    glEnableVertexAttribArray (corner.attributeID);
    glVertexAttribPointer (corner.attributeID, 2, GL_FLOAT, GL_FALSE, 0, nullptr);
    glDrawArrays (GL_TRIANGLE_STRIP, 0, 4);
    glDisableVertexAttribArray (corner.attributeID);
}

void MVOpenGlRenderer::drawRidges (float aspect)
{
    auto& program = resources->ridges;
    program.use();
    uploadColours();
    uploadRidges();
    program.setUniform ("colours", 0);
    program.setUniform ("size", static_cast<GLfloat> (numShades), static_cast<GLfloat> (colourRows));
    const auto matrix = scene.view.matrix (aspect);
    program.setUniformMat4 ("projection", matrix.data(), 1, GL_FALSE);
    const juce::OpenGLShaderProgram::Uniform depth (program, "depth");
    const juce::OpenGLShaderProgram::Uniform row (program, "row");
    const juce::OpenGLShaderProgram::Attribute corner (program, "corner");
    glEnableVertexAttribArray (corner.attributeID);
    glLineWidth (scene.lineWidth);

    // From the back to the front; a nearer ridge paints over those behind it.
    for (int age = numAges - 1; age >= 0; --age)
    {
        const bool filled = scene.history.ridge (age).filled;
        const auto first = static_cast<std::size_t> (age) * cornersARidge * sizeof (Corner);
        const auto* const offset = reinterpret_cast<const void*> (first);
        depth.set (static_cast<GLfloat> (MVSpectrumHistory::depthOf (age)));
        row.set (static_cast<GLfloat> (filled ? numAges + age : backgroundRow));
        glVertexAttribPointer (corner.attributeID, 2, GL_FLOAT, GL_FALSE, sizeof (Corner), offset);
        glDrawArrays (GL_TRIANGLE_STRIP, 0, cornersARidge);
        row.set (static_cast<GLfloat> (age));
        glVertexAttribPointer (corner.attributeID, 2, GL_FLOAT, GL_FALSE, 2 * sizeof (Corner), offset);
        glDrawArrays (GL_LINE_STRIP, 0, MVSpectrumHistory::numPoints);
    }
    glDisableVertexAttribArray (corner.attributeID);
    glBindBuffer (GL_ARRAY_BUFFER, 0);
}

void MVOpenGlRenderer::renderOpenGL()
{
    if (resources == nullptr || ! resources->usable)
        return;
    takeScene();
    GLint viewport[4] {};
    glGetIntegerv (GL_VIEWPORT, viewport);
    const auto back = scene.colours.background();
    glClearColor (static_cast<float> (back.getRed()) / 255.0F, static_cast<float> (back.getGreen()) / 255.0F,
                  static_cast<float> (back.getBlue()) / 255.0F, 1.0F);
    glClear (GL_COLOR_BUFFER_BIT);
    if (viewport[2] <= 0 || viewport[3] <= 0 || scene.background.isNull())
        return;
    glDisable (GL_BLEND);
    glDisable (GL_DEPTH_TEST);
    drawBackground();
    drawRidges (static_cast<float> (viewport[2]) / static_cast<float> (viewport[3]));
    if (keepWanted.exchange (false))
        keepPicture (viewport[2], viewport[3]);
    progress = State::drawing;
    ++pictures;
    drawn();
}

void MVOpenGlRenderer::keepPicture (int width, int height)
{
    std::vector<juce::uint8> rgba (static_cast<std::size_t> (width) * static_cast<std::size_t> (height) * 4);
    glPixelStorei (GL_PACK_ALIGNMENT, 4);
    glReadPixels (0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
    juce::Image image (juce::Image::RGB, width, height, false, juce::SoftwareImageType());
    const juce::Image::BitmapData pixels (image, juce::Image::BitmapData::writeOnly);
    const juce::uint8* from = rgba.data();
    for (int y = height - 1; y >= 0; --y)
        for (int x = 0; x < width; ++x, from += 4)
            pixels.setPixelColour (x, y, juce::Colour (from[0], from[1], from[2]));
    const std::scoped_lock guard (lock);
    kept = image;
}

} // namespace morvanelab
