#include "support/PdfBuilder.h"

#include <algorithm>
#include <cstdio>

namespace {

std::string Padded(std::uint64_t value, int width) {
    char text[32];
    std::snprintf(text, sizeof text, "%0*llu", width, static_cast<unsigned long long>(value));
    return text;
}

void PutBigEndian(std::string& out, std::uint64_t value, int bytes) {
    for (int i = bytes - 1; i >= 0; --i) out += static_cast<char>((value >> (8 * i)) & 0xFF);
}

}  // namespace

PdfBuilder::PdfBuilder(std::string_view header) : m_bytes(header) {}

PdfBuilder& PdfBuilder::Object(std::uint32_t num, std::string_view body, std::uint16_t gen) {
    m_pending.push_back({num, gen, Offset()});
    m_offsets[num] = Offset();
    m_bytes += std::to_string(num) + " " + std::to_string(gen) + " obj\n";
    m_bytes += body;
    m_bytes += "\nendobj\n";
    return *this;
}

PdfBuilder& PdfBuilder::Stream(std::uint32_t num, std::string_view entries, std::string_view data) {
    std::string body = "<<";
    body += entries;
    body += " /Length " + std::to_string(data.size()) + ">>\nstream\n";
    body += data;
    body += "\nendstream";
    return Object(num, body);
}

PdfBuilder& PdfBuilder::Raw(std::string_view bytes) {
    m_bytes += bytes;
    return *this;
}

std::size_t PdfBuilder::Slot() {
    std::size_t at = m_bytes.size();
    m_bytes += "0000000000";
    return at;
}

void PdfBuilder::Fill(std::size_t slot, std::uint64_t value) {
    m_bytes.replace(slot, 10, Padded(value, 10));
}

std::uint32_t PdfBuilder::OffsetOf(std::uint32_t num) const {
    auto it = m_offsets.find(num);
    return it == m_offsets.end() ? 0 : it->second;
}

std::vector<PdfBuilder::Entry> PdfBuilder::TakePending() {
    std::vector<Entry> entries = std::move(m_pending);
    m_pending.clear();
    std::stable_sort(entries.begin(), entries.end(),
                     [](const Entry& a, const Entry& b) { return a.num < b.num; });
    return entries;
}

std::uint32_t PdfBuilder::Table(std::string_view trailerEntries, bool withFreeHead) {
    std::vector<Entry> entries = TakePending();
    const std::uint32_t at = Offset();
    m_bytes += "xref\n";
    if (withFreeHead) entries.insert(entries.begin(), Entry{0, 65535, 0});
    for (std::size_t i = 0; i < entries.size();) {
        std::size_t j = i + 1;
        while (j < entries.size() && entries[j].num == entries[j - 1].num + 1) ++j;
        m_bytes += std::to_string(entries[i].num) + " " + std::to_string(j - i) + "\n";
        for (; i < j; ++i) {
            const bool free = entries[i].num == 0 && entries[i].gen == 65535;
            m_bytes += Padded(entries[i].offset, 10) + " " + Padded(entries[i].gen, 5) +
                       (free ? " f\r\n" : " n\r\n");
        }
    }
    m_bytes += "trailer\n<<";
    m_bytes += trailerEntries;
    m_bytes += ">>\n";
    return at;
}

std::uint32_t PdfBuilder::XrefStream(std::uint32_t num, std::string_view entries) {
    std::vector<Entry> listed = TakePending();
    const std::uint32_t at = Offset();
    listed.push_back({num, 0, at});
    std::stable_sort(listed.begin(), listed.end(),
                     [](const Entry& a, const Entry& b) { return a.num < b.num; });
    std::string rows, index;
    for (std::size_t i = 0; i < listed.size();) {
        std::size_t j = i + 1;
        while (j < listed.size() && listed[j].num == listed[j - 1].num + 1) ++j;
        index += std::to_string(listed[i].num) + " " + std::to_string(j - i) + " ";
        for (; i < j; ++i) AppendXrefRow(rows, 1, listed[i].offset, listed[i].gen);
    }
    std::string dict = " /Type /XRef /W [1 4 2] /Index [" + index + "]";
    dict += entries;
    m_offsets[num] = at;
    m_bytes += std::to_string(num) + " 0 obj\n<<" + dict + " /Length " + std::to_string(rows.size()) +
               ">>\nstream\n" + rows + "\nendstream\nendobj\n";
    return at;
}

void PdfBuilder::AppendXrefRow(std::string& rows, std::uint8_t type, std::uint32_t field2, std::uint16_t field3) {
    rows += static_cast<char>(type);
    PutBigEndian(rows, field2, 4);
    PutBigEndian(rows, field3, 2);
}

PdfBuilder& PdfBuilder::StartXref(std::uint64_t offset) {
    m_bytes += "startxref\n" + std::to_string(offset) + "\n%%EOF\n";
    return *this;
}
