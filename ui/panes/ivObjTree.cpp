#include "ui/panes/ivObjTree.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>

#include "pdf/analysis/ivObjectItems.h"
#include "pdf/analysis/ivPdf.h"
#include "pdf/object/pdfObjectAccess.h"
#include "ui/panes/ivObjectActions.h"
#include "ui/panes/ivObjectTreeModel.h"
#include "ui/shell/ivCommands.h"

namespace {

using Kind = ivObjectTreeModel::Kind;

bool Is(const QString& name, const char* command) {
    return name.compare(command, Qt::CaseInsensitive) == 0;
}

}  // namespace

ivObjTree::ivObjTree(ivObjectTreeModel* model, QWidget* parent) : QTreeView(parent), m_model(model) {
    m_model->setParent(this);
    setModel(m_model);
    setHeaderHidden(true);
    setUniformRowHeights(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setExpandsOnDoubleClick(true);
    connect(this, &QTreeView::clicked, this, &ivObjTree::Choose);
    connect(this, &QTreeView::activated, this, &ivObjTree::Choose);
}

void ivObjTree::Choose(const QModelIndex& index) {
    const pdfObject* object = m_model->ObjectToShow(index);
    if (!object) return;
    unsigned flags = kReuseView | kBringToFront;
    if (!(QApplication::keyboardModifiers() & Qt::ControlModifier)) flags |= kSharedView;
    Q_EMIT ShowRequested(object, flags);
}

QModelIndex ivObjTree::CommandIndex() const {
    return m_menuIndex.isValid() ? QModelIndex(m_menuIndex) : currentIndex();
}

void ivObjTree::contextMenuEvent(QContextMenuEvent* event) {
    const QModelIndex index = indexAt(event->pos());
    const Kind kind = m_model->KindOf(index);
    if (!index.isValid() || kind == Kind::Section || kind == Kind::Trailer) return;
    ivCommands* commands = ivCommands::Instance();
    const bool streamData = kind == Kind::StreamData;
    std::unique_ptr<QMenu> menu(
        commands ? commands->BuildMenu(streamData ? "Context.Stream" : "Context.Object", this) : nullptr);
    if (!menu) {
        QApplication::beep();
        return;
    }
    if (!streamData) {
        ivPdf& doc = *m_model->Document();
        TrimObjectMenu(*menu, *commands,
                       kind == Kind::Entry ? ObjectMenuFor(doc, m_model->EntryOf(index)->Id())
                                           : ObjectMenuFor(doc, m_model->ValueOf(index)));
    }
    m_menuIndex = index;
    menu->exec(event->globalPos());
    m_menuIndex = QPersistentModelIndex();
    RestoreObjectMenu(*commands);
}

bool ivObjTree::OnCommand(const QString& name) {
    const QModelIndex index = CommandIndex();
    if (!index.isValid() || !m_model->Document()) return false;
    ivPdf& doc = *m_model->Document();
    const Kind kind = m_model->KindOf(index);
    const ivObjectMenu target = kind == Kind::Entry ? ObjectMenuFor(doc, m_model->EntryOf(index)->Id())
                                                    : ObjectMenuFor(doc, m_model->ValueOf(index));
    const pdfObject* shown =
        kind == Kind::StreamData ? m_model->ValueOf(index) : m_model->ObjectToShow(index);
    if (Is(name, "Object.View") || Is(name, "Object.ViewWindow")) {
        if (shown)
            Q_EMIT ShowRequested(shown,
                                 kReuseView | kBringToFront | (Is(name, "Object.View") ? kSharedView : 0));
    } else if (Is(name, "Object.Locate") || Is(name, "Object.LinkTo") || Is(name, "Object.LinkFrom")) {
        if (!target.entry) return true;
        if (Is(name, "Object.Locate"))
            Q_EMIT LocateRequested(target.entry->num, target.entry->gen);
        else
            Q_EMIT FilterRequested(LinkFilterText(Is(name, "Object.LinkTo"), *target.entry));
    } else if (Is(name, "File.SaveToFile")) {
        SaveObject(index);
    } else if (Is(name, "File.SaveStreamToFile")) {
        SaveStream(index);
    } else if (Is(name, "File.SaveImageToFile")) {
        SaveImage(index);
    } else if (Is(name, "edit.copy")) {
        CopyItem(index, false);
    } else {
        return false;
    }
    return true;
}

void ivObjTree::SaveObject(const QModelIndex& index) {
    ivPdf& doc = *m_model->Document();
    const XrefEntry* entry = m_model->EntryOf(index);
    if (!entry) entry = ObjectMenuFor(doc, m_model->ValueOf(index)).entry;
    if (entry) SaveEntryWithDialog(this, doc, *entry);
}

void ivObjTree::SaveStream(const QModelIndex& index) {
    const pdfObject* stream =
        m_model->KindOf(index) == Kind::StreamData ? m_model->ValueOf(index) : m_model->ObjectToShow(index);
    SaveStreamWithDialog(this, *m_model->Document(), stream);
}

void ivObjTree::SaveImage(const QModelIndex& index) {
    SaveObjectImageWithDialog(this, *m_model->Document(), m_model->ObjectToShow(index));
}

void ivObjTree::CopyItem(const QModelIndex& index, bool hint) const {
    if (!index.isValid()) return;
    QApplication::clipboard()->setText(hint ? m_model->HintOf(index) : m_model->TextOf(index));
}

void ivObjTree::keyPressEvent(QKeyEvent* event) {
    const bool copy = event->key() == Qt::Key_C && (event->modifiers() & Qt::ControlModifier);
    if (copy) {
        CopyItem(currentIndex(), event->modifiers() & Qt::ShiftModifier);
        return;
    }
    QTreeView::keyPressEvent(event);
}
