#include "ui/panes/ivObjectActions.h"

#include <QAction>
#include <QFileDialog>
#include <QMenu>
#include <filesystem>

#include "pdf/analysis/ivObjectSave.h"
#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/pdfImage.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfObjectAccess.h"
#include "platform/ivFileWriter.h"
#include "platform/ivFormat.h"
#include "platform/ivImage2d.h"
#include "ui/shell/ivCommands.h"
#include "ui/views/ivImageSaving.h"

namespace {

// Opens a new file for a save; null when the user cancels or it cannot be made.
ivRef<ivFileWriter> AskForFile(QWidget* parent, const QString& title, const QString& suggestion) {
    const QString path = QFileDialog::getSaveFileName(parent, title, suggestion, "All Files (*)");
    if (path.isEmpty()) return nullptr;
    return ivFileWriter::Create(std::filesystem::path(path.toStdU16String()));
}

}  // namespace

void TrimObjectMenu(QMenu& menu, ivCommands& commands, const ivObjectMenu& trim) {
    auto drop = [&](const char* command, bool keep) {
        if (!keep) menu.removeAction(commands.Action(command));
    };
    drop("File.SaveToFile", trim.saveObject);
    drop("File.SaveStreamToFile", trim.saveStream);
    drop("File.SaveImageToFile", trim.saveImage);
    drop("Object.Locate", trim.locate);
    drop("Object.LinkTo", trim.locate);
    drop("Object.LinkFrom", trim.locate);
    if (QAction* linkTo = commands.Action("Object.LinkTo")) linkTo->setEnabled(trim.linkToEnabled);
}

void RestoreObjectMenu(ivCommands& commands) {
    if (QAction* linkTo = commands.Action("Object.LinkTo")) linkTo->setEnabled(true);
}

void SaveEntryWithDialog(QWidget* parent, ivPdf& doc, const XrefEntry& entry) {
    auto file = AskForFile(parent, "Save Object As", QString("%1 %2.obj").arg(entry.num).arg(entry.gen));
    if (!file) return;
    CopyEntryBytes(doc, entry, *file);
    file->Close();
}

void SaveStreamWithDialog(QWidget* parent, ivPdf& doc, const pdfObject* stream) {
    if (!AsStream(stream)) return;
    if (auto file = AskForFile(parent, "Save Stream As", "stream.bin")) {
        CopyDecodedStream(doc, stream, *file);
        file->Close();
    }
}

void SaveObjectImageWithDialog(QWidget* parent, ivPdf& doc, const pdfObject* stream) {
    if (!AsStream(stream)) {
        Report(doc, "Not a stream");
        return;
    }
    std::unique_ptr<ivImage2d> image;
    if (Failed(DecodeImage(doc, stream, image, nullptr)) || !image) return;
    const XrefEntry* entry = FindEntryByRecord(doc, stream);
    SaveImageWithDialog(parent, *image,
                        entry ? QString("%1 %2").arg(entry->num).arg(entry->gen) : QString("image"));
}

QString LinkFilterText(bool to, const XrefEntry& entry) {
    return QString::fromStdString(ivFormat("%s %u %u R", to ? "to" : "from", entry.num, unsigned(entry.gen)));
}
