#include "pdf/object/pdfDiagnostics.h"

#include <cstdarg>
#include <cstring>

#include "pdf/object/pdfDocument.h"
#include "pdf/object/pdfParser.h"

namespace {

void AddMessage(const pdfDocument& doc, const pdfParser* source, const char* format, std::va_list args)
    IV_PRINTF(3, 0);

void AddMessage(const pdfDocument& doc, const pdfParser* source, const char* format, std::va_list args) {
    std::string text = ivVFormat(format, args);
    std::uint32_t pos = 0;
    if (source && source->GetPosition(pos))
        text += ivFormat(" Stream Position:%d, 0x%xh", static_cast<int>(pos), pos);
    doc.Control()->AddMessage(std::move(text));
}

}  // namespace

void Report(const pdfDocument& doc, const char* format, ...) {
    if (!doc.Control()) return;
    std::va_list args;
    va_start(args, format);
    AddMessage(doc, nullptr, format, args);
    va_end(args);
}

void ReportAt(const pdfDocument& doc, const pdfParser& source, const char* format, ...) {
    if (!doc.Control()) return;
    std::va_list args;
    va_start(args, format);
    AddMessage(doc, &source, format, args);
    va_end(args);
}

void ReportExtra(const pdfDocument& doc, const char* format, ...) {
    if (!doc.Control() || !doc.ExtraChecks()) return;
    std::va_list args;
    va_start(args, format);
    AddMessage(doc, nullptr, format, args);
    va_end(args);
}

void ReportExtraAt(const pdfDocument& doc, const pdfParser& source, const char* format, ...) {
    if (!doc.Control() || !doc.ExtraChecks()) return;
    std::va_list args;
    va_start(args, format);
    AddMessage(doc, &source, format, args);
    va_end(args);
}

std::string ScopeText(const char* text, const std::string& id) {
    if (!text) return id;
    if (!std::strstr(text, "%s")) return std::string(text) + " " + id;
    return ivFormatOne(text, id);
}

std::string ivObjIDScope::GetText() const {
    return ScopeText(m_text, ivFormat("%d %d R", static_cast<int>(m_num), static_cast<int>(m_gen)));
}

bool ivObjIDScope::NamedObject(std::uint32_t& num, std::uint32_t& gen) const {
    num = m_num;
    gen = m_gen;
    return true;
}

bool ivObjScope::NamedObject(std::uint32_t& num, std::uint32_t& gen) const {
    const XrefEntry* entry = m_record ? m_doc.EntryOfRecord(m_record) : nullptr;
    if (!entry) return false;
    num = entry->num;
    gen = entry->gen;
    return true;
}

std::string ivObjScope::GetText() const {
    const XrefEntry* entry = m_record ? m_doc.EntryOfRecord(m_record) : nullptr;
    std::string id = entry ? ivFormat("%d %d R", static_cast<int>(entry->num), entry->gen) : "Direct Object";
    std::string text = ScopeText(m_text, id);
    if (const pdfStream* s = AsStream(m_record))
        text += ivFormat(". Stream data start: %d (0x%Xh)", static_cast<int>(s->dataPos), s->dataPos);
    return text;
}
