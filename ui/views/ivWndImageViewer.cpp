#include "ui/views/ivWndImageViewer.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <cmath>
#include <thread>
#include <vector>

#include "pdf/analysis/ivViewerTexts.h"
#include "platform/ivImage2d.h"
#include "ui/shell/ivCommands.h"
#include "ui/views/ivImageSaving.h"

namespace {

// The scaled image never gets wider or taller than this, whatever the zoom.
constexpr double kMaxScaledSide = 65536;

bool Is(const QString& name, const char* command) {
    return name.compare(command, Qt::CaseInsensitive) == 0;
}

}  // namespace

ivWndImageViewer::ivWndImageViewer(QWidget* parent) : QAbstractScrollArea(parent) {
    setObjectName("ivWndImageViewer");
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setCursor(Qt::ArrowCursor);
}

ivWndImageViewer::~ivWndImageViewer() = default;

void ivWndImageViewer::SetImage(std::shared_ptr<const ivImage2d> image, QString name) {
    m_image = std::move(image);
    m_name = std::move(name);
    m_scaleX.reset();
    m_scaleY.reset();
    m_fitPending = m_image != nullptr;
    horizontalScrollBar()->setValue(0);
    verticalScrollBar()->setValue(0);
    FitIfPending();
    UpdateScrollBars();
    viewport()->update();
}

void ivWndImageViewer::SetZoom(float zoom) {
    if (m_image) {
        const double side = std::max(m_image->Width(), m_image->Height());
        zoom = static_cast<float>(std::clamp<double>(zoom, 1.0 / side, kMaxScaledSide / side));
    }
    if (zoom == m_zoom) return;
    m_zoom = zoom;
    m_scaleX.reset();
    m_scaleY.reset();
    UpdateScrollBars();
    viewport()->update();
}

float ivWndImageViewer::FitZoom() const {
    if (!m_image) return 1.0f;
    const QSize area = viewport()->size();
    const double fx = double(area.width()) / m_image->Width(), fy = double(area.height()) / m_image->Height();
    return static_cast<float>(std::min({1.0, fx, fy}));
}

void ivWndImageViewer::FitIfPending() {
    if (!m_fitPending || !isVisible() || viewport()->width() <= 1 || viewport()->height() <= 1) return;
    m_fitPending = false;
    SetZoom(FitZoom());
}

QSize ivWndImageViewer::ScaledSize() const {
    if (!m_image) return {};
    auto scaled = [this](std::uint32_t side) { return std::max(1, int(std::lround(side * double(m_zoom)))); };
    return {scaled(m_image->Width()), scaled(m_image->Height())};
}

void ivWndImageViewer::UpdateScrollBars() {
    const QSize scaled = ScaledSize(), area = viewport()->size();
    horizontalScrollBar()->setRange(0, std::max(0, scaled.width() - area.width()));
    horizontalScrollBar()->setPageStep(area.width());
    verticalScrollBar()->setRange(0, std::max(0, scaled.height() - area.height()));
    verticalScrollBar()->setPageStep(area.height());
}

QPoint ivWndImageViewer::ImageOrigin() const {
    const QSize scaled = ScaledSize(), area = viewport()->size();
    auto place = [](int image, int client, int scroll) {
        return image < client ? (client - image) / 2 : -scroll;
    };
    return {place(scaled.width(), area.width(), horizontalScrollBar()->value()),
            place(scaled.height(), area.height(), verticalScrollBar()->value())};
}

void ivWndImageViewer::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    FitIfPending();
    UpdateScrollBars();
}

void ivWndImageViewer::showEvent(QShowEvent* event) {
    QAbstractScrollArea::showEvent(event);
    FitIfPending();
    UpdateScrollBars();
}

void ivWndImageViewer::EnsureScaleTables() {
    if (m_scaleX && m_scaleY) return;
    const QSize scaled = ScaledSize();
    m_scaleX = ivImageScale::Create(m_image->Width(), static_cast<std::uint32_t>(scaled.width()));
    m_scaleY = ivImageScale::Create(m_image->Height(), static_cast<std::uint32_t>(scaled.height()));
    ++m_tableBuilds;
}

