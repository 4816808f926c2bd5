#include "ui/panes/ivXREFFrame.h"

#include <QLineEdit>
#include <QTreeView>
#include <QVBoxLayout>

ivXREFFrame::ivXREFFrame(QWidget* parent)
    : ivBaseTreeFrame("XREF table", "xrefFrame", parent), m_search(new QLineEdit) {
    m_search->setPlaceholderText("Search Objects");
    m_search->setClearButtonEnabled(true);
    m_search->setObjectName("searchBox");
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(m_search);
    layout->addWidget(Tree());
    SetContent(content);
}
