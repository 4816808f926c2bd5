#pragma once
#include <QAbstractScrollArea>
#include <cstdint>
#include <vector>

#include "pdf/analysis/ivViewerTexts.h"

class ivStream;

// A hex dump of one stream's bytes: offset, hex and character columns. Only the visible rows
// are painted; the hovered row and byte are highlighted and the tooltip reads the byte, word
// and long at the pointer.
class ivWndHEXViewer : public QAbstractScrollArea {
    Q_OBJECT
public:
    explicit ivWndHEXViewer(QWidget* parent = nullptr);

    // Takes a copy of the stream's bytes (read from where it stands to its end); null empties.
    void SetData(ivStream* stream);
    void SetBytes(std::vector<std::uint8_t> bytes);
    const std::vector<std::uint8_t>& Bytes() const { return m_data; }
    const ivHexLayout& Layout() const { return m_layout; }
    // The offset of the byte at a point of the viewport, if any.
    std::optional<std::uint64_t> OffsetAt(QPoint pos) const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    bool viewportEvent(QEvent* event) override;

private:
    void Relayout();
    int RowHeight() const;

    std::vector<std::uint8_t> m_data;
    ivHexLayout m_layout;
    std::int64_t m_hoverRow = -1;  // offset of the hovered row's first byte
    int m_hoverColumn = -1;
};
