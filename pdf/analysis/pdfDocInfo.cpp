#include "pdf/analysis/pdfDocInfo.h"

// Placeholder until the reader lands.
std::optional<pdfDocInfo> ReadDocInfo(ivPdf&) { return std::nullopt; }
std::optional<std::string> TextStringToUtf8(ivPdf&, const pdfObject*) { return std::nullopt; }
