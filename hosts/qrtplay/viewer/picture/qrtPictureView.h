#pragma once

#include <QColor>
#include <QImage>
#include <QOpenGLWidget>
#include <QPointF>
#include <QString>
#include <QStringList>
#include <memory>

#include "base/qrtKit.h"
#include "foundation/core/qrtSharedPtr.h"
#include "foundation/core/qrtVideoBuffer.h"
#include "viewer/picture/qrtPictureZoom.h"

namespace qrtplay {

/// Shows one frame: a delivered texture is drawn as it is, delivered memory is uploaded first.
///
/// The picture's row 0 is its bottom one. Alpha is premultiplied; transparent parts show the background. Fitted, the
/// picture is filtered; enlarged beyond one to one its pixels stay sharp squares. Everything is laid out in pixels of
/// the device, so that one to one means that on every screen.
///
/// The wheel zooms, a drag with the left or middle button moves a picture that is zoomed.
///
/// Threading: the GUI thread. OpenGL: shares objects with the context that the player was given
/// (`Qt::AA_ShareOpenGLContexts`).
class PictureView final : public QOpenGLWidget {
    Q_OBJECT

public:
    explicit PictureView(QWidget* parent = nullptr);
    ~PictureView() override;

    /// Keeps the buffer until the next one; null shows the background alone.
    void showFrame(SharedPtr<VideoBuffer> const& frame);
    [[nodiscard]] SharedPtr<VideoBuffer> const& frame() const noexcept { return m_frame; }
    /// A text in the middle of the view instead of a picture, such as why there is none; empty for none.
    void setMessage(QString const& text);
    [[nodiscard]] QString message() const { return m_message; }
    /// Lines of the overlay, in the top left corner; empty for none.
    void setOverlay(QStringList const& lines);
    [[nodiscard]] QStringList overlay() const { return m_overlay; }

    void setBackground(QColor const& colour);
    [[nodiscard]] QColor background() const { return m_background; }
    void setSafeAreas(bool shown);
    [[nodiscard]] bool safeAreas() const noexcept { return m_safeAreas; }

    [[nodiscard]] PictureZoom const& zoom() const noexcept { return m_zoom; }
    /// The frame's own pixels, top row first, as 8 bits per channel, alpha not premultiplied; null when there is no
    /// frame, it cannot be read, or the view has never been shown.
    [[nodiscard]] QImage snapshot();

public slots:
    void zoomToFit();
    void zoomToOriginal();  ///< one pixel of the frame on one of the device
    void zoomIn();
    void zoomOut();

signals:
    void zoomChanged();
    void fullScreenWanted();  ///< double click

protected:
    void initializeGL() override;
    void paintGL() override;
    void resizeGL(int width, int height) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    struct GlObjects;

    void releaseGl();
    [[nodiscard]] QSize viewInPixels() const;
    void layOut();
    template <class Change>
    void changeZoom(Change const& change);
    void zoomTo(double factor, QPointF anchor);

    void paintPicture();
    void paintSafeAreas();
    void paintOverlay();
    void paintMessage();

    SharedPtr<VideoBuffer> m_frame;
    QString m_message;
    QStringList m_overlay;
    QColor m_background{24, 24, 24};
    bool m_safeAreas = false;
    PictureZoom m_zoom;
    int m_wheelRest = 0;     // of a wheel that turns in smaller steps
    QPointF m_dragPosition;  // in pixels of the device

    std::unique_ptr<GlObjects> m_gl;  // while there is a context
};

}  // namespace qrtplay
