#include "pdf/analysis/ivXrefItems.h"

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/pdfPageTree.h"
#include "pdf/analysis/pdfRoles.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfRoleCodes.h"
#include "platform/ivFormat.h"

namespace {

constexpr std::size_t kReferrersShown = 6;

std::string IdText(std::uint32_t num, std::uint16_t gen) {
    return ivFormat("%u %u R", num, static_cast<unsigned>(gen));
}

const pdfObject* DictionaryOf(const pdfObject* object) {
    if (const pdfStream* s = AsStream(object)) return s->dict;
    return object;
}

// Whether `value` (a page's Contents, resolved) is or names the entry's object.
bool IsOrNames(const pdfObject* value, const XrefEntry& entry) {
    if (!value) return false;
    if (value == entry.object) return true;
    if (const pdfArray* a = AsArray(value))
        for (const pdfObject* item : a->Elements())
            if (const pdfRef* r = AsRef(item); r && r->Id() == entry.Id()) return true;
    return false;
}

// "Page: N" for the first page whose dictionary or content stream is the entry's object.
std::string PageLine(const ivPdf& doc, const XrefEntry& entry) {
    if (entry.role != kRolePageStream && entry.role != kRolePage) return {};
    const auto& pages = doc.Pages();
    for (std::size_t i = 0; i < pages.size(); ++i)
        if (entry.object && (pages[i]->Object() == entry.object || IsOrNames(pages[i]->contents, entry)))
            return ivFormat("\nPage: %zu", i + 1);
    return {};
}

}  // namespace

int SectionRevision(std::size_t index, std::size_t sections) {
    return sections < 2 ? 0 : static_cast<int>(sections - index);
}

std::string SectionItemText(const XrefSection& section, int revision) {
    const auto count = static_cast<unsigned>(section.EntryCount());
    return revision == 0 ? ivFormat("XREF [%u]", count) : ivFormat("XREF [%u], Revison: %d", count, revision);
}

std::string SectionItemHint(const XrefSection& section) {
    return ivFormat("XREF Table\n%s: %u (0x%Xh)", "Location", section.offset, section.offset) +
           ivFormat("Entries: %u", static_cast<unsigned>(section.EntryCount()));
}

std::string TypeNameOf(const pdfObject* object) {
    const pdfObject* type = DictGet(DictionaryOf(object), "Type");
    return AsName(type) ? ivTextToUtf8(std::string(static_cast<const pdfBytes*>(type)->View()))
                        : std::string();
}

std::string EntryItemText(ivPdf& doc, XrefEntry& entry) {
    std::string text = "[" + IdText(entry.num, entry.gen) + "] ";
    const pdfObject* object = LoadObject(doc, &entry);
    if (!entry.loaded) return text;
    if (const char* role = RoleTitle(entry.role)) text += role;
    if (entry.role == kRoleFont && AsDict(object)) {
        const pdfObject* subtype = DictGet(object, "Subtype");
        if (const pdfBytes* s = AsTextValued(subtype); s && subtype->tag != kTagHexString)
            text += " " + ivTextToUtf8(std::string(s->View()));
    }
    if (const std::string type = TypeNameOf(object); !type.empty()) text += "/" + type;
    return text;
}

int EntryItemIcon(ivPdf& doc, XrefEntry& entry) {
    const pdfObject* object = LoadObject(doc, &entry);
    return object ? IconOf(object) : kIconOther;
}

std::string EntryItemHint(ivPdf& doc, const XrefEntry& entry) {
    std::string hint = "[" + IdText(entry.num, entry.gen) + "]";
    if (const char* role = RoleTitle(entry.role)) hint += std::string(" ") + role;
    hint += "\n";
    if (entry.Compressed())
        hint += ivFormat("Location:%u 0 R#%u", entry.objStm, entry.offset);
    else if (entry.offset != 0)
        hint += ivFormat("%s: %u (0x%Xh)", "Location", entry.offset, entry.offset);
    hint += ivFormat("\nSize: %u bytes", entry.length == kUnknownLength ? 0u : entry.length);
    const std::vector<XrefEntry*> users = doc.Referrers(&entry);
    if (!users.empty()) {
        hint += users.size() == 1 ? std::string("\nUsed by:1 object")
                                  : ivFormat("\nUsed by:%zu objects", users.size());
        for (std::size_t i = 0; i < users.size() && i < kReferrersShown; ++i)
            hint += (i ? "," : " :") + IdText(users[i]->num, users[i]->gen);
        if (users.size() > kReferrersShown) hint += "..";
    }
    return hint + PageLine(doc, entry);
}
