#pragma once
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

class ivImage2d;
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
    int offsetDigits = 4;   // upper-case hexadecimal digits of an offset, at least 4
    int hexStart = 0;       // x of the hex column
    int charStart = 0;      // x of the character column
    int bytesPerRow = 32;   // 32, 16 or 8
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
