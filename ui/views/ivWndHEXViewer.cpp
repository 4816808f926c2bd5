#include "ui/views/ivWndHEXViewer.h"

#include <QApplication>
#include <QFontDatabase>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>
#include <algorithm>

#include "platform/ivFormat.h"
#include "platform/ivStream.h"

namespace {

constexpr int kSeparatorOffset = 6;

int DigitWidth(const QFontMetrics& fm) {
    int width = 0;
    for (char c = '0'; c <= '9'; ++c) width = std::max(width, fm.horizontalAdvance(QChar(c)));
    return width;
}

}  // namespace

ivWndHEXViewer::ivWndHEXViewer(QWidget* parent) : QAbstractScrollArea(parent) {
    setObjectName("ivWndHEXViewer");
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    viewport()->setMouseTracking(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    Relayout();
}

void ivWndHEXViewer::SetData(ivStream* stream) {
    std::vector<std::uint8_t> bytes;
    if (stream) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        ivReadAll(*stream, bytes);
        QApplication::restoreOverrideCursor();
    }
    SetBytes(std::move(bytes));
}

void ivWndHEXViewer::SetBytes(std::vector<std::uint8_t> bytes) {
    m_data = std::move(bytes);
    m_hoverRow = -1;
    m_hoverColumn = -1;
    verticalScrollBar()->setValue(0);
    Relayout();
    viewport()->update();
}

int ivWndHEXViewer::RowHeight() const {
    return fontMetrics().height();
}

void ivWndHEXViewer::Relayout() {
    m_layout = HexLayout(m_data.size(), DigitWidth(fontMetrics()), viewport()->width());
    const std::uint64_t rows = (m_data.size() + m_layout.bytesPerRow - 1) / m_layout.bytesPerRow;
    // The scroller counts rows; everything that fits hides it.
    const std::uint64_t visible = std::max(1, viewport()->height() / RowHeight());
    verticalScrollBar()->setRange(
        0, static_cast<int>(rows > visible ? std::min<std::uint64_t>(rows - visible, INT32_MAX) : 0));
    verticalScrollBar()->setPageStep(static_cast<int>(visible));
}

void ivWndHEXViewer::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    Relayout();
}

std::optional<std::uint64_t> ivWndHEXViewer::OffsetAt(QPoint pos) const {
    const std::optional<int> column = m_layout.ColumnAt(pos.x());
    if (!column) return std::nullopt;
    const std::uint64_t row = std::uint64_t(verticalScrollBar()->value()) + pos.y() / RowHeight();
    const std::uint64_t offset = row * m_layout.bytesPerRow + *column;
    return offset < m_data.size() ? std::optional(offset) : std::nullopt;
}

void ivWndHEXViewer::paintEvent(QPaintEvent*) {
    QPainter p(viewport());
    const QPalette& pal = palette();
    p.fillRect(viewport()->rect(), pal.base());
    p.setFont(font());
    const int rowHeight = RowHeight(), ascent = fontMetrics().ascent();
    const int bpr = m_layout.bytesPerRow;
    const QColor accent = pal.color(QPalette::Highlight);
    QColor hoverBack = accent;
    hoverBack.setAlpha(60);
    for (int line = 0;; ++line) {
        const int y = line * rowHeight;
        if (y > viewport()->height()) break;
        const std::uint64_t start = (std::uint64_t(verticalScrollBar()->value()) + line) * bpr;
        if (start >= m_data.size()) break;
        if (static_cast<std::int64_t>(start) == m_hoverRow)
            p.fillRect(0, y, viewport()->width(), rowHeight, hoverBack);
        p.setPen(pal.color(QPalette::PlaceholderText));
        p.drawText(0, y + ascent,
                   QString::number(start, 16).toUpper().rightJustified(m_layout.offsetDigits, '0'));
        for (int c = 0; c < bpr && start + c < m_data.size(); ++c) {
            const std::uint8_t b = m_data[start + c];
            const int hx = m_layout.hexStart + c * m_layout.CellWidth() + (c / 8) * ivHexLayout::kGroupGap;
            const int cx = m_layout.charStart + c * m_layout.CharWidth();
            const bool hovered = static_cast<std::int64_t>(start) == m_hoverRow && c == m_hoverColumn;
            if (hovered) {
                p.fillRect(hx - 1, y, m_layout.CellWidth() - 2, rowHeight, accent);
                p.fillRect(cx, y, m_layout.CharWidth(), rowHeight, accent);
            }
            p.setPen(hovered ? Qt::white : pal.color(QPalette::Text));
            p.drawText(hx, y + ascent, QString::asprintf("%02X", b));
            if (b == ' ') continue;
            if (b == '\n') {
                p.drawText(cx + 1, y + ascent, QString(QChar(0x00B6)));
            } else if (b < 33) {
                p.fillRect(cx + 1, y + 2, m_layout.CharWidth() - 2, rowHeight - 4,
                           QBrush(pal.color(QPalette::Mid), Qt::Dense5Pattern));
            } else {
                p.drawText(cx + 1, y + ascent,
                           QString::fromStdString(ivTextToUtf8(std::string(1, static_cast<char>(b)))));
            }
        }
    }
    p.setPen(pal.color(QPalette::Mid));
    p.drawLine(m_layout.hexStart - kSeparatorOffset, 0, m_layout.hexStart - kSeparatorOffset,
               viewport()->height());
    p.drawLine(m_layout.charStart - kSeparatorOffset, 0, m_layout.charStart - kSeparatorOffset,
               viewport()->height());
}

void ivWndHEXViewer::mouseMoveEvent(QMouseEvent* event) {
    const QPoint pos = event->position().toPoint();
    const std::uint64_t row = std::uint64_t(verticalScrollBar()->value()) + pos.y() / RowHeight();
    const std::int64_t rowStart =
        row * m_layout.bytesPerRow < m_data.size() ? std::int64_t(row * m_layout.bytesPerRow) : -1;
    const std::optional<int> column = m_layout.ColumnAt(pos.x());
    const int col =
        column && rowStart >= 0 && std::uint64_t(rowStart) + *column < m_data.size() ? *column : -1;
    if (rowStart != m_hoverRow || col != m_hoverColumn) {
        m_hoverRow = rowStart;
        m_hoverColumn = col;
        viewport()->update();
    }
    QAbstractScrollArea::mouseMoveEvent(event);
}

void ivWndHEXViewer::leaveEvent(QEvent* event) {
    m_hoverRow = -1;
    m_hoverColumn = -1;
    viewport()->update();
    QAbstractScrollArea::leaveEvent(event);
}

bool ivWndHEXViewer::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return QAbstractScrollArea::viewportEvent(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const std::optional<std::uint64_t> offset = OffsetAt(help->pos());
    std::string text;
    if (offset) {
        const std::size_t n = std::min<std::size_t>(16, m_data.size() - *offset);
        text = HexTooltip(std::span(m_data.data() + *offset, n), *offset, true);
    } else {
        const std::uint64_t row = std::uint64_t(verticalScrollBar()->value()) + help->pos().y() / RowHeight();
        text = HexTooltip({}, row * m_layout.bytesPerRow, false);
    }
    QToolTip::showText(help->globalPos(), QString::fromStdString(ivTextToUtf8(text)), viewport());
    return true;
}
