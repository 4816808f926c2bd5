#pragma once
#include <memory>
#include <optional>
#include <string>

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/pdfDocInfo.h"
#include "pdf/object/pdfDiagnostics.h"
#include "platform/ivStatus.h"

// Everything a report shows about one file.
struct ReportData {
    std::string path;       // as given on the command line
    std::string fileError;  // why the file could not be opened, when it could not
    ivDPFControl control;   // declared before the document, which reports to it
    std::unique_ptr<ivPdf> doc;
    ivStatus openStatus = kOk;
    ivStatus analyseStatus = kOk;
    bool extraChecks = false;
    std::optional<pdfDocInfo> info;
};

// The JSON report (one line, no line break at the end).
std::string JsonReport(const ReportData& data);
// The human-readable report.
std::string TextReport(const ReportData& data);
// The message tree as indented lines.
std::string MessageTreeText(const ivIOControl& control);
