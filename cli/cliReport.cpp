#include "cli/cliReport.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>

#include "cli/cliJson.h"
#include "cli/cliPasswordPrompt.h"
#include "cli/cliRender.h"
#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/pdfContents.h"
#include "pdf/analysis/pdfImageExport.h"
#include "pdf/decode/pdfFilterChain.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfObjectText.h"
#include "platform/ivFileStream.h"

#ifndef _WIN32
#include <unistd.h>
#endif

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

bool StandardErrorIsTerminal() {
#ifndef _WIN32
    return isatty(fileno(stderr)) != 0;
#else
    return false;
#endif
}

int ExitStatusOf(const ReportData& data) {
    if (Failed(data.openStatus)) return kExitNotOpened;
    return data.control.MessageCount() ? kExitMessages : kExitClean;
}

// Opens the document of `data` with the options' password and extra checks.
void OpenDocument(ReportData& data, const ivRef<ivFileStream>& stream, const CliOptions& options) {
    data.extraChecks = options.extraChecks;
    data.doc = std::make_unique<ivPdf>(stream, data.path, &data.control);
    data.doc->SetExtraChecks(options.extraChecks);
    cliPasswordPrompt prompt(options.password);
    data.doc->SetPasswordPrompt(&prompt);
    data.openStatus = data.doc->Open();
    data.doc->SetPasswordPrompt(nullptr);
}

// Exports the images, with a progress line on standard error when it is a terminal.
void ExportFileImages(ivPdf& doc, const CliOptions& options) {
    pdfExportSettings settings;
    settings.si_Folder = *options.exportDir;
    settings.si_keepJpeg = options.keepJpeg;
    settings.si_name = options.naming == "index" ? 1 : 0;
    settings.si_format = ExportFormatId(options.format);
    const bool showProgress = !options.quiet && StandardErrorIsTerminal();
    ExportImages(doc, settings, [&](std::uint32_t done, std::uint32_t total) {
        if (showProgress)
            std::fprintf(stderr, "\rExporting images of %s: %u/%u", doc.FileName().c_str(), done, total);
    });
    if (showProgress) std::fputs("\n", stderr);
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
        OpenDocument(data, file.stream, options);
        data.analyseStatus = data.doc->Analyse();
        data.info = ReadDocInfo(*data.doc);
        // The export's messages are reported too, but the status tells of the analysis alone.
        outcome.exitStatus = ExitStatusOf(data);
        if (options.exportDir) ExportFileImages(*data.doc, options);
    }
    if (options.quiet) return outcome;
    if (options.json)
        outcome.out = JsonReport(data) + "\n";
    else if (data.doc)
        outcome.out = TextReport(data);
    return outcome;
}

namespace {

// Opens a file for a query (--stream, --contents): runs `query` on the opened document, then
// puts the messages on standard error and sets the exit status.
FileOutcome RunQuery(const std::string& path, const CliOptions& options,
                     const std::function<void(ivPdf&, FileOutcome&)>& query) {
    FileOutcome outcome;
    OpenedFile file = OpenFile(path);
    if (!file.stream) {
        outcome.err = "vantrel-cli: cannot open " + path + ": " + file.error + "\n";
        outcome.exitStatus = kExitNotOpened;
        return outcome;
    }
    ReportData data;
    data.path = path;
    OpenDocument(data, file.stream, options);
    if (Succeeded(data.openStatus)) query(*data.doc, outcome);
    outcome.exitStatus = std::max(outcome.exitStatus, ExitStatusOf(data));
    if (options.quiet) return outcome;
    std::string problems = data.control.MessageCount() ? MessageTreeText(data.control) : "";
    if (Failed(data.openStatus))
        problems += ivFormat("vantrel-cli: %s could not be opened (0x%08X)\n", path.c_str(),
                             static_cast<unsigned>(data.openStatus));
    outcome.err = problems + outcome.err;
    return outcome;
}

void WriteStream(ivPdf& doc, const CliOptions& options, FileOutcome& /*outcome*/) {
    pdfObject* obj = ResolveRef(doc, {options.streamNum, options.streamGen});
    if (!obj) return;
    pdfDecodedStream decoded;
    ivStatus st = options.raw ? OpenRawStream(doc, obj, decoded)
                              : OpenDecodedStream(doc, obj, FindEntryByRecord(doc, obj), decoded);
    if (!decoded.stream || (options.raw && Failed(st))) return;
    // Written as it is decoded, so no stream is ever held in memory whole.
    std::vector<char> chunk(64 * 1024);
    std::uint64_t total = 0;
    for (;;) {
        std::uint32_t got = 0;
        ivStatus rd = decoded.stream->Read(chunk.data(), static_cast<std::uint32_t>(chunk.size()), &got);
        if (got) std::fwrite(chunk.data(), 1, got, stdout);
        total += got;
        if (Failed(rd)) {
            std::string why = decoded.stream->ErrorText();
            Report(doc, "Read error: %s after reading %d bytes", why.empty() ? "unknown" : why.c_str(),
                   static_cast<int>(total));
            break;
        }
        if (got == 0) break;
    }
    std::fflush(stdout);
}

void WriteContents(ivPdf& doc, const CliOptions& options, FileOutcome& outcome) {
    std::uint32_t page = *options.contentsPage;
    if (page > doc.Pages().size()) {
        outcome.err = ivFormat("vantrel-cli: page %u asked for, but the document has %zu pages\n", page,
                               doc.Pages().size());
        outcome.exitStatus = kExitMessages;
        return;
    }
    std::shared_ptr<const pdfContentOps> ops;
    ReadPageContents(doc, doc.Pages()[page - 1]->Object(), ops);
    if (!ops) return;
    ForEachOperation(*ops, [&](const pdfOperation& op) {
        std::string line;
        for (const pdfObject* operand : op.operands) line += ObjectText(operand) + " ";
        if (op.op) line += TokenText(op.op);
        while (!line.empty() && line.back() == ' ') line.pop_back();
        outcome.out += ivTextToUtf8(line) + "\n";
    });
}

}  // namespace

FileOutcome WriteStreamData(const std::string& path, const CliOptions& options) {
    return RunQuery(path, options, [&](ivPdf& doc, FileOutcome& o) { WriteStream(doc, options, o); });
}

FileOutcome WriteContentOperations(const std::string& path, const CliOptions& options) {
    return RunQuery(path, options, [&](ivPdf& doc, FileOutcome& o) { WriteContents(doc, options, o); });
}
