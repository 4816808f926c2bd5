#include "ui/views/ivWndViewer.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QFile>
#include <QFileDialog>
#include <QFontDatabase>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/ivPdfInfo.h"
#include "pdf/object/pdfObjectAccess.h"
#include "ui/shell/ivCommands.h"

namespace {

constexpr int kMargin = 4;

bool Is(const QString& name, const char* command) {
    return name.compare(command, Qt::CaseInsensitive) == 0;
}

QString Shown(const ivDisplayToken& t) {
    return QString::fromStdString(DisplayTokenText(t));
}

// Help texts run long: as rich text the tooltip wraps them, keeping their line breaks.
QString AsWrappingTip(const QString& text) {
    return "<p style='white-space:pre-wrap'>" + text.toHtmlEscaped() + "</p>";
}

}  // namespace

ivWndViewer::ivWndViewer(QWidget* parent) : QAbstractScrollArea(parent) {
    setObjectName("ivWndViewer");
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    viewport()->setMouseTracking(true);
    viewport()->setCursor(Qt::IBeamCursor);
    setFocusPolicy(Qt::StrongFocus);
}

void ivWndViewer::SetText(std::shared_ptr<ivPdf> doc, ivViewText text, std::uint8_t role) {
    m_doc = std::move(doc);
    m_text = std::move(text);
    m_role = role;
    m_lineOfToken.assign(m_text.tokens.size(), 0);
    for (std::size_t l = 0; l < m_text.lines.size(); ++l)
        for (std::size_t t : m_text.lines[l].tokens) m_lineOfToken[t] = l;
    m_anchor.reset();
    m_cursor.reset();
    m_widest = 0;
    verticalScrollBar()->setValue(0);
    horizontalScrollBar()->setValue(0);
    UpdateScrollBars();
    viewport()->update();
}

void ivWndViewer::Clear() {
    SetText(nullptr, {}, 0);
}

int ivWndViewer::LineHeight() const {
    return fontMetrics().height();
}

int ivWndViewer::TopLine() const {
    return verticalScrollBar()->value();
}

void ivWndViewer::UpdateScrollBars() {
    const int banner = m_text.status.empty() ? 0 : 1;
    const int lines = static_cast<int>(std::min<std::size_t>(m_text.lines.size() + banner, INT32_MAX));
    const int visible = std::max(1, viewport()->height() / LineHeight());
    verticalScrollBar()->setRange(0, std::max(0, lines - visible));
    verticalScrollBar()->setPageStep(visible);
    horizontalScrollBar()->setRange(0, std::max(0, m_widest - viewport()->width()));
    horizontalScrollBar()->setPageStep(viewport()->width());
}

void ivWndViewer::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    UpdateScrollBars();
}

std::vector<ivWndViewer::Placed> ivWndViewer::PlaceLine(std::size_t line) const {
    std::vector<Placed> placed;
    const QFontMetrics fm = fontMetrics();
    int x =
        kMargin + m_text.lines[line].indent * 2 * fm.horizontalAdvance(' ') - horizontalScrollBar()->value();
    const int space = fm.horizontalAdvance(' ');
    for (std::size_t t : m_text.lines[line].tokens) {
        const int w = fm.horizontalAdvance(Shown(m_text.tokens[t]));
        placed.push_back({t, x, w});
        x += w + space;
    }
    return placed;
}

std::optional<std::size_t> ivWndViewer::TokenAt(QPoint pos) const {
    const int banner = m_text.status.empty() ? 0 : 1;
    const long line = long(TopLine()) + pos.y() / LineHeight() - banner;
    if (line < 0 || line >= static_cast<long>(m_text.lines.size())) return std::nullopt;
    for (const Placed& p : PlaceLine(static_cast<std::size_t>(line)))
        if (pos.x() >= p.x && pos.x() < p.x + p.width) return p.token;
    return std::nullopt;
}

std::pair<std::size_t, std::size_t> ivWndViewer::Selection() const {
    if (!m_anchor || !m_cursor) return {1, 0};
    return {std::min(*m_anchor, *m_cursor), std::max(*m_anchor, *m_cursor)};
}

void ivWndViewer::Select(std::size_t from, std::size_t to) {
    if (m_text.tokens.empty()) return;
    m_anchor = std::min(from, m_text.tokens.size() - 1);
    m_cursor = std::min(to, m_text.tokens.size() - 1);
    viewport()->update();
}

