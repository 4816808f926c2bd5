#include "pdf/analysis/ivViewerTexts.h"

#include <cctype>
#include <cmath>

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/ivXrefItems.h"
#include "pdf/object/pdfObject.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfRoleCodes.h"
#include "platform/ivFormat.h"
#include "platform/ivImage2d.h"

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kDegrees = 180 / kPi;

bool EqualsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

}  // namespace

std::string MatrixDecomposition(std::span<const double> m) {
    if (m.size() != 6) return {};
    const double a = m[0], b = m[1], c = m[2], d = m[3], e = m[4], f = m[5];
    const double thetaX = std::atan2(b, a), thetaY = std::atan2(-c, d);
    std::string text = "\n===========================";
    text += ivFormat("\nScaling X: %g,  Y:%g", std::sqrt(a * a + b * b), std::sqrt(c * c + d * d));
    if (std::fabs(thetaY - thetaX) < 1e-6 || std::fabs(thetaX + thetaY) < 1e-6) {
        double r = thetaX * kDegrees;
        if (a < 0 && d >= 0) r += r <= 0 ? 180 : -180;
        text += ivFormat("\nRotation: %g\xC2\xB0", r);
    } else {
        // Deliberately the y angle first.
        text += ivFormat("\nSkew X: %g\xC2\xB0,  Y:%g\xC2\xB0", thetaY * kDegrees, thetaX * kDegrees);
    }
    return text + ivFormat("\nTranslation X: %g,  Y:%g", e, f);
}

ivHexLayout HexLayout(std::uint64_t dataSize, int digitWidth, int windowWidth) {
    ivHexLayout l;
    l.digitWidth = digitWidth;
    l.offsetDigits =
        std::max(4, static_cast<int>(ivFormat("%llX", static_cast<unsigned long long>(dataSize)).size()));
    l.hexStart = l.offsetDigits * digitWidth + 10;
    for (l.bytesPerRow = 32;; l.bytesPerRow /= 2) {
        l.charStart = l.hexStart + l.bytesPerRow * l.CellWidth() + 4 * (l.bytesPerRow / 8 - 1) + 10;
        if (l.bytesPerRow == 8 || l.charStart + l.bytesPerRow * l.CharWidth() < windowWidth) break;
    }
    return l;
}

std::optional<int> ivHexLayout::ColumnAt(int x) const {
    if (x < hexStart) return std::nullopt;
    int column = -1;
    if (x >= charStart) {
        column = (x - charStart) / CharWidth();
    } else {
        const int groupWidth = 8 * CellWidth() + kGroupGap;
        const int group = (x - hexStart) / groupWidth, within = (x - hexStart) % groupWidth;
        if (within >= 8 * CellWidth()) return std::nullopt;  // in the gap
        column = group * 8 + within / CellWidth();
    }
    if (column >= bytesPerRow) return std::nullopt;
    return column;
}

std::string HexTooltip(std::span<const std::uint8_t> from, std::uint64_t offset, bool overByte) {
    const auto pos = static_cast<unsigned>(offset);
    const std::string position = ivFormat("Position: 0x%X, %u ", pos, pos);
    if (!overByte || from.empty()) return position;
    const std::uint8_t b = from[0];
    std::string text = ivFormat("BYTE: 0x%X, %d, '%c'", b, b, b < 32 ? ' ' : static_cast<char>(b));
    if (from.size() >= 2) {
        const unsigned word = from[0] | unsigned(from[1]) << 8;
        text += ivFormat("\nWORD: 0x%X, %u", word, word);
    }
    if (from.size() >= 4) {
        const std::uint32_t dword = from[0] | std::uint32_t(from[1]) << 8 | std::uint32_t(from[2]) << 16 |
                                    std::uint32_t(from[3]) << 24;
        text += ivFormat("\nLONG: 0x%X, %d", dword, static_cast<int>(dword));
    }
    return text + "\n" + position;
}

std::optional<float> ZoomFor(std::string_view command, float current) {
    const std::size_t dot = command.find('.');
    if (dot == std::string_view::npos || !EqualsNoCase(command.substr(0, dot), "zoom")) return std::nullopt;
    const std::string_view sub = command.substr(dot + 1);
    if (EqualsNoCase(sub, "in")) return current * 1.25f;
    if (EqualsNoCase(sub, "out")) return current / 1.25f;
    const struct {
        std::string_view name;
        float zoom;
    } fixed[] = {{"25", 0.25f}, {"50", 0.5f},  {"75", 0.75f}, {"100", 1.0f},
                 {"150", 1.5f}, {"200", 2.0f}, {"300", 3.0f}, {"400", 3.0f}};  // deliberately 400 as 300
    for (const auto& f : fixed)
        if (sub == f.name) return f.zoom;
    return std::nullopt;
}

