#pragma once
#include <cstdint>
#include <string>

#include "pdf/object/pdfDocument.h"

// The document analyser: one per opened file. Open reads the physical structure; Analyse
// visits every object of every section.
class ivPdf : public pdfDocument {
public:
    ivPdf(ivRef<ivStream> file, std::string fileName, ivIOControl* control);

    // Header, "startxref", the chain of sections, object sizes. A failure code when the
    // header or the newest section's position cannot be read, or a section ends in error.
    ivStatus Open();
    // Loads every entry of every section, newest section first. Always 0 (or kOutOfMemory).
    ivStatus Analyse();

    const std::string& FileName() const { return m_fileName; }

private:
    ivStatus ReadSectionChain();

    std::string m_fileName;
};

// "%d.%d (%s)": the header version with the Acrobat release that introduced it.
std::string VersionText(std::uint16_t major, std::uint16_t minor);
