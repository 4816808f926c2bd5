#include "pdf/analysis/pdfResources.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/pdfRoleRegistry.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfRoleCodes.h"

// The walks below may meet the same object again, through shared resources or through a
// file that refers back to where it came from. Forms, patterns, annotations and actions end
// there because SetRole answers 1 (or reports a conflict) the second time; the outline walk
// keeps its own set of visited items. Every function that can be re-entered through the
// objects it reaches holds an AnalysisDepth, so a long chain is cut instead of the stack.

namespace {

// The bit that AnalyseColourSpace passes with the roles of what a colour space refers to.
// MarkRole gives it no meaning, so the value is marked as with no flags.
constexpr unsigned kMarkColourSpacePart = 0x40;

// Every indirect stream or dictionary inside a value, through direct or indirect containers.
constexpr unsigned kMarkEachIndirect =
    kMarkArrays | kMarkDicts | kMarkIndirectDict | kMarkDirectAccepted | kMarkTakenDirect;

bool IsName(const pdfObject* o, const char* text) {
    return AsName(o) && TextEquals(o, text);
}

// The object a reference leads to, with its entry; null (and no entry) for an unknown one.
const pdfObject* Fetch(ivPdf& doc, const pdfRef* ref, XrefEntry** entry) {
    *entry = FindEntry(doc, ref->Id());
    return *entry ? LoadObject(doc, *entry) : nullptr;
}

// The role of an indirect colour space array, marking what it refers to on the way.
std::uint8_t ColourSpaceArrayRole(ivPdf& doc, const pdfArray* array) {
    std::span<pdfObject* const> items = array->Elements();
    if (items.size() == 2 && IsName(items[0], "ICCBased")) {
        MarkRole(doc, items[1], kRoleIccProfile, kMarkIndirectDict);
        return kRoleIccColourSpace;
    }
    if (items.size() != 4) return kRoleColourSpace;
    // Deliberately the last reference of any kind: for an Indexed space with a direct lookup
    // string that is its base, which then takes the palette role.
    const pdfObject* lastRef = nullptr;
    bool indexed = false, cmyk = false;
    for (const pdfObject* item : items) {
        if (AsRef(item)) lastRef = item;
        indexed = indexed || IsName(item, "Indexed");
        cmyk = cmyk || IsName(item, "DeviceCMYK");
    }
    if (indexed) {
        if (lastRef) MarkRole(doc, lastRef, kRolePalette, kMarkColourSpacePart);
        return kRoleIndexedColourSpace;
    }
    if (cmyk) {
        if (lastRef) MarkRole(doc, lastRef, kRoleFunction, kMarkColourSpacePart);
        return kRoleCmykColourSpace;
    }
    return kRoleColourSpace;
}

// One walk from the outline root. An item met twice, or one that cannot be read, ends its
// level: the Next chain advances only through readable items, so without this a loop or a
// direct item would keep the walk going for ever.
class OutlineWalker {
public:
    // The root counts as visited, so an item that leads back to it ends there.
    OutlineWalker(ivPdf& doc, const pdfObject* root) : m_doc(doc) {
        if (XrefEntry* own = FindEntryByRecord(doc, root)) m_visited.insert(own);
    }
    ivStatus Walk(const pdfObject* dict);

private:
    ivPdf& m_doc;
    std::unordered_set<const XrefEntry*> m_visited;
};

ivStatus OutlineWalker::Walk(const pdfObject* dict) {
    AnalysisDepth depth(m_doc);
    if (!depth.Ok()) return kFail;
    const pdfObject* item = DictGet(dict, "First");
    while (item) {
        const pdfRef* ref = AsRef(item);
        if (!ref) {
            Report(m_doc, "Outline item can't be read");
            return kFail;
        }
        XrefEntry* entry = nullptr;
        const pdfObject* object = Fetch(m_doc, ref, &entry);
        if (!entry) {
            Report(m_doc, "Outline item %d %d R can't be read", static_cast<int>(ref->num), ref->gen);
            return kFail;
        }
        if (!m_visited.insert(entry).second) {
            Report(m_doc, "Outline item %d %d R was already visited", static_cast<int>(entry->num),
                   entry->gen);
            return kOk;
        }
        if (entry->role == 0) {
            entry->role = kRoleOutlineItem;
        } else if (entry->role != kRoleOutlineItem) {
            Report(m_doc, "%d %d R Used as something else already", static_cast<int>(entry->num), entry->gen);
        }
        if (!AsDict(object)) {
            Report(m_doc, "Outline item %d %d R can't be read", static_cast<int>(entry->num), entry->gen);
            return kFail;
        }
        Walk(object);
        item = DictGet(object, "Next");
        if (const pdfObject* action = DictGet(object, "A")) WalkActions(m_doc, action);
    }
    return kOk;
}

}  // namespace

