#include "ui/panes/ivMessageModel.h"

#include "platform/ivFormat.h"
#include "platform/ivIOControl.h"

// Every index carries its node's parent in internalPointer; the root's children carry the root.

ivMessageModel::ivMessageModel(const ivMessageNode* root, QObject* parent)
    : QAbstractItemModel(parent), m_root(root) {}

const ivMessageNode* ivMessageModel::NodeOf(const QModelIndex& index) const {
    if (!index.isValid()) return m_root;
    const auto* parentNode = static_cast<const ivMessageNode*>(index.internalPointer());
    return parentNode->children[static_cast<std::size_t>(index.row())].get();
}

QModelIndex ivMessageModel::index(int row, int column, const QModelIndex& parent) const {
    const ivMessageNode* node = NodeOf(parent);
    if (!node || column != 0 || row < 0 || static_cast<std::size_t>(row) >= node->children.size()) return {};
    if (parent.isValid())
        m_placeOf.emplace(
            node, std::make_pair(static_cast<const ivMessageNode*>(parent.internalPointer()), parent.row()));
    return createIndex(row, column, const_cast<ivMessageNode*>(node));
}

QModelIndex ivMessageModel::parent(const QModelIndex& child) const {
    if (!child.isValid()) return {};
    const auto* parentNode = static_cast<const ivMessageNode*>(child.internalPointer());
    if (parentNode == m_root) return {};
    auto place = m_placeOf.find(parentNode);
    if (place == m_placeOf.end()) return {};
    return createIndex(place->second.second, 0, const_cast<ivMessageNode*>(place->second.first));
}

int ivMessageModel::rowCount(const QModelIndex& parent) const {
    if (parent.column() > 0) return 0;
    const ivMessageNode* node = NodeOf(parent);
    return node ? static_cast<int>(node->children.size()) : 0;
}

int ivMessageModel::columnCount(const QModelIndex&) const {
    return 1;
}

QVariant ivMessageModel::data(const QModelIndex& index, int role) const {
    const ivMessageNode* node = index.isValid() ? NodeOf(index) : nullptr;
    if (!node) return {};
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole)
        return QString::fromStdString(ivTextToUtf8(node->text));
    if (role == Qt::ForegroundRole && !node->isScope && m_textColor.isValid()) return m_textColor;
    return {};
}
