#include "pdf/analysis/pdfRoleRegistry.h"

#include <algorithm>
#include <array>
#include <unordered_set>

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/pdfResources.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfRoleCodes.h"

namespace {

// One MarkRole call: the containers walked so far, so a value that holds itself through a
// reference is walked once.
// The containers one marking has walked. Nearly every marking meets a handful, so they are
// looked up in a short list first; only a long walk pays for a hash set.
class WalkedContainers {
public:
    // True when `container` was not walked before.
    bool Insert(const pdfObject* container) {
        if (m_many.empty()) {
            const auto end = m_few.begin() + static_cast<std::ptrdiff_t>(m_count);
            if (std::find(m_few.begin(), end, container) != end) return false;
            if (m_count < kFew) {
                m_few[m_count++] = container;
                return true;
            }
            m_many.insert(m_few.begin(), m_few.end());
        }
        return m_many.insert(container).second;
    }

private:
    static constexpr std::size_t kFew = 16;
    std::array<const pdfObject*, kFew> m_few{};
    std::size_t m_count = 0;
    std::unordered_set<const pdfObject*> m_many;
};

class RoleMarker {
public:
    RoleMarker(ivPdf& doc, std::uint8_t role) : m_doc(doc), m_role(role) {}
    ivStatus Mark(const pdfObject* value, unsigned flags);

private:
    ivStatus MarkChildren(const pdfObject* container, unsigned flags);
    ivStatus Assign(const pdfObject* value, XrefEntry* entry);

    ivPdf& m_doc;
    std::uint8_t m_role;
    WalkedContainers m_walked;
};

ivStatus RoleMarker::Mark(const pdfObject* value, unsigned flags) {
    if (!value) {
        Report(m_doc, "NULL Object passed");
        return kFail;
    }
    XrefEntry* entry = nullptr;
    if (const pdfRef* ref = AsRef(value)) {
        entry = FindEntry(m_doc, ref->Id());
        value = entry ? LoadObject(m_doc, entry) : nullptr;
    } else if (!(flags & kMarkTakenDirect)) {
        entry = FindEntryByRecord(m_doc, value);
        if (!entry && !(flags & kMarkDirectAccepted)) return kNotFound;
    }
    if (!value) return kOk;
    if (value->tag == kTagArray) {
        if (flags & kMarkArrayItself) {
            SetRole(m_doc, value, entry, m_role);
            return kOk;
        }
        if (!(flags & kMarkArrays)) {
            Report(m_doc, "Array is not allowed");
            return kFail;
        }
        return MarkChildren(value, flags);
    }
    bool dictItself = value->tag == kTagDictionary && (flags & kMarkIndirectDict) && entry;
    if (value->tag == kTagDictionary && !dictItself) {
        if (!(flags & kMarkDicts)) {
            Report(m_doc, "Dictionary is not allowed");
            return kFail;
        }
        return MarkChildren(value, flags);
    }
    if (value->tag == kTagStream || dictItself) return Assign(value, entry);
    return kOk;
}

ivStatus RoleMarker::MarkChildren(const pdfObject* container, unsigned flags) {
    if (!m_walked.Insert(container)) return kOk;
    AnalysisDepth depth(m_doc);
    if (!depth.Ok()) return kFail;
    const unsigned childFlags = flags & ~(kMarkDirectAccepted | kMarkTakenDirect);
    if (const pdfArray* a = AsArray(container)) {
        for (const pdfObject* item : a->Elements()) Mark(item, childFlags);
    } else if (const pdfDict* d = AsDict(container)) {
        for (const pdfPair& p : d->Entries()) Mark(p.value, childFlags);
    }
    return kOk;
}

ivStatus RoleMarker::Assign(const pdfObject* value, XrefEntry* entry) {
    if (!entry || SetRole(m_doc, value, entry, m_role) != kOk) return kOk;
    const pdfObject* dict = value;
    if (const pdfStream* s = AsStream(value)) dict = s->dict;
    if (m_role == kRolePattern) AnalyseResourceHolder(m_doc, dict);
    if (m_role == kRoleAnnotation) AnalyseAnnotation(m_doc, dict);
    return kOk;
}

}  // namespace

ivStatus SetRole(ivPdf& doc, const pdfObject* object, XrefEntry* entry, std::uint8_t role) {
    if (object && !entry) entry = FindEntryByRecord(doc, object);
    if (!entry) return kInvalidArg;
    if (entry->role == 0) {
        entry->role = role;
        return kOk;
    }
    if (entry->role == role) return kRemark;
    Report(doc, "%d %d R Used as something else already", static_cast<int>(entry->num), entry->gen);
    return kFail;
}

ivStatus MarkRole(ivPdf& doc, const pdfObject* value, std::uint8_t role, unsigned flags) {
    return RoleMarker(doc, role).Mark(value, flags);
}
