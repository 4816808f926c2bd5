#pragma once
#include <QAbstractItemModel>
#include <QColor>
#include <unordered_map>
#include <utility>

struct ivMessageNode;

// The message tree of the sink as a model: one row per scope that received messages and per
// message, in reporting order; a scope's rows are its messages and inner scopes. It reads the
// sink's own nodes and makes nothing per row.
class ivMessageModel : public QAbstractItemModel {
    Q_OBJECT
public:
    // `root` is the sink's root node; it must not change while the model shows it.
    explicit ivMessageModel(const ivMessageNode* root, QObject* parent = nullptr);
    // The colour of message texts (the theme's "error" text colour); none keeps the palette's.
    void SetTextColor(const QColor& color) { m_textColor = color; }

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

    const ivMessageNode* NodeOf(const QModelIndex& index) const;

private:
    const ivMessageNode* m_root;  // not owned; the sink outlives the model
    QColor m_textColor;
    // For every node whose children have been asked for: its parent and its row there. Filled
    // as the view unfolds the tree, so a million messages cost nothing until shown.
    mutable std::unordered_map<const ivMessageNode*, std::pair<const ivMessageNode*, int>> m_placeOf;
};
