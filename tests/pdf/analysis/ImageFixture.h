#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "pdf/object/OpenedFixture.h"

// A fixture from tests/data, opened and analysed, with its image entries (role 11) in the
// order the export visits them and its messages so far taken away.
class ImageFixture {
public:
    explicit ImageFixture(const std::string& name);

    ivPdf& Doc() { return m_file.Doc(); }
    OpenedFixture& File() { return m_file; }
    const std::vector<XrefEntry*>& Images() const { return m_images; }
    std::vector<std::string> TakeMessages() { return m_file.TakeMessages(); }

    // The stored bytes of object `num` 0's stream, cut out of the file by the test itself.
    std::string StreamData(std::uint32_t num) const;
    // "Accessing Image stream N 0 R. Stream data start: D (0xXh)", the scope of DecodeImage.
    std::string ImageScope(std::uint32_t num) const;

private:
    std::size_t DataStart(std::uint32_t num) const;

    OpenedFixture m_file;
    std::vector<XrefEntry*> m_images;
};