ivStatus AnalyseResourceHolder(ivPdf& doc, const pdfObject* dict) {
    if (!AsDict(dict)) return kInvalidArg;
    AnalysisDepth depth(doc);
    if (!depth.Ok()) return kFail;
    if (const pdfObject* contents = DictGet(dict, "Contents")) {
        // A direct array has no entry of its own to look up; its streams are marked one by one.
        unsigned flags = kMarkArrays | kMarkDicts | kMarkIndirectDict;
        if (contents->tag == kTagArray) flags |= kMarkTakenDirect;
        MarkRole(doc, contents, kRolePageStream, flags);
    }
    if (const pdfObject* annots = DictGet(dict, "Annots")) {
        MarkRole(doc, annots, kRoleAnnotation, kMarkEachIndirect);
        // Only an indirect Annots array has an entry to take the role.
        MarkRole(doc, annots, kRoleAnnotationList, kMarkArrayItself | kMarkTakenDirect);
    }
    if (const pdfObject* resources = DictGet(dict, "Resources")) AnalyseResources(doc, resources);
    return kOk;
}

ivStatus AnalyseResources(ivPdf& doc, const pdfObject* value) {
    if (!value) return kInvalidArg;
    AnalysisDepth depth(doc);
    if (!depth.Ok()) return kFail;
    const pdfObject* resources = value;
    if (const pdfRef* ref = AsRef(value)) {
        XrefEntry* entry = nullptr;
        resources = Fetch(doc, ref, &entry);
        // Resources shared by many pages are walked each time; what they hold ends through
        // its own roles.
        SetRole(doc, resources, entry, kRoleResources);
    }
    const pdfDict* dict = AsDict(resources);
    if (!dict) {
        Report(doc, "Resource must be a dictionary object");
        return kFail;
    }
    for (const pdfPair& pair : dict->Entries()) {
        const pdfObject* key = pair.key;
        const pdfObject* v = pair.value;
        if (!AsName(key) || !v) continue;
        if (TextEquals(key, "Pattern")) {
            MarkRole(doc, v, kRolePattern, kMarkEachIndirect);
        } else if (TextEquals(key, "XObject")) {
            AnalyseXObjects(doc, v);
        } else if (TextEquals(key, "Shading")) {
            MarkRole(doc, v, kRoleShading, kMarkEachIndirect);
        } else if (TextEquals(key, "ExtGState")) {
            MarkRole(doc, v, kRoleGraphicsState, kMarkEachIndirect);
        } else if (TextEquals(key, "Properties")) {
            AnalysePropertyLists(doc, v);
        } else if (TextEquals(key, "ColorSpace")) {
            AnalyseColourSpace(doc, v);
        }
    }
    return kOk;
}

ivStatus AnalyseXObjects(ivPdf& doc, const pdfObject* dict) {
    const pdfDict* d = AsDict(dict);
    if (!d || d->count == 0) return kOk;
    AnalysisDepth depth(doc);
    if (!depth.Ok()) return kFail;
    for (const pdfPair& pair : d->Entries()) {
        const pdfRef* ref = AsRef(pair.value);
        if (!ref) continue;
        XrefEntry* entry = nullptr;
        const pdfStream* stream = AsStream(Fetch(doc, ref, &entry));
        if (stream && stream->dict) AnalyseXObject(doc, entry, stream->dict);
    }
    return kOk;
}

ivStatus AnalyseXObject(ivPdf& doc, XrefEntry* entry, const pdfObject* streamDict) {
    if (!streamDict) return kInvalidArg;
    if (!AsDict(streamDict)) {
        Report(doc, "Not a dictionary");
        return kFail;
    }
    // Checked before the role is set: a form cut off here keeps no role, so its own visit in
    // the analysis still follows it.
    AnalysisDepth depth(doc);
    if (!depth.Ok()) return kFail;
    const pdfObject* subtype = DictGet(streamDict, "Subtype");
    if (!AsTextValued(subtype)) return kOk;
    if (TextEquals(subtype, "Image")) {
        SetRole(doc, streamDict, entry, kRoleImage);
        if (const pdfObject* space = DictGet(streamDict, "ColorSpace")) AnalyseColourSpace(doc, space);
    } else if (TextEquals(subtype, "Form")) {
        if (!entry) entry = FindEntryByRecord(doc, streamDict);
        std::vector<const XrefEntry*>& path = doc.FormPath();
        if (SetRole(doc, streamDict, entry, kRoleForm) == kOk) {
            path.push_back(entry);
            AnalyseResourceHolder(doc, streamDict);
            path.pop_back();
        } else if (entry && std::find(path.begin(), path.end(), entry) != path.end()) {
            ReportExtra(doc, "Form %d %d R draws itself through its resources", static_cast<int>(entry->num),
                        entry->gen);
        }
    }
    return kOk;
}

