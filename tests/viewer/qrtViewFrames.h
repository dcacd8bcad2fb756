#pragma once

#include <QImage>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <vector>

#include "base/qrtKit.h"
#include "foundation/core/qrtSharedPtr.h"
#include "foundation/core/qrtVideoBuffer.h"

namespace qrtplay {

/// A picture of which no two neighbouring pixels, rows or columns are alike; opaque.
[[nodiscard]] QImage testPicture(int width, int height);
/// Every second pixel of every row and column white, the others black.
[[nodiscard]] QImage checkerboard(int width, int height);
[[nodiscard]] QImage evenPicture(int width, int height, QColor const& colour);

/// A frame in memory of the test's own, as the player would deliver `picture` in this format: bottom row first, rows
/// padded to 4 bytes. `*isAlive` is true for as long as the frame lives.
[[nodiscard]] SharedPtr<VideoBuffer> memoryFrame(QImage const& picture, VideoBufferResolution const& format,
                                                 bool* isAlive = nullptr);
/// The same with four channels of 8 bits.
[[nodiscard]] SharedPtr<VideoBuffer> memoryFrame(QImage const& picture, bool* isAlive = nullptr);

/// Another context, as the player's, that shares its objects with those of the windows.
class PlayerContext final {
public:
    PlayerContext();
    ~PlayerContext();
    Q_DISABLE_COPY(PlayerContext)

    /// A frame in a texture, which lasts as long as this context.
    [[nodiscard]] SharedPtr<VideoBuffer> textureFrame(QImage const& picture, VideoBufferResolution const& format,
                                                      GLint internalFormat);
    [[nodiscard]] SharedPtr<VideoBuffer> textureFrame(QImage const& picture);
    /// How many textures and shader programs there are that all contexts share.
    [[nodiscard]] int countTextures();
    [[nodiscard]] int countPrograms();

private:
    void makeCurrent();

    QOpenGLContext m_context;
    QOffscreenSurface m_surface;
    std::vector<GLuint> m_textures;
};

}  // namespace qrtplay
