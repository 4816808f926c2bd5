#include "OpenedFixture.h"

#include <regex>

#include "platform/ivFileStream.h"
#include "platform/ivFormat.h"

OpenedFixture::OpenedFixture(const std::string& name, bool extraChecks) : m_bytes(ReadTestFile(name)) {
    ivRef<ivStream> file = ivFileStream::Open(TestDataPath(name));
    m_doc = std::make_unique<ivPdf>(file, name, &m_control);
    m_doc->SetExtraChecks(extraChecks);
    if (!file) {
        m_status = kFail;
        return;
    }
    m_status = m_doc->Open();
    m_taken = m_control.Paths().size();
}

namespace {

std::uint32_t FindLine(const std::string& bytes, const std::string& line, int occurrence) {
    std::size_t at = std::string::npos;
    for (std::size_t from = 0; occurrence >= 0; --occurrence, from = at + 1) {
        at = bytes.find(line, from);
        while (at != std::string::npos && at != 0 && bytes[at - 1] != '\n' && bytes[at - 1] != '\r')
            at = bytes.find(line, at + 1);
        if (at == std::string::npos) return 0xFFFFFFFFu;
    }
    return static_cast<std::uint32_t>(at);
}

}  // namespace

std::uint32_t OpenedFixture::OffsetOf(std::uint32_t num, std::uint16_t gen, int occurrence) const {
    return FindLine(m_bytes, ivFormat("%u %u obj", num, gen), occurrence);
}

std::uint32_t OpenedFixture::LineOffset(const std::string& text, int occurrence) const {
    return FindLine(m_bytes, text, occurrence);
}

std::string OpenedFixture::InFile(std::uint32_t num, std::uint16_t gen, int occurrence) const {
    return ivFormat("%u %u @%u", num, gen, OffsetOf(num, gen, occurrence));
}

std::vector<std::string> OpenedFixture::TakeMessages() {
    std::vector<std::string> all = m_control.Paths(), out;
    for (std::size_t i = m_taken; i < all.size(); ++i) out.push_back(WithoutPosition(all[i]));
    m_taken = all.size();
    return out;
}

std::vector<std::string> OpenedFixture::SectionMessages() const {
    std::vector<std::string> out;
    for (const std::string& p : m_control.Paths())
        if (p.rfind("Reading XREF table at ", 0) == 0) out.push_back(WithoutPosition(p));
    return out;
}

std::string SectionScope(std::uint32_t offset) {
    return ivFormat("Reading XREF table at %d (0x%xh)", static_cast<int>(offset), offset);
}

std::string WithoutPosition(const std::string& path) {
    static const std::regex suffix(" Stream Position:([0-9]+), 0x([0-9a-f]+)h$");
    std::smatch m;
    if (!std::regex_search(path, m, suffix) || std::stoul(m[1]) != std::stoul(m[2], nullptr, 16)) return path;
    return path.substr(0, static_cast<std::size_t>(m.position(0)));
}

std::string Describe(const XrefEntry& e) {
    std::string s = e.Compressed() ? ivFormat("%u %u in %u#%u", e.num, e.gen, e.objStm, e.offset)
                                   : ivFormat("%u %u @%u", e.num, e.gen, e.offset);
    if (e.flags & ~kXrefCompressed) s += ivFormat(" flags=%u", e.flags);
    return s;
}

std::vector<std::string> Describe(const XrefSection& s) {
    // The entries as read; placeholders for objects looked up later (the catalog and the
    // page tree are read during open) are not the reader's.
    std::vector<std::string> out;
    for (const XrefEntry* e : s.entries) out.push_back(Describe(*e));
    return out;
}
