#pragma once
#include <array>
#include <optional>
#include <string>

class ivPdf;
struct pdfObject;

// The six document-information entries the properties page shows, as UTF-8.
struct pdfDocInfo {
    std::optional<std::string> title, author, subject, keywords, creator, producer;
};

// The entries of the newest trailer's Info dictionary; nothing when there is no Info
// dictionary.
std::optional<pdfDocInfo> ReadDocInfo(ivPdf& doc);

// A text string as UTF-8: UTF-16 after a byte-order mark, PDFDocEncoding otherwise.
std::optional<std::string> TextStringToUtf8(ivPdf& doc, const pdfObject* value);
