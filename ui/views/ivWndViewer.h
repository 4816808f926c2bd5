#pragma once
#include <QAbstractScrollArea>
#include <memory>

#include "pdf/analysis/ivDisplayTokens.h"
#include "ui/shell/ivCommandTarget.h"
#include "ui/shell/ivShowFlags.h"

class ivPdf;
class ivPdfInfo;
struct pdfObject;

// The text view of one object, a content stream or an object stream: its display tokens a
// line at a time, only the visible lines painted. Hovering a token shows its help; tokens are
// selected with the mouse or Shift and the arrows, and copied with or without their help; a
// reference opens its object.
class ivWndViewer : public QAbstractScrollArea, public ivCommandTarget {
    Q_OBJECT
public:
    explicit ivWndViewer(QWidget* parent = nullptr);

    // What to show, and the role whose key descriptions explain it.
    void SetText(std::shared_ptr<ivPdf> doc, ivViewText text, std::uint8_t role);
    void Clear();
    const ivViewText& Text() const { return m_text; }
    std::uint8_t Role() const { return m_role; }

    // The token at a point of the viewport; none between tokens.
    std::optional<std::size_t> TokenAt(QPoint pos) const;
    // The selected tokens, first to last (none when nothing is selected).
    std::pair<std::size_t, std::size_t> Selection() const;
    void Select(std::size_t from, std::size_t to);
    // The selected tokens' text, a line a line; with their help when `withHelp`.
    QString SelectedText(bool withHelp) const;
    QString HelpOf(std::size_t token) const;

    bool OnCommand(const QString& name) override;

Q_SIGNALS:
    void ShowRequested(const pdfObject* object, unsigned flags);
    void LocateRequested(unsigned num, unsigned gen);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool viewportEvent(QEvent* event) override;

private:
    struct Placed {
        std::size_t token;
        int x, width;
    };
    std::vector<Placed> PlaceLine(std::size_t line) const;
    int LineHeight() const;
    int TopLine() const;
    void UpdateScrollBars();
    QColor ColorOf(const ivDisplayToken& token) const;
    const pdfRef* ReferenceAt(std::optional<std::size_t> token) const;
    void Copy(bool withHelp) const;
    void SaveText();

    std::shared_ptr<ivPdf> m_doc;
    ivViewText m_text;
    std::vector<std::size_t> m_lineOfToken;  // for each token, its line
    std::uint8_t m_role = 0;
    std::optional<std::size_t> m_anchor, m_cursor;
    std::optional<std::size_t> m_menuToken;  // the token right-clicked
    int m_widest = 0;                        // the widest line painted so far, for the horizontal scroller
};
