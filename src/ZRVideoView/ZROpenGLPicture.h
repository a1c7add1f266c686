#pragma once

#include "ZRYuvPicture.h"

#include <QOpenGLFunctions>
#include <QOpenGLShaderProgram>
#include <QSize>

#include <vector>

class QRect;

// A YUV picture in three single-channel textures, with the shaders that draw it.
// Thread and context: all calls, making and deleting included, with one and the same OpenGL context
// current, of the compatible kind.
class ZROpenGLPicture : private QOpenGLFunctions
{
public:
    static constexpr char vertexShader[] =
        "attribute vec4 vertexIn; attribute vec2 textureIn; varying vec2 textureOut; "
        "void main(void) { gl_Position = vertexIn; textureOut = textureIn; }";

    static constexpr char fragmentShader[] =
        "varying vec2 textureOut; uniform sampler2D textureY; uniform sampler2D textureU; "
        "uniform sampler2D textureV; uniform mat3 colorConversionMatrix; void main(void){ vec3 "
        "yuv; "
        "vec3 rgb; yuv.x = texture2D(textureY, textureOut).r; yuv.y = texture2D(textureU, "
        "textureOut).r - 0.5; yuv.z = texture2D(textureV, textureOut).r - 0.5; rgb = "
        "colorConversionMatrix * yuv; gl_FragColor = vec4(rgb, 1); }";

    ZROpenGLPicture();
    ~ZROpenGLPicture();
    Q_DISABLE_COPY(ZROpenGLPicture)

    bool isValid() const { return program.isLinked(); }

    // Copies the picture; its planes aren't needed afterwards.
    void upload(const ZRYuvPicture &picture);
    // Draws what was last uploaded over a rectangle of the target: pixels, from the lower left.
    void draw(const QRect &target);

private:
    void uploadPlane(int number, const ZRYuvPicture &picture);
    void bindTexture(int number, bool shrunk);

    QOpenGLShaderProgram program;
    GLuint textures[3] = {};
    QSize size; // of what was last uploaded
    std::vector<quint16> plane; // on its way into a texture
    ZRVideoColours colours;
};
