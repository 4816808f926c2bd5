#pragma once
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

class ivImage2d;
class ivPdf;
struct XrefEntry;
struct pdfObject;

// Figures and texts of the viewers that are plain arithmetic: the matrix decomposition of the
// object viewer's help, the hex viewer's layout, hit test and tooltip, and the image
// viewer's zoom commands.

// "\n===...\nScaling X: %g,  Y:%g", then "\nRotation: %g°" or "\nSkew X: %g°,  Y:%g°", then
// "\nTranslation X: %g,  Y:%g" for the matrix [a b c d e f]; empty unless there are exactly six
// numbers.
std::string MatrixDecomposition(std::span<const double> m);

// The hex viewer's columns for a data size, a digit width and a window width.
struct ivHexLayout {
    int offsetDigits = 4;  // upper-case hexadecimal digits of an offset, at least 4
    int hexStart = 0;      // x of the hex column
    int charStart = 0;     // x of the character column
    int bytesPerRow = 32;  // 32, 16 or 8
    int digitWidth = 0;
    int CellWidth() const { return 2 * (digitWidth + 2); }
    int CharWidth() const { return digitWidth + 2; }
    static constexpr int kGroupGap = 4;
    // The column of the byte under x: none left of the hex column, in a group gap or past
    // the row.
    std::optional<int> ColumnAt(int x) const;
};
ivHexLayout HexLayout(std::uint64_t dataSize, int digitWidth, int windowWidth);
// "BYTE: 0x%X, %d, '%c'" with the WORD and LONG lines when that many bytes follow, then
// "\nPosition: 0x%X, %d " — or only "Position: 0x%X, %d " with the row's start over no byte.
std::string HexTooltip(std::span<const std::uint8_t> from, std::uint64_t offset, bool overByte);

// The zoom a "zoom.*" command gives from the current one; none for another command.
// "400" gives 3.0, as "300" does.
std::optional<float> ZoomFor(std::string_view command, float current);
// The "zoom.%d" command that stands checked for a zoom factor.
std::string ZoomCommandOf(float zoom);

// The image viewer's information text: "%d x %d pixels, %s" with the bitmap's format
// ("24-bit RGB", "1-bit indexed", …) and, when the stream is filtered, its last filter
// ("24-bit RGB (DCTDecode)").
std::string ImageInfoText(const ivImage2d& image, const pdfObject* stream);

// How a view shows a stream's data below the object's text.
enum class ivViewMode : int {
    None = 0,
    Object = 1,        // the object viewer on the object
    Content = 2,       // the decoded stream as a content stream
    ObjectStream = 3,  // the objects of an object stream
    Image = 4,         // the decoded image
    Hex = 5,           // the decoded data as a hex dump
    Raw = 6,           // the entry's bytes as stored in the file, as a hex dump
};
// The mode a stream opens in, by its entry's role: contents for page streams, forms,
// patterns, ToUnicode maps and glyph programs, the image for images, the listing for object
// streams, a hex dump for everything else.
ivViewMode InitialViewMode(std::uint8_t role);
// "View.HEX", "View.IMG", … for a mode that has a command; empty for None.
std::string_view ViewModeCommand(ivViewMode mode);
// The name a mode goes by in the mode drop-down: "HEX", "Image", "Stream Of Objects", …
std::string_view ViewModeText(ivViewMode mode);
// The mode a command names: "View.HEX", "view.HEX" or "View.mode.HEX" (any case), and
// "view.OBJ"; none for another command.
std::optional<ivViewMode> ViewModeOfCommand(std::string_view command);

// "Stream Length: %d" with the decoded length.
std::string StreamLengthText(std::uint64_t length);
// Where the raw bytes come from: "%u bytes at offset %u (0x%X) in the file", or
// "%u bytes, object %u of object stream %u 0 R" for a compressed object.
std::string RawBytesText(const XrefEntry& entry, std::uint64_t size);

// The caption of a view's tab: "%d %d R" when the object has an entry, else "View".
std::string ViewCaption(const ivPdf& doc, const pdfObject* object);
// The hint of a view's tab: the entry's hint when there is one and it is not empty, else the
// display name of the object's type.
std::string ViewTabHint(ivPdf& doc, const pdfObject* object);