QImage ivWndImageViewer::RenderBand(const QRect& target) const {
    QImage out(target.size(), QImage::Format_RGB888);
    if (out.isNull()) return out;
    const auto x0 = static_cast<std::uint32_t>(target.left()),
               x1 = static_cast<std::uint32_t>(target.right() + 1);
    const auto stride = static_cast<std::size_t>(out.bytesPerLine());
    auto render = [&](int from, int to) {
        RenderScaledRows(*m_image, *m_scaleX, *m_scaleY, static_cast<std::uint32_t>(target.top() + from),
                         static_cast<std::uint32_t>(target.top() + to), x0, x1, out.bits() + stride * from,
                         stride);
    };
    const int rows = target.height();
    const unsigned processors = std::thread::hardware_concurrency();
    const int extra =
        m_threaded && rows > 4 && processors > 1 ? static_cast<int>(std::min(processors, 3u)) : 0;
    const int band = (rows + extra) / (extra + 1);
    std::vector<std::thread> threads;
    for (int i = 1; i <= extra && i * band < rows; ++i)
        threads.emplace_back(render, i * band, std::min(rows, (i + 1) * band));
    render(0, std::min(rows, band));
    for (std::thread& t : threads) t.join();
    return out;
}

void ivWndImageViewer::paintEvent(QPaintEvent* event) {
    QPainter p(viewport());
    p.fillRect(event->rect(), palette().window());
    if (!m_image) return;
    const QPoint origin = ImageOrigin();
    const QRect visible = QRect(QPoint(0, 0), ScaledSize()) & event->rect().translated(-origin);
    if (visible.isEmpty()) return;
    EnsureScaleTables();
    p.drawImage(visible.topLeft() + origin, RenderBand(visible));
}

void ivWndImageViewer::mousePressEvent(QMouseEvent* event) {
    setFocus(Qt::MouseFocusReason);
    m_lastDrag = event->position().toPoint();
    event->accept();
}

void ivWndImageViewer::mouseMoveEvent(QMouseEvent* event) {
    if (!(event->buttons() & Qt::LeftButton)) return;
    const QPoint now = event->position().toPoint(), moved = m_lastDrag - now;
    m_lastDrag = now;
    const int h = horizontalScrollBar()->value(), v = verticalScrollBar()->value();
    horizontalScrollBar()->setValue(h + moved.x());
    verticalScrollBar()->setValue(v + moved.y());
    if (h != horizontalScrollBar()->value() || v != verticalScrollBar()->value()) viewport()->update();
}

QMenu* ivWndImageViewer::BuildContextMenu(QWidget* parent) {
    ivCommands* commands = ivCommands::Instance();
    QMenu* menu = commands ? commands->BuildMenu("Context.Image", parent) : nullptr;
    if (!menu) return nullptr;
    const QString checked = QString::fromStdString(ZoomCommandOf(m_zoom));
    for (QAction* action : menu->actions()) {
        if (!action->objectName().startsWith("zoom.", Qt::CaseInsensitive)) continue;
        const bool fixed = action->objectName().back().isDigit();
        action->setCheckable(fixed);
        action->setChecked(fixed && action->objectName().compare(checked, Qt::CaseInsensitive) == 0);
    }
    return menu;
}

void ivWndImageViewer::contextMenuEvent(QContextMenuEvent* event) {
    std::unique_ptr<QMenu> menu(BuildContextMenu(this));
    if (!menu) {
        QApplication::beep();
        return;
    }
    menu->exec(event->globalPos());
}

QImage ivWndImageViewer::ToQImage(const ivImage2d& image) {
    // A packed bitmap may take up to 24 times its own size as colour: refuse what would not
    // fit in the most a bitmap may take.
    if (std::uint64_t(image.Width()) * image.Height() * 3 > ivImage2d::kMaxBytes) return {};
    QImage out(static_cast<int>(image.Width()), static_cast<int>(image.Height()), QImage::Format_RGB888);
    if (out.isNull()) return out;
    for (std::uint32_t y = 0; y < image.Height(); ++y) RowToRgb(image, y, out.scanLine(static_cast<int>(y)));
    return out;
}

void ivWndImageViewer::Copy() const {
    const QImage image = ToQImage(*m_image);
    if (image.isNull()) {
        QApplication::beep();
        return;
    }
    QApplication::clipboard()->setImage(image);
}

void ivWndImageViewer::Save() {
    SaveImageWithDialog(this, *m_image, m_name.isEmpty() ? QString("image") : m_name);
}

bool ivWndImageViewer::OnCommand(const QString& name) {
    if (Is(name, "zoom.fit")) {
        SetZoom(FitZoom());
    } else if (const std::optional<float> zoom = ZoomFor(name.toStdString(), m_zoom)) {
        SetZoom(*zoom);
    } else if (Is(name, "hq-render.save") || Is(name, "File.SaveImageToFile")) {
        if (m_image) Save();
    } else if (Is(name, "hq-render.copy") || Is(name, "edit.copy")) {
        if (m_image) Copy();
    } else {
        return false;
    }
    return true;
}