QColor ivWndViewer::ColorOf(const ivDisplayToken& t) const {
    const bool dark = palette().color(QPalette::Base).lightness() < 128;
    if (t.kind == ivDisplayToken::Kind::Text) return palette().color(QPalette::PlaceholderText);
    if (t.isKey || (t.isContent && (t.marks & kMarkOperator)))
        return dark ? QColor(0x7f, 0xb8, 0xff) : QColor(0x1a, 0x4f, 0xa8);
    if (!t.record || t.kind == ivDisplayToken::Kind::Close) return palette().color(QPalette::Text);
    switch (t.record->tag) {
        case kTagIndirect:
            return dark ? QColor(0xff, 0xa8, 0x5c) : QColor(0xa8, 0x4a, 0x00);
        case kTagString:
        case kTagHexString:
        case kTagUnicodeString:
            return dark ? QColor(0x8f, 0xd6, 0x8a) : QColor(0x2b, 0x7a, 0x2b);
        case kTagName:
            return dark ? QColor(0xd0, 0x9c, 0xf0) : QColor(0x7a, 0x2e, 0x9e);
        case kTagInt:
        case kTagReal:
            return dark ? QColor(0xe6, 0xd0, 0x7a) : QColor(0x80, 0x60, 0x00);
        default:
            return palette().color(QPalette::Text);
    }
}

void ivWndViewer::paintEvent(QPaintEvent*) {
    QPainter p(viewport());
    p.fillRect(viewport()->rect(), palette().base());
    p.setFont(font());
    const int lh = LineHeight(), ascent = fontMetrics().ascent();
    int row = 0;
    if (!m_text.status.empty()) {
        p.fillRect(0, 0, viewport()->width(), lh, QColor(0xe0, 0xa0, 0x20, 90));
        p.setPen(palette().color(QPalette::Text));
        p.drawText(kMargin, ascent, QString::fromStdString(m_text.status));
        row = 1;
    }
    const auto [first, last] = Selection();
    for (std::size_t line = TopLine(); line < m_text.lines.size(); ++line, ++row) {
        const int y = row * lh;
        if (y > viewport()->height()) break;
        for (const Placed& placed : PlaceLine(line)) {
            const ivDisplayToken& t = m_text.tokens[placed.token];
            const bool selected = placed.token >= first && placed.token <= last;
            if (selected) p.fillRect(placed.x, y, placed.width, lh, palette().highlight());
            p.setPen(selected ? palette().color(QPalette::HighlightedText) : ColorOf(t));
            p.drawText(placed.x, y + ascent, Shown(t));
            m_widest = std::max(m_widest, placed.x + placed.width + horizontalScrollBar()->value() + kMargin);
        }
    }
    if (horizontalScrollBar()->maximum() < m_widest - viewport()->width()) UpdateScrollBars();
}

void ivWndViewer::mousePressEvent(QMouseEvent* event) {
    setFocus(Qt::MouseFocusReason);
    const std::optional<std::size_t> token = TokenAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton) {
        if (token && (event->modifiers() & Qt::ShiftModifier) && m_anchor) {
            m_cursor = token;
        } else {
            m_anchor = token;
            m_cursor = token;
        }
        viewport()->update();
    }
    QAbstractScrollArea::mousePressEvent(event);
}

void ivWndViewer::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() & Qt::LeftButton) {
        if (const std::optional<std::size_t> token = TokenAt(event->position().toPoint());
            token && m_anchor) {
            m_cursor = token;
            viewport()->update();
        }
    }
    QAbstractScrollArea::mouseMoveEvent(event);
}

const pdfRef* ivWndViewer::ReferenceAt(std::optional<std::size_t> token) const {
    if (!token || *token >= m_text.tokens.size()) return nullptr;
    const ivDisplayToken& t = m_text.tokens[*token];
    return t.kind == ivDisplayToken::Kind::Record ? AsRef(t.record) : nullptr;
}

void ivWndViewer::mouseDoubleClickEvent(QMouseEvent* event) {
    if (const pdfRef* ref = ReferenceAt(TokenAt(event->position().toPoint())); ref && m_doc) {
        if (const pdfObject* object = ResolveRef(*m_doc, ref->Id()))
            Q_EMIT ShowRequested(object, kReuseView | kBringToFront);
        return;
    }
    QAbstractScrollArea::mouseDoubleClickEvent(event);
}

