#include "ui/views/ivWndDockView.h"

#include <QLabel>
#include <QVBoxLayout>

#include "pdf/analysis/ivPdf.h"
#include "pdf/object/pdfObjectAccess.h"
#include "platform/ivFormat.h"

ivWndDockView::ivWndDockView(QWidget* parent) : QWidget(parent), m_text(new QLabel(this)) {
    m_text->setAlignment(Qt::AlignCenter);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_text);
}

void ivWndDockView::SetDocument(std::shared_ptr<ivPdf> doc) {
    m_doc = std::move(doc);
    ShowObject(nullptr);
}

QString ivWndDockView::Caption() const {
    const XrefEntry* entry = m_doc && m_object ? FindEntryByRecord(*m_doc, m_object) : nullptr;
    if (!entry) return m_object ? QString("Direct Object") : QString("View");
    return QString::fromStdString(ivFormat("%u %u R", entry->num, static_cast<unsigned>(entry->gen)));
}

void ivWndDockView::ShowObject(const pdfObject* object) {
    m_object = m_doc ? object : nullptr;
    m_text->setText(m_object ? Caption() : QString());
}
