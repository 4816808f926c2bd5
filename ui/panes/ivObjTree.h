#pragma once
#include <QPersistentModelIndex>
#include <QTreeView>

#include "ui/shell/ivCommandTarget.h"
#include "ui/shell/ivShowFlags.h"

class ivObjectTreeModel;
struct pdfObject;
struct XrefEntry;

// The tree of a navigation pane: choosing an item shows its object; the context menu offers
// what can be done with it ("Context.Object", trimmed for the object, or "Context.Stream"
// for stream data); Ctrl+C copies an item's text and Ctrl+Shift+C its hint.
class ivObjTree : public QTreeView, public ivCommandTarget {
    Q_OBJECT
public:
    explicit ivObjTree(ivObjectTreeModel* model, QWidget* parent = nullptr);
    ivObjectTreeModel* Model() const { return m_model; }

    bool OnCommand(const QString& name) override;
    // The text and hint that Ctrl+C and Ctrl+Shift+C copy.
    void CopyItem(const QModelIndex& index, bool hint) const;

Q_SIGNALS:
    // The window shows an object, locates an entry or filters the cross-reference view.
    void ShowRequested(const pdfObject* object, unsigned flags);  // flags of ivShowFlags.h
    void LocateRequested(unsigned num, unsigned gen);
    void FilterRequested(const QString& text);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void Choose(const QModelIndex& index);
    // The item the commands act on: the one right-clicked, else the current one.
    QModelIndex CommandIndex() const;
    void SaveObject(const QModelIndex& index);
    void SaveStream(const QModelIndex& index);
    void SaveImage(const QModelIndex& index);

    ivObjectTreeModel* m_model;  // owned as a child
    QPersistentModelIndex m_menuIndex;
};
