#include "pdf/analysis/ivPdf.h"

#include <new>
#include <unordered_set>

#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfXrefReader.h"

ivPdf::ivPdf(ivRef<ivStream> file, std::string fileName, ivIOControl* control)
    : pdfDocument(std::move(file), control), m_fileName(std::move(fileName)) {}

ivStatus ivPdf::Open() {
    try {
        if (ivStatus st = ReadHeader(*this); Failed(st)) return st;
        if (ivStatus st = ReadStartXref(*this, nullptr); Failed(st)) return st;
        ivStatus st = ReadSectionChain();
        FinishSections();
        if (Failed(st)) return st;
        ComputeLengths(*this);
        return kOk;
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
}

ivStatus ivPdf::ReadSectionChain() {
    // Offsets already read: a Prev that leads back to one of them ends the chain.
    std::unordered_set<std::uint32_t> seen{NewestSection()->offset};
    for (;;) {
        const XrefSection* last = Sections().back().get();
        if (last->prev == 0) return kOk;
        if (!seen.insert(last->prev).second) {
            ivStdScope scope(Control(), ivFormat("Reading XREF table at %d (0x%xh)", static_cast<int>(last->offset),
                                                 last->offset));
            Report(*this, "XREF table at %d was already read", static_cast<int>(last->prev));
            return kOk;
        }
        std::uint32_t prev = last->prev;
        XrefSection* section = AppendSection();
        if (ivStatus st = ReadSection(*this, *section, prev); Failed(st)) return st;
    }
}

ivStatus ivPdf::Analyse() {
    try {
        for (const auto& section : Sections())
            section->ForEachEntry([this](XrefEntry* entry) { LoadObject(*this, entry); });
        return kOk;
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
}

std::string VersionText(std::uint16_t major, std::uint16_t minor) {
    static const char* const kReleases[] = {"Unknown Acrobat", "Unknown Acrobat", "Acrobat 3.0", "Acrobat 4.0",
                                            "Acrobat 5.0",     "Acrobat 6.0",     "Acrobat 7.0", "Acrobat 8.0"};
    const char* release = minor < 8 ? kReleases[minor] : "Acrobat X";
    return ivFormat("%d.%d (%s)", major, minor, release);
}