void ivWndViewer::keyPressEvent(QKeyEvent* event) {
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    if (event->matches(QKeySequence::Copy)) {
        Copy(false);
        return;
    }
    if (event->matches(QKeySequence::SelectAll) && !m_text.tokens.empty()) {
        Select(0, m_text.tokens.size() - 1);
        return;
    }
    if (shift && m_cursor && !m_text.tokens.empty()) {
        std::size_t to = *m_cursor;
        const std::size_t line = m_lineOfToken[to];
        if (event->key() == Qt::Key_Right && to + 1 < m_text.tokens.size()) ++to;
        if (event->key() == Qt::Key_Left && to > 0) --to;
        if (event->key() == Qt::Key_Down && line + 1 < m_text.lines.size() &&
            !m_text.lines[line + 1].tokens.empty())
            to = m_text.lines[line + 1].tokens.back();
        if (event->key() == Qt::Key_Up && line > 0 && !m_text.lines[line - 1].tokens.empty())
            to = m_text.lines[line - 1].tokens.front();
        m_cursor = to;
        viewport()->update();
        return;
    }
    QAbstractScrollArea::keyPressEvent(event);
}

QString ivWndViewer::HelpOf(std::size_t token) const {
    return QString::fromStdString(TokenHelp(ivPdfInfo::Instance(), m_text, token, m_role));
}

QString ivWndViewer::SelectedText(bool withHelp) const {
    const auto [first, last] = Selection();
    QString out;
    for (std::size_t t = first; t <= last && t < m_text.tokens.size(); ++t) {
        if (t > first) out += m_lineOfToken[t] != m_lineOfToken[t - 1] ? "\n" : " ";
        out += Shown(m_text.tokens[t]);
        if (withHelp) {
            const QString help = HelpOf(t);
            if (!help.isEmpty()) out += "\n    " + QString(help).replace("\n", "\n    ") + "\n";
        }
    }
    return out;
}

void ivWndViewer::Copy(bool withHelp) const {
    const QString text = SelectedText(withHelp);
    if (!text.isEmpty()) QApplication::clipboard()->setText(text);
}

void ivWndViewer::SaveText() {
    const QString path =
        QFileDialog::getSaveFileName(this, "Save As", "object.txt", "Text Files (*.txt);;All Files (*)");
    if (path.isEmpty()) return;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) return;
    if (!m_text.status.empty()) file.write((m_text.status + "\n").c_str());
    for (std::size_t l = 0; l < m_text.lines.size(); ++l) file.write((m_text.LineText(l) + "\n").c_str());
}

bool ivWndViewer::OnCommand(const QString& name) {
    const pdfRef* ref = ReferenceAt(m_menuToken ? m_menuToken : m_cursor);
    if (Is(name, "edit.copy")) {
        Copy(false);
    } else if (Is(name, "edit.copyComments")) {
        Copy(true);
    } else if (Is(name, "File.SaveToFile")) {
        SaveText();
    } else if (Is(name, "Object.ViewWindow") && ref && m_doc) {
        if (const pdfObject* object = ResolveRef(*m_doc, ref->Id()))
            Q_EMIT ShowRequested(object, kReuseView | kBringToFront);
    } else if (Is(name, "Object.Locate") && ref) {
        Q_EMIT LocateRequested(ref->num, ref->gen);
    } else {
        return false;
    }
    return true;
}

void ivWndViewer::contextMenuEvent(QContextMenuEvent* event) {
    const std::optional<std::size_t> token = TokenAt(viewport()->mapFrom(this, event->pos()));
    ivCommands* commands = ivCommands::Instance();
    if (!commands) return;
    if (token && !(Selection().first <= *token && *token <= Selection().second)) Select(*token, *token);
    std::unique_ptr<QMenu> menu(
        commands->BuildMenu(ReferenceAt(token) ? "Context.Indirect" : "Context.Page", this));
    if (!menu) {
        QApplication::beep();
        return;
    }
    m_menuToken = token;
    menu->exec(event->globalPos());
    m_menuToken.reset();
}

bool ivWndViewer::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return QAbstractScrollArea::viewportEvent(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const std::optional<std::size_t> token = TokenAt(help->pos());
    const QString text = token ? HelpOf(*token) : QString();
    if (text.isEmpty())
        QToolTip::hideText();
    else
        QToolTip::showText(help->globalPos(), AsWrappingTip(text), viewport());
    return true;
}
