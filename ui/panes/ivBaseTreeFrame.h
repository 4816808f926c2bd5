#pragma once
#include <QDockWidget>
#include <memory>

class ivObjTree;
class ivObjectTreeModel;
class ivPdf;

// A navigation pane of the main window: a dockable frame whose tree fills it, showing the
// current document (or nothing). Each pane fills its tree its own way.
class ivBaseTreeFrame : public QDockWidget {
    Q_OBJECT
public:
    // `objectName` names the dock for the window's layout; `caption` is its title.
    ivBaseTreeFrame(const QString& caption, const QString& objectName, QWidget* parent = nullptr);

    // Empties the tree and, with a document, fills it again; nothing when it shows this one.
    void SetDocument(std::shared_ptr<ivPdf> doc);
    const std::shared_ptr<ivPdf>& Document() const { return m_doc; }
    ivObjTree* Tree() const { return m_tree; }
    ivObjectTreeModel* Model() const { return m_model; }

protected:
    // Fills the tree from Document().
    virtual void Fill() = 0;
    // Puts `content` (the tree with whatever goes above it) into the frame.
    void SetContent(QWidget* content);

private:
    ivObjectTreeModel* m_model;  // owned by the tree
    ivObjTree* m_tree;
    std::shared_ptr<ivPdf> m_doc;
};
