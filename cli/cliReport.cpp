#include "cli/cliReport.h"

#include <filesystem>
#include <functional>

#include "cli/cliJson.h"
#include "cli/cliRender.h"
#include "pdf/analysis/ivPdf.h"
#include "pdf/decode/pdfFilterChain.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfObjectAccess.h"
#include "platform/ivFileStream.h"

namespace {

constexpr ivStatus kFileNotFound = ivStatus(0x80070002u);

struct OpenedFile {
    ivRef<ivFileStream> stream;
    ivStatus status = kOk;
    std::string error;
};

OpenedFile OpenFile(const std::string& path) {
    OpenedFile f;
    f.stream = ivFileStream::Open(path, &f.error);
    if (!f.stream) {
        std::error_code ec;
        f.status = std::filesystem::exists(path, ec) ? kFail : kFileNotFound;
    }
    return f;
}

int ExitStatusOf(const ReportData& data) {
    if (Failed(data.openStatus)) return kExitNotOpened;
    return data.control.MessageCount() ? kExitMessages : kExitClean;
}

}  // namespace

FileOutcome AnalyseFile(const std::string& path, const CliOptions& options) {
    FileOutcome outcome;
    OpenedFile file = OpenFile(path);
    ReportData data;
    data.path = path;
    if (!file.stream) {
        data.openStatus = file.status;
        data.fileError = file.error;
        outcome.err = "vantrel-cli: cannot open " + path + ": " + file.error + "\n";
        outcome.exitStatus = kExitNotOpened;
    } else {
        data.doc = std::make_unique<ivPdf>(file.stream, path, &data.control);
        data.openStatus = data.doc->Open();
        data.analyseStatus = data.doc->Analyse();
        outcome.exitStatus = ExitStatusOf(data);
    }
    if (options.quiet) return outcome;
    if (options.json)
        outcome.out = JsonReport(data) + "\n";
    else if (data.doc)
        outcome.out = TextReport(data);
    return outcome;
}

FileOutcome WriteStreamData(const std::string& path, const CliOptions& options) {
    FileOutcome outcome;
    OpenedFile file = OpenFile(path);
    if (!file.stream) {
        outcome.err = "vantrel-cli: cannot open " + path + ": " + file.error + "\n";
        outcome.exitStatus = kExitNotOpened;
        return outcome;
    }
    ReportData data;
    data.doc = std::make_unique<ivPdf>(file.stream, path, &data.control);
    data.openStatus = data.doc->Open();
    if (Succeeded(data.openStatus)) {
        pdfObject* obj = ResolveRef(*data.doc, {options.streamNum, options.streamGen});
        if (obj) {
            pdfDecodedStream decoded;
            ivStatus st = options.raw ? OpenRawStream(*data.doc, obj, decoded)
                                      : OpenDecodedStream(*data.doc, obj, FindEntryByRecord(*data.doc, obj), decoded);
            if (decoded.stream && (Succeeded(st) || !options.raw)) {
                std::string bytes;
                if (Failed(ivReadAll(*decoded.stream, bytes))) {
                    std::string why = decoded.stream->ErrorText();
                    Report(*data.doc, "Read error: %s after reading %d bytes", why.empty() ? "unknown" : why.c_str(),
                           static_cast<int>(bytes.size()));
                }
                outcome.out = std::move(bytes);
            }
        }
    }
    outcome.exitStatus = ExitStatusOf(data);
    if (!options.quiet && data.control.MessageCount()) outcome.err = MessageTreeText(data.control);
    if (Failed(data.openStatus) && !options.quiet)
        outcome.err += ivFormat("vantrel-cli: %s could not be opened (0x%08X)\n", path.c_str(),
                                static_cast<unsigned>(data.openStatus));
    return outcome;
}
