#include "ImageFixture.h"

#include "pdf/object/pdfRoleCodes.h"
#include "platform/ivFormat.h"

ImageFixture::ImageFixture(const std::string& name) : m_file(name) {
    if (Failed(m_file.OpenStatus()) || Failed(Doc().Analyse())) return;
    for (const auto& section : Doc().Sections())
        section->ForEachEntry([this](XrefEntry* e) {
            if (e->role == kRoleImage) m_images.push_back(e);
        });
    m_file.TakeMessages();
}

std::size_t ImageFixture::DataStart(std::uint32_t num) const {
    const std::string& bytes = m_file.Bytes();
    std::size_t at = bytes.find("stream", m_file.OffsetOf(num, 0));
    if (at == std::string::npos) return bytes.size();
    at += 6;
    if (at < bytes.size() && bytes[at] == '\r') ++at;
    if (at < bytes.size() && bytes[at] == '\n') ++at;
    return at;
}

std::string ImageFixture::StreamData(std::uint32_t num) const {
    const std::string& bytes = m_file.Bytes();
    const std::size_t start = DataStart(num);
    std::size_t end = bytes.find("endstream", start);
    if (end == std::string::npos) return {};
    if (end > start && bytes[end - 1] == '\n') --end;
    if (end > start && bytes[end - 1] == '\r') --end;
    return bytes.substr(start, end - start);
}

std::string ImageFixture::ImageScope(std::uint32_t num) const {
    const auto start = static_cast<std::uint32_t>(DataStart(num));
    return ivFormat("Accessing Image stream %u 0 R. Stream data start: %u (0x%Xh)", num, start, start);
}
