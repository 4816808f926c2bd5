#include "ui/panes/ivBaseTreeFrame.h"

#include <QTreeView>

#include "pdf/analysis/ivPdf.h"

ivBaseTreeFrame::ivBaseTreeFrame(const QString& caption, const QString& objectName, QWidget* parent)
    : QDockWidget(caption, parent), m_tree(new QTreeView) {
    setObjectName(objectName);
    setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
    m_tree->setHeaderHidden(true);
    m_tree->setUniformRowHeights(true);
    m_tree->setObjectName(objectName + "Tree");
    setWidget(m_tree);
}

void ivBaseTreeFrame::SetContent(QWidget* content) {
    setWidget(content);
}

void ivBaseTreeFrame::SetDocument(std::shared_ptr<ivPdf> doc) {
    if (doc == m_doc) return;
    Empty();
    m_doc = std::move(doc);
    if (m_doc) Fill();
    m_tree->viewport()->update();
}
