#include "pdf/analysis/ivViewerTexts.h"

#include <gtest/gtest.h>

#include <vector>

#include "pdf/analysis/ImageFixture.h"
#include "pdf/analysis/ivXrefItems.h"
#include "pdf/analysis/pdfImage.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfRoleCodes.h"
#include "platform/ivFormat.h"

namespace {

TEST(ViewerTexts, MatrixDecomposition) {
    const struct {
        std::vector<double> m;
        const char* text;
    } cases[] = {
        {{0, 1, -1, 0, 10, 20},
         "\n===========================\nScaling X: 1,  Y:1\nRotation: 90\xC2\xB0\nTranslation X: 10,  Y:20"},
        {{2, 0, 0, 3, 0, 0},
         "\n===========================\nScaling X: 2,  Y:3\nRotation: 0\xC2\xB0\nTranslation X: 0,  Y:0"},
        {{-1, 0, 0, -1, 5, 6},
         "\n===========================\nScaling X: 1,  Y:1\nRotation: 180\xC2\xB0\nTranslation X: 5,  Y:6"},
        // A mirror in x is no rotation: the two angles differ by 180.
        {{-1, 0, 0, 1, 0, 0},
         "\n===========================\nScaling X: 1,  Y:1\nSkew X: -0\xC2\xB0,  Y:180\xC2\xB0\nTranslation "
         "X: 0,  Y:0"},
        // A shear: the y angle first.
        {{1, 0, 1, 1, 0, 0},
         "\n===========================\nScaling X: 1,  Y:1.41421\nSkew X: -45\xC2\xB0,  "
         "Y:0\xC2\xB0\nTranslation X: 0,  Y:0"},
        {{1, 0, 0, 1, 0}, ""},  // five operands: nothing
    };
    for (const auto& c : cases) EXPECT_EQ(MatrixDecomposition(c.m), c.text);
}

TEST(ViewerTexts, HexLayout) {
    // Five offset digits for 0x12345 bytes; the hex column after them.
    const ivHexLayout wide = HexLayout(0x12345, 8, 2000);
    EXPECT_EQ(wide.offsetDigits, 5);
    EXPECT_EQ(wide.hexStart, 5 * 8 + 10);
    EXPECT_EQ(wide.bytesPerRow, 32);
    EXPECT_EQ(wide.charStart, wide.hexStart + 32 * 20 + 4 * 3 + 10);
    EXPECT_EQ(HexLayout(0, 8, 2000).offsetDigits, 4);
    EXPECT_EQ(HexLayout(100, 8, 700).bytesPerRow, 16);
    EXPECT_EQ(HexLayout(100, 8, 10).bytesPerRow, 8);  // never fewer than 8
    // Hit testing: cells, the gap between groups of eight, the character column.
    const ivHexLayout l = HexLayout(100, 8, 2000);
    EXPECT_EQ(l.ColumnAt(l.hexStart - 1), std::nullopt);
    EXPECT_EQ(l.ColumnAt(l.hexStart), 0);
    EXPECT_EQ(l.ColumnAt(l.hexStart + 8 * 20 - 1), 7);
    EXPECT_EQ(l.ColumnAt(l.hexStart + 8 * 20 + 1), std::nullopt);  // the gap
    EXPECT_EQ(l.ColumnAt(l.hexStart + 8 * 20 + 4), 8);
    EXPECT_EQ(l.ColumnAt(l.charStart + 3 * 10), 3);
    EXPECT_EQ(l.ColumnAt(l.charStart + 32 * 10), std::nullopt);
}

TEST(ViewerTexts, HexTooltip) {
    const std::uint8_t bytes[] = {0x41, 0x02, 0x03, 0x84};
    EXPECT_EQ(HexTooltip(bytes, 16, true),
              "BYTE: 0x41, 65, 'A'\nWORD: 0x241, 577\nLONG: 0x84030241, -2080177599\nPosition: 0x10, 16 ");
    EXPECT_EQ(HexTooltip(std::span(bytes + 3, 1), 19, true), "BYTE: 0x84, 132, '\x84'\nPosition: 0x13, 19 ");
    EXPECT_EQ(HexTooltip(std::span(bytes + 1, 1), 1, true), "BYTE: 0x2, 2, ' '\nPosition: 0x1, 1 ");
    EXPECT_EQ(HexTooltip({}, 0, false), "Position: 0x0, 0 ");
}

TEST(ViewerTexts, ZoomCommands) {
    EXPECT_FLOAT_EQ(*ZoomFor("zoom.in", 1.0f), 1.25f);
    EXPECT_FLOAT_EQ(*ZoomFor("Zoom.Out", 1.25f), 1.0f);
    EXPECT_FLOAT_EQ(*ZoomFor("zoom.25", 2.0f), 0.25f);
    EXPECT_FLOAT_EQ(*ZoomFor("zoom.400", 1.0f), 3.0f);
    EXPECT_EQ(ZoomFor("zoom.fit", 1.0f), std::nullopt);
    EXPECT_EQ(ZoomFor("edit.copy", 1.0f), std::nullopt);
    EXPECT_EQ(ZoomCommandOf(*ZoomFor("zoom.400", 1.0f)), "zoom.300");
    EXPECT_EQ(ZoomCommandOf(0.75f), "zoom.75");
}

// The information text names the bitmap's format and the filter applied last.
TEST(ViewerTexts, ImageInfoText) {
    const struct {
        const char* fixture;
        const char* text;
    } cases[] = {
        {"img-dct-flate.pdf", "16 x 8 pixels, 8-bit grey (DCTDecode)"},
        {"img-ccitt.pdf", "16 x 16 pixels, 1-bit indexed (CCITTFaxDecode)"},
        {"img-gray-2bit.pdf", "5 x 2 pixels, 2-bit indexed"},
    };
    for (const auto& c : cases) {
        ImageFixture f(c.fixture);
        ASSERT_FALSE(f.Images().empty()) << c.fixture;
        const pdfObject* stream = LoadObject(f.Doc(), f.Images().front());
        std::unique_ptr<ivImage2d> image;
        ASSERT_EQ(DecodeImage(f.Doc(), stream, image, nullptr), kOk) << c.fixture;
        EXPECT_EQ(ImageInfoText(*image, stream), c.text);
    }
}

TEST(ViewerTexts, ViewModes) {
    EXPECT_EQ(InitialViewMode(kRolePageStream), ivViewMode::Content);
    EXPECT_EQ(InitialViewMode(kRoleForm), ivViewMode::Content);
    EXPECT_EQ(InitialViewMode(kRolePattern), ivViewMode::Content);
    EXPECT_EQ(InitialViewMode(kRoleToUnicode), ivViewMode::Content);
    EXPECT_EQ(InitialViewMode(kRoleGlyphProgram), ivViewMode::Content);
    EXPECT_EQ(InitialViewMode(kRoleImage), ivViewMode::Image);
    EXPECT_EQ(InitialViewMode(kRoleObjectStream), ivViewMode::ObjectStream);
    EXPECT_EQ(InitialViewMode(kRoleFont), ivViewMode::Hex);
    EXPECT_EQ(InitialViewMode(0), ivViewMode::Hex);

    EXPECT_EQ(ViewModeOfCommand("View.HEX"), ivViewMode::Hex);
    EXPECT_EQ(ViewModeOfCommand("view.img"), ivViewMode::Image);
    EXPECT_EQ(ViewModeOfCommand("View.mode.OBJSTREAM"), ivViewMode::ObjectStream);
    EXPECT_EQ(ViewModeOfCommand("view.OBJ"), ivViewMode::Object);
    EXPECT_EQ(ViewModeOfCommand("View.mode"), std::nullopt);
    EXPECT_EQ(ViewModeOfCommand("View.HEXA"), std::nullopt);
    EXPECT_EQ(ViewModeOfCommand("Edit.HEX"), std::nullopt);
    for (ivViewMode m :
         {ivViewMode::Content, ivViewMode::ObjectStream, ivViewMode::Image, ivViewMode::Hex, ivViewMode::Raw})
        EXPECT_EQ(ViewModeOfCommand(ViewModeCommand(m)), m);
    EXPECT_EQ(ViewModeText(ivViewMode::ObjectStream), "Stream Of Objects");
    EXPECT_EQ(ViewModeText(ivViewMode::Raw), "Raw bytes in file");
}

TEST(ViewerTexts, LengthAndRawBytesTexts) {
    EXPECT_EQ(StreamLengthText(0), "Stream Length: 0");
    EXPECT_EQ(StreamLengthText(5000000000ull), "Stream Length: 5000000000");
    XrefEntry inFile;
    inFile.offset = 4096;
    EXPECT_EQ(RawBytesText(inFile, 12), "12 bytes at offset 4096 (0x1000) in the file");
    XrefEntry compressed;
    compressed.flags = kXrefCompressed;
    compressed.objStm = 7;
    compressed.offset = 3;
    EXPECT_EQ(RawBytesText(compressed, 40), "40 bytes, object 3 of object stream 7 0 R");
}

// The tab shows the identifier; its hint is the entry's, or the type of a direct object.
TEST(ViewerTexts, ViewCaptionAndHint) {
    ImageFixture f("img-ccitt.pdf");
    XrefEntry* image = f.Images().front();
    const pdfObject* stream = LoadObject(f.Doc(), image);
    EXPECT_EQ(ViewCaption(f.Doc(), stream), ivFormat("%u 0 R", image->num));
    EXPECT_EQ(ViewTabHint(f.Doc(), stream), EntryItemHint(f.Doc(), *image));
    const pdfObject* direct = DictGet(AsStream(stream)->dict, "DecodeParms");
    ASSERT_NE(direct, nullptr);
    EXPECT_EQ(ViewCaption(f.Doc(), direct), "View");
    EXPECT_EQ(ViewTabHint(f.Doc(), direct), TypeName(direct->tag));
}

}  // namespace