ivStatus AnalysePropertyLists(ivPdf& doc, const pdfObject* value) {
    if (const pdfDict* d = AsDict(value)) {
        AnalysisDepth depth(doc);
        if (!depth.Ok()) return kFail;
        for (const pdfPair& pair : d->Entries())
            if (pair.value) AnalysePropertyLists(doc, pair.value);
    } else if (const pdfRef* ref = AsRef(value)) {
        if (const pdfObject* metadata = DictGet(ResolveRef(doc, ref->Id()), "Metadata"))
            MarkRole(doc, metadata, kRoleMetadata, 0);
    }
    return kOk;
}

ivStatus AnalyseColourSpace(ivPdf& doc, const pdfObject* value) {
    const pdfRef* ref = AsRef(value);
    XrefEntry* entry = ref ? FindEntry(doc, ref->Id()) : nullptr;
    if (!entry) {
        // A direct value has no entry to take the role, so this marks only a known reference.
        MarkRole(doc, value, kRoleColourSpace, kMarkArrayItself | kMarkIndirectDict);
        return kOk;
    }
    const pdfObject* object = LoadObject(doc, entry);
    std::uint8_t role = kRoleColourSpace;
    if (const pdfArray* array = AsArray(object)) role = ColourSpaceArrayRole(doc, array);
    SetRole(doc, object, entry, role);
    return kOk;
}

ivStatus AnalyseAnnotation(ivPdf& doc, const pdfObject* dict) {
    const pdfDict* d = AsDict(dict);
    if (!d) {
        Report(doc, "Anotations must be a dictionary object");
        return kFail;
    }
    const pdfObject* subtype = DictGet(dict, "Subtype");
    if (!AsName(subtype)) return kOk;
    if (TextEquals(subtype, "3D")) {
        for (const pdfPair& pair : d->Entries()) {
            if (!pair.value) continue;
            if (IsName(pair.key, "3DA"))
                MarkRole(doc, pair.value, kRole3DActivation, kMarkDicts | kMarkIndirectDict);
            if (IsName(pair.key, "3DV"))
                MarkRole(doc, pair.value, kRole3DView, kMarkDicts | kMarkIndirectDict);
        }
    } else if (TextEquals(subtype, "Link")) {
        if (const pdfObject* action = DictGet(dict, "A")) WalkActions(doc, action);
    }
    return kOk;
}

namespace {

// Each turn either passes an entry that takes the action role now (a second pass answers 1
// and ends the chain) or descends into a direct value, so the loop ends. `path` holds the
// entries passed from the first action on; meeting one of them again is a loop.
ivStatus WalkActionChain(ivPdf& doc, const pdfObject* value, std::vector<const XrefEntry*>& path) {
    AnalysisDepth depth(doc);
    if (!depth.Ok()) return kFail;
    const std::size_t pathSize = path.size();
    ivStatus result = kOk;
    for (;;) {
        const pdfObject* object = value;
        if (const pdfRef* ref = AsRef(value)) {
            XrefEntry* entry = nullptr;
            object = Fetch(doc, ref, &entry);
            if (!object) break;
            if (!entry) entry = FindEntryByRecord(doc, object);
            ivStatus st = SetRole(doc, object, entry, kRoleAction);
            if (st != kOk) {
                if (entry && std::find(path.begin(), path.end(), entry) != path.end())
                    ReportExtra(doc, "Action %d %d R is its own Next", static_cast<int>(entry->num),
                                entry->gen);
                result = st;
                break;
            }
            path.push_back(entry);
        }
        if (AsDict(object)) {
            value = DictGet(object, "Next");
            if (!value) break;
        } else {
            if (const pdfArray* array = AsArray(object))
                for (const pdfObject* item : array->Elements())
                    if (item) WalkActionChain(doc, item, path);
            break;
        }
    }
    path.resize(pathSize);
    return result;
}

}  // namespace

ivStatus WalkActions(ivPdf& doc, const pdfObject* value) {
    if (!value) return kInvalidArg;
    std::vector<const XrefEntry*> path;
    return WalkActionChain(doc, value, path);
}

ivStatus WalkOutlines(ivPdf& doc, const pdfObject* dict, int /*depth*/) {
    // The nesting is bounded by the walker's AnalysisDepth, not by the level given here.
    return OutlineWalker(doc, dict).Walk(dict);
}
