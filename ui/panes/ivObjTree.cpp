#include "ui/panes/ivObjTree.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QFileDialog>
#include <QKeyEvent>
#include <QMenu>
#include <filesystem>

#include "pdf/analysis/ivObjectItems.h"
#include "pdf/analysis/ivObjectSave.h"
#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/pdfImage.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfObjectAccess.h"
#include "platform/ivFileWriter.h"
#include "platform/ivFormat.h"
#include "platform/ivImage2d.h"
#include "ui/panes/ivObjectTreeModel.h"
#include "ui/shell/ivCommands.h"
#include "ui/views/ivImageSaving.h"

namespace {

using Kind = ivObjectTreeModel::Kind;

bool Is(const QString& name, const char* command) {
    return name.compare(command, Qt::CaseInsensitive) == 0;
}

// Opens a new file for a save; null when the user cancels or it cannot be made.
ivRef<ivFileWriter> AskForFile(QWidget* parent, const QString& title, const QString& suggestion) {
    const QString path = QFileDialog::getSaveFileName(parent, title, suggestion, "All Files (*)");
    if (path.isEmpty()) return nullptr;
    return ivFileWriter::Create(std::filesystem::path(path.toStdU16String()));
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
    QAction* linkTo = commands->Action("Object.LinkTo");
    if (!streamData) {
        ivPdf& doc = *m_model->Document();
        const ivObjectMenu trim = kind == Kind::Entry ? ObjectMenuFor(doc, m_model->EntryOf(index)->Id())
                                                      : ObjectMenuFor(doc, m_model->ValueOf(index));
        auto drop = [&](const char* command, bool keep) {
            if (!keep) menu->removeAction(commands->Action(command));
        };
        drop("File.SaveToFile", trim.saveObject);
        drop("File.SaveStreamToFile", trim.saveStream);
        drop("File.SaveImageToFile", trim.saveImage);
        drop("Object.Locate", trim.locate);
        drop("Object.LinkTo", trim.locate);
        drop("Object.LinkFrom", trim.locate);
        if (linkTo) linkTo->setEnabled(trim.linkToEnabled);
    }
    m_menuIndex = index;
    menu->exec(event->globalPos());
    m_menuIndex = QPersistentModelIndex();
    if (linkTo) linkTo->setEnabled(true);  // the action is shared with every other menu
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
        const unsigned num = target.entry->num, gen = target.entry->gen;
        if (Is(name, "Object.Locate"))
            Q_EMIT LocateRequested(num, gen);
        else
            Q_EMIT FilterRequested(QString::fromStdString(
                ivFormat("%s %u %u R", Is(name, "Object.LinkTo") ? "to" : "from", num, gen)));
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
    if (!entry) {
        const ivObjectMenu m = ObjectMenuFor(doc, m_model->ValueOf(index));
        entry = m.entry;
    }
    if (!entry) return;
    auto file = AskForFile(this, "Save Object As", QString("%1 %2.obj").arg(entry->num).arg(entry->gen));
    if (file) {
        CopyEntryBytes(doc, *entry, *file);
        file->Close();
    }
}

void ivObjTree::SaveStream(const QModelIndex& index) {
    const pdfObject* stream =
        m_model->KindOf(index) == Kind::StreamData ? m_model->ValueOf(index) : m_model->ObjectToShow(index);
    if (!AsStream(stream)) return;
    if (auto file = AskForFile(this, "Save Stream As", "stream.bin")) {
        CopyDecodedStream(*m_model->Document(), stream, *file);
        file->Close();
    }
}

void ivObjTree::SaveImage(const QModelIndex& index) {
    ivPdf& doc = *m_model->Document();
    const pdfObject* target = m_model->ObjectToShow(index);
    if (!AsStream(target)) {
        Report(doc, "Not a stream");
        return;
    }
    std::unique_ptr<ivImage2d> image;
    if (Failed(DecodeImage(doc, target, image, nullptr)) || !image) return;
    const XrefEntry* entry = FindEntryByRecord(doc, target);
    SaveImageWithDialog(this, *image,
                        entry ? QString("%1 %2").arg(entry->num).arg(entry->gen) : QString("image"));
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
