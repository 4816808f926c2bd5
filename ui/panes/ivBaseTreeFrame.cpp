#include "ui/panes/ivBaseTreeFrame.h"

#include "pdf/analysis/ivPdf.h"
#include "ui/panes/ivObjTree.h"
#include "ui/panes/ivObjectTreeModel.h"

ivBaseTreeFrame::ivBaseTreeFrame(const QString& caption, const QString& objectName, QWidget* parent)
    : QDockWidget(caption, parent), m_model(new ivObjectTreeModel), m_tree(new ivObjTree(m_model)) {
    setObjectName(objectName);
    setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
    m_tree->setObjectName(objectName + "Tree");
    setWidget(m_tree);
}

void ivBaseTreeFrame::SetContent(QWidget* content) {
    setWidget(content);
}

void ivBaseTreeFrame::SetDocument(std::shared_ptr<ivPdf> doc) {
    if (doc == m_doc) return;
    m_model->Clear();
    m_doc = std::move(doc);
    if (m_doc) Fill();
}
