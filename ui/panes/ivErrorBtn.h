#pragma once
#include <QSize>
#include <QWidget>

class QTreeView;
class ivIOControl;
class ivMessageModel;

// The content of the warning button's drop-down: the sink's messages as a tree (scopes
// unfold to what was reported inside them), made afresh each time the drop-down opens.
class ivErrorBtn : public QWidget {
    Q_OBJECT
public:
    // `control` must outlive this widget; nothing may report to it while it is shown.
    explicit ivErrorBtn(const ivIOControl& control, QWidget* parent = nullptr);

    // The drop-down's size for content of the given size: the content's width when it lies
    // between 101 and 499 pixels, else 500; its height held to 16 to 600 pixels.
    static QSize DropDownSize(QSize content);

    QTreeView* Tree() const { return m_tree; }
    QSize sizeHint() const override;

Q_SIGNALS:
    // A message or scope was chosen (clicked or Enter); the text is the one shown.
    void Chosen(const QString& text);
    // The chosen item lies in the scope of an indirect object (the innermost such scope).
    void ObjectChosen(unsigned num, unsigned gen);

private:
    QSize ContentSize() const;
    void Choose(const QModelIndex& index);

    QTreeView* m_tree;
    ivMessageModel* m_model;
};
