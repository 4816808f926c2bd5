#include "ui/views/ivImageSaving.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QStringList>
#include <filesystem>

#include "platform/ivCodec.h"
#include "platform/ivFileWriter.h"

namespace {

QString Text(std::string_view s) {
    return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()));
}

}  // namespace

bool SaveImageWithDialog(QWidget* parent, const ivImage2d& image, const QString& suggestedName) {
    QStringList filters;
    std::vector<const ivCodecInfo*> formats;
    for (const ivCodecInfo& codec : RegisteredCodecs()) {
        if (!(codec.caps & kCodecExport)) continue;
        filters << QString("%1 (*.%2)").arg(Text(codec.name), Text(codec.extension));
        formats.push_back(&codec);
    }
    if (formats.empty()) return false;
    QString chosen = filters.front();
    QString path = QFileDialog::getSaveFileName(parent, "Save Image As",
                                                suggestedName + "." + Text(formats.front()->extension),
                                                filters.join(";;"), &chosen);
    if (path.isEmpty()) return false;
    auto index = static_cast<std::size_t>(std::max<qsizetype>(0, filters.indexOf(chosen)));
    // A typed extension that names a format wins over the filter chosen.
    const QString suffix = QFileInfo(path).suffix();
    for (std::size_t i = 0; i < formats.size(); ++i)
        if (suffix.compare(Text(formats[i]->extension), Qt::CaseInsensitive) == 0) index = i;
    const ivCodecInfo& format = *formats[index];
    if (suffix.isEmpty()) path += "." + Text(format.extension);
    auto exporter = CreateInterface<ivImageExporter>(format.id);
    if (!exporter) return false;
    auto file = ivFileWriter::Create(std::filesystem::path(path.toStdU16String()));
    if (!file) return false;
    const bool saved = Succeeded(exporter->Save(*file, image));
    return file->Close() && saved;
}
