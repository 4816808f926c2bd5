#include "pdf/analysis/pdfLinearization.h"

#include <cmath>
#include <optional>

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/pdfRoleRegistry.h"
#include "pdf/object/pdfAccessors.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfRoleCodes.h"

namespace {

// What a parameter that could not be read compares as (-1 as an unsigned 32-bit number): no
// file length or page count a reader can hold equals it.
constexpr std::uint32_t kUnread = 0xFFFFFFFFu;

// The parameter dictionary is the first object in the file, and a linearized file's
// startxref names the first-page section, which lists it. A file with a single section
// may start with such a dictionary but has been rewritten since, so it does not count.
XrefEntry* ParameterEntry(ivPdf& doc) {
    if (doc.Sections().size() < 2) return nullptr;
    XrefEntry* first = nullptr;
    for (XrefEntry* e : doc.NewestSection()->entries) {
        if (e->Compressed() || (e->flags & kXrefNotFound)) continue;
        if (!first || e->offset < first->offset) first = e;  // the earlier entry keeps a tie
    }
    return first;
}

bool IsParameterDictionary(ivPdf& doc, const pdfObject* object) {
    const pdfObject* version = AsDict(object) ? DictGet(object, "Linearized") : nullptr;
    double value = 0;
    return version && Succeeded(GetNumber(doc, version, &value));
}

// A required integer parameter; nothing when it is missing or not a number (both reported).
std::optional<std::uint32_t> ReadParameter(ivPdf& doc, const pdfObject* dict, const char* key) {
    const pdfObject* value = DictGet(dict, key);
    if (!value) {
        Report(doc, "%s - required parameter is not found", key);
        return std::nullopt;
    }
    std::uint32_t n = 0;
    if (Failed(GetInteger(doc, value, &n))) return std::nullopt;
    return n;
}

// O names the first page's object. Pages reached as direct dictionaries carry no object
// number (their identifier is 0 0) and can never be the one O names.
void CheckFirstPage(ivPdf& doc, std::uint32_t objectNumber) {
    const std::vector<pdfPage*>& pages = doc.Pages();
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const ObjId id = pages[i]->Id();
        if (id.num == 0 || id.num != objectNumber) continue;
        if (i != 0)
            Report(doc,
                   "O - refers to %d page. (Not an error, usually it should be first page's page object)",
                   static_cast<int>(i));
        const XrefEntry* entry = doc.LookupEntry(id);
        if (entry && entry->Compressed()) Report(doc, "First page can't be inside of stream object");
        return;
    }
    Report(doc, "O - is not the page object");
}

// H is [offset length] or [offset length offset length]; only the primary hint stream's
// offset is followed. Its contents are not checked.
void CheckHintStream(ivPdf& doc, const pdfObject* h) {
    const pdfArray* array = AsArray(Deref(doc, h));
    if (!array) {
        Report(doc, "H - must be an array");
        return;
    }
    if (array->count != 2 && array->count != 4) {
        Report(doc, "H - must be an array of two or four integers");
        return;
    }
    double offset = 0;
    if (Failed(GetNumber(doc, array->Items()[0], &offset))) return;
    offset = std::round(offset);
    XrefEntry* hint = nullptr;
    if (offset >= 0 && offset <= 4294967295.0)
        hint = FindEntryByOffset(doc, static_cast<std::uint32_t>(offset));
    if (!hint) {
        Report(doc, "Hint Stream is not found");
        return;
    }
    SetRole(doc, nullptr, hint, kRoleHintStream);
}

}  // namespace

ivStatus CheckLinearization(ivPdf& doc) {
    XrefEntry* entry = ParameterEntry(doc);
    const pdfObject* dict = entry ? LoadObject(doc, entry) : nullptr;
    if (!IsParameterDictionary(doc, dict)) return kRemark;

    ivObjIDScope scope(doc.Control(), entry->num, entry->gen,
                       "Analize linearization parameter dictionary %s");
    SetRole(doc, dict, entry, kRoleLinearization);
    const std::optional<std::uint32_t> length = ReadParameter(doc, dict, "L");
    if (length.value_or(kUnread) != doc.FileSize()) Report(doc, "L - does not match file length");
    const std::optional<std::uint32_t> firstPage = ReadParameter(doc, dict, "O");
    ReadParameter(doc, dict, "E");  // read for its messages; the end of the first page is not compared
    const std::optional<std::uint32_t> pageCount = ReadParameter(doc, dict, "N");
    const pdfObject* hints = DictGet(dict, "H");
    if (!hints) Report(doc, "%s - required parameter is not found", "H");

    if (firstPage) CheckFirstPage(doc, *firstPage);
    if (pageCount.value_or(kUnread) != doc.Pages().size()) Report(doc, "N - does not match number of pages");
    if (hints) CheckHintStream(doc, hints);
    return kOk;
}
