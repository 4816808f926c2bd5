#pragma once
#include <functional>
#include <string>

#include "pdf/object/pdfObject.h"
#include "platform/ivFormat.h"
#include "platform/ivIOControl.h"
#include "platform/ivScope.h"

class pdfDocument;
class pdfParser;

// The message sink of the system: an I/O control that tells its owner (the main window)
// whenever the set of messages changes.
class ivDPFControl : public ivIOControl {
public:
    using ChangeHandler = std::function<void(ivDPFControl* withMessages)>;
    void SetChangeHandler(ChangeHandler handler) { m_onChange = std::move(handler); }

protected:
    void OnMessagesChanged(bool hasMessages) override {
        if (m_onChange) m_onChange(hasMessages ? this : nullptr);
    }

private:
    ChangeHandler m_onChange;
};

// Reports a message (cut at 260 characters) under the scopes open now.
void Report(const pdfDocument& doc, const char* format, ...) IV_PRINTF(2, 3);
// The same, with " Stream Position:%d, 0x%xh" appended when the source can tell its position.
void ReportAt(const pdfDocument& doc, const pdfParser& source, const char* format, ...) IV_PRINTF(3, 4);

// The same two, for a check of our own: reported only when the document's extra checks are on.
void ReportExtra(const pdfDocument& doc, const char* format, ...) IV_PRINTF(2, 3);
void ReportExtraAt(const pdfDocument& doc, const pdfParser& source, const char* format, ...) IV_PRINTF(3, 4);

// Names an object by identifier: "Accessing Object 12 0 R", or the identifier formatted into
// a text holding "%s".
class ivObjIDScope final : public ivScope {
public:
    ivObjIDScope(ivIOControl* control, std::uint32_t num, std::uint32_t gen, const char* text)
        : ivScope(control), m_num(num), m_gen(gen), m_text(text) {}
    std::string GetText() const override;
    bool NamedObject(std::uint32_t& num, std::uint32_t& gen) const override;

private:
    std::uint32_t m_num, m_gen;
    const char* m_text;  // a literal, or null
};

// Names an object by its record: the identifier of its entry, or "Direct Object"; a stream
// adds where its data starts.
class ivObjScope final : public ivScope {
public:
    ivObjScope(ivIOControl* control, const pdfObject* record, const pdfDocument& doc, const char* text)
        : ivScope(control), m_record(record), m_doc(doc), m_text(text) {}
    std::string GetText() const override;
    bool NamedObject(std::uint32_t& num, std::uint32_t& gen) const override;

private:
    const pdfObject* m_record;
    const pdfDocument& m_doc;
    const char* m_text;
};

// Joins a scope text and an identifier as the scopes do: "text id", or id into "%s".
std::string ScopeText(const char* text, const std::string& id);
