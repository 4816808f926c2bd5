// The whole path of the command line over one file: open, analyse, document information, every
// page's content operations, every image passed through and decoded by the export worker into
// a temporary folder (emptied after each input), and both reports.
//
// Input: a whole file. Its size picks the export settings, so that mutations visit them all:
// bits 0-1 the format (jpeg, png, tiff, bmp), bit 2 keep JPEG, bit 3 names by index.
#include <cstdint>
#include <memory>
#include <string>

#include "FuzzStreams.h"
#include "FuzzTempFolder.h"
#include "cli/cliRender.h"
#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/pdfContents.h"
#include "pdf/analysis/pdfDocInfo.h"
#include "pdf/analysis/pdfImage.h"
#include "pdf/analysis/pdfImageExport.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfObjectText.h"
#include "pdf/object/pdfRoleCodes.h"

namespace {

void ReadContents(ivPdf& doc) {
    for (const pdfPage* page : doc.Pages()) {
        std::shared_ptr<const pdfContentOps> ops;
        ReadPageContents(doc, page->Object(), ops);
        if (!ops) continue;
        ForEachOperation(*ops, [](const pdfOperation& op) {
            for (const pdfObject* operand : op.operands) (void)ObjectText(operand);
            if (op.op) (void)TokenText(op.op);
        });
    }
}

// Compressed data as the keep-JPEG export copies it out; the export decodes the rest.
void PassImagesThrough(ivPdf& doc) {
    for (const auto& section : doc.Sections())
        section->ForEachEntry([&](XrefEntry* entry) {
            if (entry->role != kRoleImage) return;
            const pdfObject* object = LoadObject(doc, entry);
            if (!AsStream(object)) return;
            std::unique_ptr<ivImage2d> image;
            ivRef<ivStream> compressed;
            DecodeImage(doc, object, image, &compressed);
            if (compressed) FuzzDrain(*compressed);
        });
}

void Export(ivPdf& doc, std::size_t size) {
    static const char* const kFormats[] = {"jpeg", "png", "tiff", "bmp"};
    const FuzzTempFolder& folder = FuzzTempFolder::Instance();
    pdfExportSettings settings;
    settings.si_Folder = folder.Path().string();
    settings.si_format = kFormats[size & 3];
    settings.si_keepJpeg = size & 4;
    settings.si_name = (size & 8) ? 1 : 0;
    ExportImages(doc, settings, [](std::uint32_t, std::uint32_t) {});
    folder.Clear();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ReportData report;
    report.path = "fuzz.pdf";
    report.doc = std::make_unique<ivPdf>(FuzzStream({reinterpret_cast<const char*>(data), size}), report.path,
                                         &report.control);
    ivPdf& doc = *report.doc;
    report.openStatus = doc.Open();
    report.analyseStatus = doc.Analyse();
    report.info = ReadDocInfo(doc);
    ReadContents(doc);
    PassImagesThrough(doc);
    Export(doc, size);
    (void)JsonReport(report);
    (void)TextReport(report);
    return 0;
}