std::string ZoomCommandOf(float zoom) {
    return ivFormat("zoom.%d", static_cast<int>(std::lround(zoom * 100)));
}

namespace {

std::string BitmapFormatName(const ivImage2d& image) {
    switch (image.PixelFormat()) {
        case ivImage2d::kGray8:
            return "8-bit grey";
        case ivImage2d::kIndexed8:
            return "8-bit indexed";
        case ivImage2d::kBgr24:
            return "24-bit RGB";
        case ivImage2d::kCmyk32:
            return "32-bit CMYK";
        case ivImage2d::kIndexed1:
        case ivImage2d::kIndexed4:
            return ivFormat("%d-bit indexed", image.BitsPerPixel());
    }
    return "unknown format";
}

// The filter applied last to the stream's data: the last of an array, or the one name.
const pdfBytes* LastFilter(const pdfObject* stream) {
    const pdfStream* s = AsStream(stream);
    const pdfObject* filter = s ? DictGet(s->dict, "Filter") : nullptr;
    if (const pdfArray* a = AsArray(filter)) filter = a->count ? a->Items()[a->count - 1] : nullptr;
    return AsName(filter);
}

}  // namespace

std::string ImageInfoText(const ivImage2d& image, const pdfObject* stream) {
    std::string format = BitmapFormatName(image);
    if (const pdfBytes* filter = LastFilter(stream)) format += ivFormat(" (%s)", filter->Chars());
    return ivFormat("%u x %u pixels, %s", image.Width(), image.Height(), format.c_str());
}

ivViewMode InitialViewMode(std::uint8_t role) {
    switch (role) {
        case kRolePageStream:
        case kRoleForm:
        case kRolePattern:
        case kRoleToUnicode:
        case kRoleGlyphProgram:
            return ivViewMode::Content;
        case kRoleImage:
            return ivViewMode::Image;
        case kRoleObjectStream:
            return ivViewMode::ObjectStream;
        default:
            return ivViewMode::Hex;
    }
}

namespace {

struct ModeName {
    ivViewMode mode;
    std::string_view name;  // in the mode's command
    std::string_view text;  // in the mode drop-down
};
constexpr ModeName kModeNames[] = {{ivViewMode::Object, "OBJ", "Object"},
                                   {ivViewMode::Content, "Content", "Contents"},
                                   {ivViewMode::ObjectStream, "OBJSTREAM", "Stream Of Objects"},
                                   {ivViewMode::Image, "IMG", "Image"},
                                   {ivViewMode::Hex, "HEX", "HEX"},
                                   {ivViewMode::Raw, "RAW", "Raw bytes in file"}};
constexpr std::string_view kModeCommands[] = {"",         "view.OBJ", "View.Content", "View.OBJSTREAM",
                                              "View.IMG", "View.HEX", "View.RAW"};

bool StartsWithNoCase(std::string_view s, std::string_view prefix) {
    return s.size() >= prefix.size() && EqualsNoCase(s.substr(0, prefix.size()), prefix);
}

}  // namespace

std::string_view ViewModeCommand(ivViewMode mode) {
    return kModeCommands[static_cast<int>(mode)];
}

std::string_view ViewModeText(ivViewMode mode) {
    for (const ModeName& m : kModeNames)
        if (m.mode == mode) return m.text;
    return {};
}

std::optional<ivViewMode> ViewModeOfCommand(std::string_view command) {
    if (StartsWithNoCase(command, "View.mode."))
        command.remove_prefix(10);
    else if (StartsWithNoCase(command, "View."))
        command.remove_prefix(5);
    else
        return std::nullopt;
    for (const ModeName& m : kModeNames)
        if (EqualsNoCase(command, m.name)) return m.mode;
    return std::nullopt;
}

std::string StreamLengthText(std::uint64_t length) {
    return ivFormat("Stream Length: %llu", static_cast<unsigned long long>(length));
}

std::string RawBytesText(const XrefEntry& entry, std::uint64_t size) {
    const auto bytes = static_cast<unsigned long long>(size);
    if (entry.Compressed())
        return ivFormat("%llu bytes, object %u of object stream %u 0 R", bytes, entry.offset, entry.objStm);
    return ivFormat("%llu bytes at offset %u (0x%X) in the file", bytes, entry.offset, entry.offset);
}

std::string ViewCaption(const ivPdf& doc, const pdfObject* object) {
    const XrefEntry* entry = object ? FindEntryByRecord(doc, object) : nullptr;
    return entry ? ivFormat("%u %u R", entry->num, unsigned(entry->gen)) : std::string("View");
}

std::string ViewTabHint(ivPdf& doc, const pdfObject* object) {
    if (!object) return {};
    if (const XrefEntry* entry = FindEntryByRecord(doc, object)) {
        std::string hint = EntryItemHint(doc, *entry);
        if (!hint.empty()) return hint;
    }
    return TypeName(object->tag);
}
