#include "ZROpenGLPicture.h"

#include <QMatrix3x3>
#include <QRect>

#include <algorithm>

namespace {

constexpr const char *samplers[] = {"textureY", "textureU", "textureV"};

// The whole target, as a strip of two triangles, and what of the textures comes to each corner:
// their first row is the picture's upper one.
constexpr GLfloat corners[] = {-1, -1, 1, -1, -1, 1, 1, 1};
constexpr GLfloat textureCorners[] = {0, 1, 1, 1, 0, 0, 1, 0};

// Textures take 16 bits a value, which is this many for one of the picture.
constexpr int unit = 257;

// What is taken off the values on their way into a texture, as the shader takes nothing off Y and
// exactly one half off U and V: the black level, and the half by which 128 is above the middle.
int offsetOf(int plane, const ZRVideoColours &colours)
{
    return plane == 0 ? colours.black() * unit : unit / 2;
}

// What is blacker than black becomes black, as it would in the end.
void widen(const quint8 *source, int length, int offset, quint16 *target)
{
    for (int i = 0; i < length; ++i) {
        target[i] = quint16(std::max(source[i] * unit - offset, 0));
    }
}

}

ZROpenGLPicture::ZROpenGLPicture()
{
    initializeOpenGLFunctions();
    program.addShaderFromSourceCode(QOpenGLShader::Vertex, vertexShader);
    program.addShaderFromSourceCode(QOpenGLShader::Fragment, fragmentShader);
    program.link();

    glGenTextures(3, textures);
    for (const GLuint texture : textures) {
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    }
}

ZROpenGLPicture::~ZROpenGLPicture()
{
    glDeleteTextures(3, textures);
}

void ZROpenGLPicture::upload(const ZRYuvPicture &picture)
{
    glPixelStorei(GL_UNPACK_ALIGNMENT, 2);
    for (int number = 0; number < 3; ++number) {
        uploadPlane(number, picture);
    }
    size = {picture.width, picture.height};
    colours = picture.colours;
}

void ZROpenGLPicture::uploadPlane(int number, const ZRYuvPicture &picture)
{
    const int width = picture.rowLength(number);
    const int height = picture.rows(number);
    const int offset = offsetOf(number, picture.colours);
    plane.resize(size_t(width) * size_t(height));
    for (int row = 0; row < height; ++row) {
        widen(picture.row(number, row), width, offset, plane.data() + qptrdiff(row) * width);
    }

    glBindTexture(GL_TEXTURE_2D, textures[number]);
    if (size == QSize(picture.width, picture.height)) {
        glTexSubImage2D(
            GL_TEXTURE_2D, 0, 0, 0, width, height, GL_LUMINANCE, GL_UNSIGNED_SHORT, plane.data());
    } else {
        glTexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE16, width, height, 0, GL_LUMINANCE,
            GL_UNSIGNED_SHORT, plane.data());
    }
}

void ZROpenGLPicture::draw(const QRect &target)
{
    const ZRVideoColours::Factors f = colours.factors();
    const float conversion[] = {f.y, 0, f.rv, f.y, f.gu, f.gv, f.y, f.bu, 0}; // row by row
    const bool shrunk = 2 * target.width() < size.width();

    glViewport(target.x(), target.y(), target.width(), target.height());
    program.bind();
    program.setUniformValue("colorConversionMatrix", QMatrix3x3(conversion));
    for (int number = 0; number < 3; ++number) {
        glActiveTexture(GLenum(GL_TEXTURE0 + number));
        bindTexture(number, shrunk);
        program.setUniformValue(samplers[number], number);
    }
    program.enableAttributeArray("vertexIn");
    program.enableAttributeArray("textureIn");
    program.setAttributeArray("vertexIn", corners, 2);
    program.setAttributeArray("textureIn", textureCorners, 2);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    program.disableAttributeArray("vertexIn");
    program.disableAttributeArray("textureIn");
    program.release();
    glActiveTexture(GL_TEXTURE0);
}

// Below half of its size a picture would lose pixels between the samples, so there it is sampled
// from smaller copies.
void ZROpenGLPicture::bindTexture(int number, bool shrunk)
{
    glBindTexture(GL_TEXTURE_2D, textures[number]);
    if (shrunk) {
        glGenerateMipmap(GL_TEXTURE_2D);
    }
    glTexParameteri(
        GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, shrunk ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR);
}
