#include "pdf/analysis/pdfRoles.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace {

// Stored order matters: lookups take the first row with a code, and code 5 stands twice.
constexpr pdfRoleInfo kRoles[] = {
    {22, nullptr, "Glyph Widths"},
    {21, nullptr, "Glyph Program"},
    {20, nullptr, "Font Widths"},
    {23, "CIDSysInfo", "CID System Info"},
    {25, nullptr, "Embedded File"},
    {26, "stream3D", "3D"},
    {47, nullptr, "List of Annotations"},
    {9, nullptr, "CMYK Color Space"},
    {13, nullptr, "Palette"},
    {14, nullptr, "Object Stream"},
    {12, "form", "Form"},
    {16, "Pattern", "Pattern"},
    {5, "operators", "Page Stream"},
    {19, "tounicode", "ToUnicode CMap"},
    {29, "catalog", "Document Catalog"},
    {4, "font", "Font"},
    {3, "fontDescriptor", "Font Descriptor"},
    {6, "page", "Page Dictionary"},
    {5, "operators", nullptr},
    {11, "image", "Image"},
    {30, "stream", nullptr},
    {15, "metadata", "Metadata"},
    {17, "resources", "Resources"},
    {27, "ExtGState", "Graphics State"},
    {28, "Shading", "Shading Dictionary"},
    {18, "DocInfo", "Document Information"},
    {31, "Outlines", "Outline Dictionary"},
    {33, "OutlineItem", "Outline Item Dictionary"},
    {34, "StreamAction", "Action Dictionary"},
    {35, "Annotations", "Annotations"},
    {37, "Annotations.Highlight", "Annotations"},
    {36, "Annotations.Link", "Annotations"},
    {38, "Annotations.FreeText", "Annotations"},
    {39, "Annotations.Widget", "Annotations"},
    {40, "Annotations.3D", "Annotations"},
    {41, "x3d.Activation", "3D activation dictionary"},
    {42, "x3d.view", "Default initial view"},
    {24, "EncryptionDictionary", "Encryption Dictionary"},
    {46, "Signature", "Signture"},
    {32, "InteractiveForm", "Interactive Form"},
    {43, "StructureRoot", "Structure Hierarchy"},
    {44, "StructureItem", "Structure Element Dictionary"},
    {45, "PageTree", "Page Tree"},
    {48, "BorderStyle", nullptr},
    {7, "ColorSpace", "ColorSpace"},
    {8, "ICCColorSpace", "ICCBased Color Space"},
    {10, "palette", "Indexed Color Space"},
    {49, "StreamColorProfile", "ICC Color Profile"},
    {50, "Function", "Function"},
    {2, "FontFile", "FontFile"},
    {51, "Linearization", "Linearization Parameter Dictionary"},
    {52, "HintStream", "Hint Stream"},
    {1, "XREF", "XREF Stream"},
};
static_assert(std::size(kRoles) == 53);

const pdfRoleInfo* FirstRow(std::uint8_t code) {
    auto it = std::find_if(std::begin(kRoles), std::end(kRoles),
                           [code](const pdfRoleInfo& r) { return r.code == code; });
    return it != std::end(kRoles) ? &*it : nullptr;
}

bool SameIgnoringCase(std::string_view a, const char* b) {
    std::string_view bv(b);
    return a.size() == bv.size() && std::equal(a.begin(), a.end(), bv.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

}  // namespace

std::span<const pdfRoleInfo> RoleTable() { return kRoles; }

const char* RoleTitle(std::uint8_t code) {
    const pdfRoleInfo* row = FirstRow(code);
    return row ? row->title : nullptr;
}

const char* RoleSectionName(std::uint8_t code) {
    const pdfRoleInfo* row = FirstRow(code);
    return row ? row->section : nullptr;
}

std::uint8_t RoleFromSectionName(std::string_view name) {
    for (const pdfRoleInfo& r : kRoles)
        if (r.section && SameIgnoringCase(name, r.section)) return r.code;
    return 0;
}
