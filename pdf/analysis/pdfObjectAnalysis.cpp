#include "pdf/analysis/pdfObjectAnalysis.h"

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/pdfResources.h"
#include "pdf/analysis/pdfRoleRegistry.h"
#include "pdf/object/pdfAccessors.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfRoleCodes.h"

namespace {

// MarkRole on a key's value, when the key is there.
void MarkKey(ivPdf& doc, const pdfObject* dict, const char* key, std::uint8_t role, unsigned flags) {
    if (const pdfObject* value = DictGet(dict, key)) MarkRole(doc, value, role, flags);
}

void AnalyseCatalog(ivPdf& doc, const pdfObject* catalog) {
    const pdfObject* outlines = Deref(doc, DictGet(catalog, "Outlines"));
    if (AsDict(outlines) && SetRole(doc, outlines, nullptr, kRoleOutlines) == kOk)
        WalkOutlines(doc, outlines, 0);
    const pdfObject* form = Deref(doc, DictGet(catalog, "AcroForm"));
    if (AsDict(form) && SetRole(doc, form, nullptr, kRoleInteractiveForm) == kOk)
        AnalyseResourceHolder(doc, form);
}

ivStatus AnalyseStream(ivPdf& doc, XrefEntry* entry, const pdfStream* stream) {
    const pdfObject* dict = stream->dict;
    if (!dict) return kOk;
    if (const pdfObject* type = DictGet(dict, "Type")) {
        if (!AsName(type)) {
            Report(doc, "Type must be a name");
            return kFail;
        }
        if (TextEquals(type, "XObject")) {
            AnalyseXObject(doc, entry, dict);
        } else if (TextEquals(type, "Pattern")) {
            if (entry->role == 0) {
                entry->role = kRolePattern;
                AnalyseResourceHolder(doc, dict);
            } else if (entry->role != kRolePattern) {
                Report(doc, "%d %d R Used as something else already", static_cast<int>(entry->num),
                       entry->gen);
            }
        }
    }
    if (entry->role == 0 && TextEquals(DictGet(dict, "Subtype"), "Image")) entry->role = kRoleImage;
    return kOk;
}

void AnalyseFont(ivPdf& doc, XrefEntry* entry, const pdfObject* font) {
    SetRole(doc, font, entry, kRoleFont);
    MarkKey(doc, font, "Widths", kRoleFontWidths, kMarkArrayItself);
    if (TextEquals(DictGet(font, "Subtype"), "Type3"))
        MarkKey(doc, font, "CharProcs", kRoleGlyphProgram, kMarkDicts);
    MarkKey(doc, font, "W", kRoleGlyphWidths, kMarkArrayItself);
    MarkKey(doc, font, "CIDSystemInfo", kRoleCidSystemInfo, kMarkIndirectDict);
    MarkKey(doc, font, "ToUnicode", kRoleToUnicode, 0);
}

ivStatus AnalyseDictionary(ivPdf& doc, XrefEntry* entry, const pdfObject* dict) {
    const pdfObject* type = DictGet(dict, "Type");
    if (!type) return kOk;
    if (!AsName(type)) {
        Report(doc, "Type must be a name");
        return kFail;
    }
    if (TextEquals(type, "Annot")) {
        if (SetRole(doc, dict, entry, kRoleAnnotation) == kOk) AnalyseAnnotation(doc, dict);
    } else if (TextEquals(type, "Sig")) {
        SetRole(doc, dict, entry, kRoleSignature);
    }
    if (TextEquals(type, "Pages")) {
        SetRole(doc, dict, entry, kRolePageTree);
    } else if (TextEquals(type, "Page")) {
        SetRole(doc, dict, entry, kRolePage);
        AnalyseResourceHolder(doc, dict);
    } else if (TextEquals(type, "StructTreeRoot")) {
        if (SetRole(doc, dict, entry, kRoleStructureRoot) == kOk)
            MarkKey(doc, dict, "K", kRoleStructureItem,
                    kMarkArrays | kMarkDicts | kMarkIndirectDict | kMarkDirectAccepted);
    } else if (TextEquals(type, "Outlines")) {
        if (SetRole(doc, dict, entry, kRoleOutlines) == kOk) WalkOutlines(doc, dict, 0);
    } else if (TextEquals(type, "Font")) {
        AnalyseFont(doc, entry, dict);
    } else if (TextEquals(type, "FontDescriptor")) {
        SetRole(doc, dict, entry, kRoleFontDescriptor);
        for (const char* key : {"FontFile2", "FontFile", "FontFile3"})
            MarkKey(doc, dict, key, kRoleFontFile, 0);
    }
    return kOk;
}

}  // namespace

ivStatus AnalyseObject(ivPdf& doc, XrefEntry* entry, const pdfObject* object) {
    if (entry->role == kRoleCatalog && AsDict(object)) {
        AnalyseCatalog(doc, object);
        return kOk;
    }
    if (const pdfStream* stream = AsStream(object)) return AnalyseStream(doc, entry, stream);
    if (AsDict(object)) return AnalyseDictionary(doc, entry, object);
    return kOk;
}
