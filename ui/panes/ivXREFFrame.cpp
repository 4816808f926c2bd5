#include "ui/panes/ivXREFFrame.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/ivXrefFilter.h"
#include "platform/ivFormat.h"
#include "ui/panes/ivObjTree.h"
#include "ui/panes/ivObjectTreeModel.h"

ivXREFFrame::ivXREFFrame(QWidget* parent)
    : ivBaseTreeFrame("XREF table", "xrefFrame", parent), m_search(new QLineEdit), m_count(new QLabel) {
    m_search->setPlaceholderText("Search Objects");
    m_search->setClearButtonEnabled(true);
    m_search->setObjectName("searchBox");
    m_count->setObjectName("matchCount");
    m_count->setVisible(false);
    auto* content = new QWidget;
    auto* box = new QHBoxLayout;
    box->setContentsMargins(4, 4, 4, 0);
    box->addWidget(m_search, 1);
    box->addWidget(m_count);
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addLayout(box);
    layout->addWidget(Tree());
    SetContent(content);
    connect(m_search, &QLineEdit::returnPressed, this, &ivXREFFrame::ApplyFilter);
    // The box's clear button (or deleting the text) takes the filter away.
    connect(m_search, &QLineEdit::textChanged, this, [this](const QString& text) {
        if (text.isEmpty() && Model()->Filtered()) ClearFilter();
    });
}

void ivXREFFrame::Fill() {
    m_search->blockSignals(true);
    m_search->clear();
    m_search->blockSignals(false);
    m_count->setVisible(false);
    Model()->ShowSections(Document());
}

QString ivXREFFrame::CountText() const {
    if (!Model()->Filtered()) return {};
    return QString::fromStdString(FormatThousands(Model()->MatchCount()) + " of " +
                                  FormatThousands(Model()->EntryTotal()));
}

void ivXREFFrame::ApplyFilter() {
    if (!Document()) return;
    const std::string text = m_search->text().toStdString();
    ivXrefFilter filter = ivXrefFilter::Parse(*Document(), text);
    if (text.empty() || filter.GetMode() == ivXrefFilter::Mode::None) {
        Model()->SetFilter(std::nullopt);
    } else {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        Model()->SetFilter(std::move(filter));
        QApplication::restoreOverrideCursor();
        // Matches show at once: the sections unfold (their entries are not objects of their own).
        for (int s = 0; s < Model()->rowCount(); ++s) Tree()->expand(Model()->index(s, 0));
    }
    m_count->setText(CountText());
    m_count->setVisible(Model()->Filtered());
}

void ivXREFFrame::ClearFilter() {
    m_search->blockSignals(true);
    m_search->clear();
    m_search->blockSignals(false);
    Model()->SetFilter(std::nullopt);
    m_count->setVisible(false);
}

void ivXREFFrame::Filter(const QString& text) {
    m_search->blockSignals(true);
    m_search->setText(text);
    m_search->blockSignals(false);
    ApplyFilter();
}

void ivXREFFrame::Locate(unsigned num, unsigned gen) {
    if (!Document()) return;
    const XrefEntry* entry = Document()->LookupEntry({num, static_cast<std::uint16_t>(gen)});
    if (!entry || (entry->flags & kXrefNotFound)) {
        QApplication::beep();
        return;
    }
    ClearFilter();
    for (std::size_t s = 0; s < Document()->Sections().size(); ++s) {
        const QModelIndex item = Model()->IndexOfEntry(s, entry);
        if (!item.isValid()) continue;
        Tree()->expand(Model()->IndexOfSection(s));
        Tree()->setCurrentIndex(item);
        Tree()->scrollTo(item, QAbstractItemView::PositionAtCenter);
        return;
    }
    QApplication::beep();
}
