#include "ui/panes/ivErrorBtn.h"

#include <QHeaderView>
#include <QTreeView>
#include <QVBoxLayout>
#include <algorithm>
#include <vector>

#include "platform/ivIOControl.h"
#include "ui/panes/ivMessageModel.h"
#include "ui/shell/ivTheme.h"

namespace {

constexpr int kMeasureWidth = 500;
constexpr int kTextColour = 240;

}  // namespace

ivErrorBtn::ivErrorBtn(const ivIOControl& control, QWidget* parent)
    : QWidget(parent), m_tree(new QTreeView(this)), m_model(new ivMessageModel(&control.Messages(), this)) {
    setObjectName("ivErrorBtn");
    m_model->SetTextColor(ivTheme::Current().Color("error", kTextColour, QColor()));
    m_tree->setModel(m_model);
    m_tree->setHeaderHidden(true);
    m_tree->setWordWrap(false);
    m_tree->setTextElideMode(Qt::ElideNone);
    m_tree->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_tree->header()->setStretchLastSection(false);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_tree);
    connect(m_tree, &QTreeView::activated, this, &ivErrorBtn::Choose);
    connect(m_tree, &QTreeView::expanded, this, [this] { updateGeometry(); });
}

void ivErrorBtn::Choose(const QModelIndex& index) {
    Q_EMIT Chosen(index.data().toString());
    for (QModelIndex at = index; at.isValid(); at = at.parent()) {
        if (const ivMessageNode* node = m_model->NodeOf(at); node && node->namesObject) {
            Q_EMIT ObjectChosen(node->objectNum, node->objectGen);
            return;
        }
    }
}

QSize ivErrorBtn::DropDownSize(QSize content) {
    const int width =
        content.width() > 100 && content.width() < kMeasureWidth ? content.width() : kMeasureWidth;
    return {width, std::clamp(content.height(), 16, 600)};
}

QSize ivErrorBtn::ContentSize() const {
    // The rows as laid out now: every top-level row and those of unfolded items.
    int height = 0, width = 0;
    const int indent = m_tree->indentation();
    std::vector<std::pair<QModelIndex, int>> pending{{QModelIndex(), 0}};
    while (!pending.empty() && height <= 600) {
        const auto [parent, depth] = pending.back();
        pending.pop_back();
        for (int row = 0, rows = m_model->rowCount(parent); row < rows && height <= 600; ++row) {
            const QModelIndex index = m_model->index(row, 0, parent);
            const QSize hint = m_tree->sizeHintForIndex(index);
            height += hint.height();
            width = std::max(width, (depth + 1) * indent + hint.width());
            if (m_tree->isExpanded(index)) pending.emplace_back(index, depth + 1);
        }
    }
    const int frame = 2 * m_tree->frameWidth();
    return {width + frame, height + frame};
}

QSize ivErrorBtn::sizeHint() const {
    return DropDownSize(ContentSize());
}
