#include "pdf/analysis/pdfPageLabel.h"

#include "pdf/analysis/pdfPageTree.h"
#include "platform/ivFormat.h"

// Placeholder until the paper sizes land.
std::string PageLabel(std::size_t index, const pdfPage&) { return ivFormat("Page %d, ", static_cast<int>(index + 1)); }
