#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "pdf/analysis/ivPdf.h"
#include "support/TestSupport.h"

// A file from tests/data opened the way the application opens one, with the sink that
// collected its messages and the file's bytes for the test's own look at them.
class OpenedFixture {
public:
    explicit OpenedFixture(const std::string& name, bool extraChecks = false);

    ivPdf& Doc() { return *m_doc; }
    ivStatus OpenStatus() const { return m_status; }
    RecordingControl& Control() { return m_control; }
    const std::string& Bytes() const { return m_bytes; }

    // Where the `occurrence`-th line "N G obj" starts, found in the bytes without the reader.
    std::uint32_t OffsetOf(std::uint32_t num, std::uint16_t gen, int occurrence = 0) const;
    // Where the `occurrence`-th line starting with `text` starts.
    std::uint32_t LineOffset(const std::string& text, int occurrence = 0) const;
    // "N G @offset", as Describe prints an in-file entry, with the offset found by OffsetOf.
    std::string InFile(std::uint32_t num, std::uint16_t gen = 0, int occurrence = 0) const;

    // Messages ("scope > scope > text", position suffixes removed) reported since the last call.
    std::vector<std::string> TakeMessages();
    // Those of Open only under a section's scope: what the cross-reference reader said,
    // leaving out whatever reading the catalog adds.
    std::vector<std::string> SectionMessages() const;

private:
    RecordingControl m_control;
    std::string m_bytes;
    std::unique_ptr<ivPdf> m_doc;
    ivStatus m_status = kOk;
    std::size_t m_taken = 0;
};

// "Reading XREF table at %d (0x%xh)".
std::string SectionScope(std::uint32_t offset);
// A message path with its " Stream Position:%d, 0x%xh" suffix removed when the two numbers agree.
std::string WithoutPosition(const std::string& path);
// "N G @offset" for an in-file entry, "N G in S#index" for a compressed one; flags other
// than 2 are appended as " flags=F".
std::string Describe(const XrefEntry& e);
std::vector<std::string> Describe(const XrefSection& s);
