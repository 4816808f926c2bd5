#pragma once
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

// Writes a PDF file into memory: objects typed as text, cross-reference sections with the
// offsets filled in. Nothing is checked, so a file can contradict itself on purpose. Shared by
// the tests that build damaged files and by the fuzz targets that wrap their input in a file.
class PdfBuilder {
public:
    explicit PdfBuilder(std::string_view header = "%PDF-1.7\n");

    // "N G obj\n" body "\nendobj\n"; the object goes into the next section's table.
    PdfBuilder& Object(std::uint32_t num, std::string_view body, std::uint16_t gen = 0);
    // A stream object: "<<" entries " /Length n>>", then the data between "stream" and "endstream".
    PdfBuilder& Stream(std::uint32_t num, std::string_view entries, std::string_view data);
    // Bytes as they are.
    PdfBuilder& Raw(std::string_view bytes);

    // Ten zero digits whose value Fill() sets later, for offsets that are not known yet
    // (a Prev that points forward). Returns the slot's position.
    std::size_t Slot();
    void Fill(std::size_t slot, std::uint64_t value);

    // A classic table ("xref", one subsection per run of consecutive numbers) of the objects
    // written since the previous section, free entry 0 included when `withFreeHead`; then
    // "trailer", "<<" entries ">>". Returns the table's offset.
    std::uint32_t Table(std::string_view trailerEntries, bool withFreeHead = true);
    // A cross-reference stream object `num` (W [1 4 2]) listing the objects written since the
    // previous section and itself; its dictionary gets `entries`, Type, W, Index and Length.
    std::uint32_t XrefStream(std::uint32_t num, std::string_view entries);
    // One W [1 4 2] row of a cross-reference stream appended to `rows`.
    static void AppendXrefRow(std::string& rows, std::uint8_t type, std::uint32_t field2, std::uint16_t field3);
    // "startxref\n" offset "\n%%EOF\n".
    PdfBuilder& StartXref(std::uint64_t offset);

    std::uint32_t Offset() const { return static_cast<std::uint32_t>(m_bytes.size()); }
    std::uint32_t OffsetOf(std::uint32_t num) const;
    const std::string& Bytes() const { return m_bytes; }

private:
    struct Entry {
        std::uint32_t num;
        std::uint16_t gen;
        std::uint32_t offset;
    };
    std::vector<Entry> TakePending();

    std::string m_bytes;
    std::vector<Entry> m_pending;  // objects since the last section
    std::map<std::uint32_t, std::uint32_t> m_offsets;
};
