#pragma once
#include <QAbstractScrollArea>
#include <memory>
#include <optional>

#include "platform/ivImageScale.h"
#include "ui/shell/ivCommandTarget.h"

class QMenu;
class ivImage2d;

// One decoded image, scaled by a zoom factor with an area-averaging resampler. Only the
// visible part is rendered, in bands of rows on up to three extra threads. Dragging pans;
// the context menu zooms, saves and copies.
class ivWndImageViewer : public QAbstractScrollArea, public ivCommandTarget {
    Q_OBJECT
public:
    explicit ivWndImageViewer(QWidget* parent = nullptr);
    ~ivWndImageViewer() override;

    // Replaces the image (null empties the view); the next show fits it to the window.
    void SetImage(std::shared_ptr<const ivImage2d> image, QString name = {});
    const ivImage2d* Image() const { return m_image.get(); }

    float Zoom() const { return m_zoom; }
    // Setting the current factor again changes nothing; another one drops the scale tables.
    virtual void SetZoom(float zoom);
    // The largest zoom not over 1 that shows the whole image in the window.
    float FitZoom() const;
    // How many times scale tables were built, for checking that they are reused.
    int ScaleTableBuilds() const { return m_tableBuilds; }
    // Where the scaled image's top-left corner lies in the viewport.
    QPoint ImageOrigin() const;
    // The scaled image as shown at the current zoom.
    QSize ScaledSize() const;
    // The "Context.Image" menu with the zoom item of the current factor checked.
    QMenu* BuildContextMenu(QWidget* parent);

    bool OnCommand(const QString& name) override;
    // Rendering bands on extra threads can be switched off, for measuring.
    void SetThreaded(bool threaded) { m_threaded = threaded; }

    // The image converted for Qt (24-bit RGB), as copied to the clipboard.
    static QImage ToQImage(const ivImage2d& image);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void UpdateScrollBars();
    void FitIfPending();
    void EnsureScaleTables();
    QImage RenderBand(const QRect& target) const;
    void Copy() const;
    void Save();

    std::shared_ptr<const ivImage2d> m_image;
    QString m_name;
    float m_zoom = 1.0f;
    bool m_fitPending = false;
    bool m_threaded = true;
    std::optional<ivImageScale> m_scaleX, m_scaleY;
    int m_tableBuilds = 0;
    QPoint m_lastDrag;
};
