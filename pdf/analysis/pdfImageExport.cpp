#include "pdf/analysis/pdfImageExport.h"

#include <filesystem>

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/pdfImage.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfRoleCodes.h"
#include "platform/ivCodec.h"
#include "platform/ivFileWriter.h"

namespace {

std::uint32_t CountImages(const ivPdf& doc) {
    std::uint32_t count = 0;
    for (const auto& section : doc.Sections())
        section->ForEachEntry([&count](const XrefEntry* e) { count += e->role == kRoleImage; });
    return count;
}

// Copies compressed data out byte for byte.
bool WriteData(const std::filesystem::path& path, ivStream& data) {
    auto file = ivFileWriter::Create(path);
    if (!file) return false;
    ivCopyStream(data, *file);
    return file->Close();
}

bool WriteImage(const std::filesystem::path& path, const ivImage2d& image, const std::string& format) {
    auto exporter = CreateInterface<ivImageExporter>(format);
    if (!exporter) return false;
    auto file = ivFileWriter::Create(path);
    if (!file) return false;
    bool ok = Succeeded(exporter->Save(*file, image));
    ok = file->Close() && ok;
    if (!ok) {
        std::error_code ec;
        std::filesystem::remove(path, ec);  // no half-written files
    }
    return ok;
}

// One image: decoded (or passed through) and written; true when a file was written.
bool ExportOne(ivPdf& doc, XrefEntry* entry, const std::string& base, const pdfExportSettings& settings,
               const std::string& extension) {
    const pdfObject* object = LoadObject(doc, entry);
    if (!object) return false;
    std::unique_ptr<ivImage2d> image;
    if (settings.si_keepJpeg && AsStream(object)) {
        ivRef<ivStream> compressed;
        DecodeImage(doc, object, image, &compressed);
        // Deliberately CCITT data comes out here too, in a file named ".jpg".
        if (compressed) return WriteData(base + "jpg", *compressed);
    } else if (!AsStream(object)) {
        Report(doc, "Not a stream");
        return false;
    } else {
        DecodeImage(doc, object, image, nullptr);
    }
    return image && image->Width() && WriteImage(base + extension, *image, settings.si_format);
}

}  // namespace

pdfExportOutcome ExportImages(ivPdf& doc, const pdfExportSettings& settings,
                              const std::function<void(std::uint32_t, std::uint32_t)>& progress) {
    pdfExportOutcome outcome;
    outcome.images = CountImages(doc);
    const ivCodecInfo* codec = FindCodec(settings.si_format);
    const std::string extension = codec ? std::string(codec->extension) : std::string();
    std::string folder = settings.si_Folder;
    if (!folder.empty() && folder.back() != '/' && folder.back() != '\\') folder += '/';
    std::uint32_t index = 1;
    for (const auto& section : doc.Sections()) {
        section->ForEachEntry([&](XrefEntry* entry) {
            if (entry->role != kRoleImage) return;
            std::string base = settings.si_name == 0
                                   ? folder + ivFormat("%d %d.", static_cast<int>(entry->num), entry->gen)
                                   : folder + ivFormat("%d.", static_cast<int>(index));
            outcome.written += ExportOne(doc, entry, base, settings, extension);
            ++index;  // images that could not be fetched keep their number
            if (progress) progress(index - 1, outcome.images);
        });
    }
    return outcome;
}
