#include "pdf/analysis/ivXrefFilter.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/ivXrefItems.h"
#include "pdf/analysis/pdfRoles.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfObjectAccess.h"

namespace {

constexpr std::size_t kLongestText = 259;

// White space and the lexer's delimiters split the search text.
bool Separates(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' ||
           std::string_view("\"#(),/;<=>[]{}").find(c) != std::string_view::npos;
}

std::vector<std::string_view> Tokens(std::string_view text) {
    std::vector<std::string_view> out;
    std::size_t i = 0;
    while (i < text.size()) {
        while (i < text.size() && Separates(text[i])) ++i;
        std::size_t end = i;
        while (end < text.size() && !Separates(text[end])) ++end;
        if (end > i) out.push_back(text.substr(i, end - i));
        i = end;
    }
    return out;
}

bool AllDigits(std::string_view s) {
    return !s.empty() && std::all_of(s.begin(), s.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
    return UpperAscii(a) == UpperAscii(b);
}

std::uint32_t ToNumber(std::string_view digits) {
    std::uint64_t v = 0;
    for (char c : digits) v = std::min<std::uint64_t>(v * 10 + std::uint64_t(c - '0'), 0xFFFFFFFFull);
    return static_cast<std::uint32_t>(v);
}

}  // namespace

std::string UpperAscii(std::string_view text) {
    std::string out(text);
    for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return out;
}

ivXrefFilter ivXrefFilter::Parse(ivPdf& doc, std::string_view text) {
    ivXrefFilter f;
    Mode keyword = Mode::None;
    int numbers = 0;
    for (std::string_view token : Tokens(text)) {
        if (EqualsNoCase(token, "from")) {
            keyword = Mode::From;
        } else if (EqualsNoCase(token, "to")) {
            keyword = Mode::To;
        } else if (AllDigits(token)) {
            if (numbers == 0) {
                f.m_num = ToNumber(token);
            } else if (numbers == 1) {
                f.m_gen = static_cast<std::uint16_t>(ToNumber(token));
                f.m_anyGen = false;
            }
            ++numbers;
        }
    }
    if (keyword != Mode::None) {
        f.m_mode = numbers > 0 ? keyword : Mode::None;
    } else if (numbers >= 2 || (numbers == 1 && f.m_num > 0)) {
        f.m_mode = Mode::Object;
    } else if (!text.empty()) {
        f.m_mode = Mode::Text;
        f.m_upper = UpperAscii(text.substr(0, kLongestText));
    }
    if (f.m_mode == Mode::To) {
        // The newest entry of that object; with no generation given, its lowest one.
        for (const auto& section : doc.Sections()) {
            if (f.m_target) break;
            for (XrefEntry* e : section->entries)
                if (e->num == f.m_num && (f.m_anyGen || e->gen == f.m_gen)) {
                    f.m_target = e;
                    break;
                }
        }
        if (!f.m_target) f.m_mode = Mode::None;
    }
    return f;
}

bool ivXrefFilter::TextMatches(std::string_view itemText) const {
    return m_mode == Mode::Text && UpperAscii(itemText).find(m_upper) != std::string::npos;
}

bool ivXrefFilter::Matches(ivPdf& doc, XrefEntry& entry) const {
    switch (m_mode) {
        case Mode::Object:
            return entry.num == m_num && (m_anyGen || entry.gen == m_gen);
        case Mode::To: {
            const auto users = doc.ReferrerOrdinals(m_target);
            return std::find(users.begin(), users.end(), entry.ordinal) != users.end();
        }
        case Mode::From:
            for (std::uint32_t user : doc.ReferrerOrdinals(&entry)) {
                const XrefEntry* u = doc.AllEntries()[user];
                if (u->num == m_num && (m_anyGen || u->gen == m_gen)) return true;
            }
            return false;
        case Mode::Text: {
            if (const char* role = RoleTitle(entry.role); role && TextMatches(role)) return true;
            const pdfObject* object = LoadObject(doc, &entry);
            if (const pdfStream* s = AsStream(object); s && !AsDict(s->dict)) {
                Report(doc, "Not a dictionary");
                return false;
            }
            const std::string type = TypeNameOf(object);
            return !type.empty() && TextMatches(type);
        }
        case Mode::None:
            return false;
    }
    return false;
}

namespace {

// The entries of `section` numbered `num` (and `gen`), found by their order.
void NumberedRows(const XrefSection& section, const ivXrefFilter& f, std::vector<std::uint32_t>& rows) {
    const auto& entries = section.entries;
    auto it = std::lower_bound(entries.begin(), entries.end(), f.Number(),
                               [](const XrefEntry* e, std::uint32_t n) { return e->num < n; });
    for (; it != entries.end() && (*it)->num == f.Number(); ++it)
        if (f.AnyGeneration() || (*it)->gen == f.Generation())
            rows.push_back(static_cast<std::uint32_t>(it - entries.begin()));
}

}  // namespace

ivXrefMatches FindMatches(ivPdf& doc, const ivXrefFilter& filter) {
    ivXrefMatches m;
    m.rows.resize(doc.Sections().size());
    // "to": the target's few users are marked once, then each entry is one look.
    std::vector<bool> users;
    if (filter.GetMode() == ivXrefFilter::Mode::To) {
        users.assign(doc.AllEntries().size(), false);
        for (std::uint32_t ordinal : doc.ReferrerOrdinals(filter.Target())) users[ordinal] = true;
    }
    for (std::size_t s = 0; s < doc.Sections().size(); ++s) {
        const XrefSection& section = *doc.Sections()[s];
        std::vector<std::uint32_t>& rows = m.rows[s];
        if (filter.GetMode() == ivXrefFilter::Mode::Object) {
            NumberedRows(section, filter, rows);  // entries are sorted by number
        } else {
            for (std::uint32_t i = 0; i < section.entries.size(); ++i) {
                XrefEntry& e = *section.entries[i];
                if (e.flags & kXrefNotFound) continue;
                const bool match = filter.GetMode() == ivXrefFilter::Mode::To
                                       ? e.ordinal < users.size() && users[e.ordinal]
                                       : filter.Matches(doc, e);
                if (match) rows.push_back(i);
            }
        }
        m.count += rows.size();
    }
    return m;
}
