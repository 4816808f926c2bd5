#pragma once
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "platform/ivImage2d.h"
#include "platform/ivStream.h"

// Image codecs behind one factory: importers turn compressed image data into a bitmap,
// exporters write a bitmap as an image file. A build may leave any codec out; the factory
// then answers null and the callers say so.

constexpr unsigned kCodecImport = 1;  // capability flags
constexpr unsigned kCodecExport = 2;

struct ivCodecInfo {
    std::string_view id;         // "jpeg", "jpx", "jbig2", "png", "tiff", "bmp"
    std::string_view name;       // for the format list: "JPEG", "PNG", …
    std::string_view extension;  // of the files it writes: "jpg", "png", "tif", "bmp"
    unsigned caps;
};

class ivImageImporter {
public:
    virtual ~ivImageImporter() = default;
    // Data shared by several images (JBIG2 globals), given before Decode.
    virtual ivStatus SetGlobals(std::span<const std::uint8_t> /*data*/) { return kOk; }
    // Decodes the whole of `data` into `image`. Gray images come as ivImage2d::kGray8, colour
    // as kBgr24, CMYK as kCmyk32 (Adobe-inverted CMYK put right), bilevel as kIndexed1 with a
    // palette. A failure code after damaged data, with `image` untouched or partly filled.
    virtual ivStatus Decode(ivStream& data, ivImage2d& image) = 0;
    // Why the last Decode failed, when the codec says.
    virtual std::string ErrorText() const { return {}; }
};

class ivImageExporter {
public:
    virtual ~ivImageExporter() = default;
    // Writes `image` to `file` in the exporter's format; CMYK is turned into RGB with
    // red = 255 - cyan - black (0 when negative), and likewise for green and blue.
    virtual ivStatus Save(ivStream& file, const ivImage2d& image) = 0;
};

// Every codec of this build, importers and exporters, in the order of the format list.
std::span<const ivCodecInfo> RegisteredCodecs();
const ivCodecInfo* FindCodec(std::string_view id);

// The factory: null when the build has no such codec.
template <class Interface>
std::unique_ptr<Interface> CreateInterface(std::string_view id);
template <>
std::unique_ptr<ivImageImporter> CreateInterface<ivImageImporter>(std::string_view id);
template <>
std::unique_ptr<ivImageExporter> CreateInterface<ivImageExporter>(std::string_view id);

// The CMYK to RGB rule shared by palettes and exporters.
inline std::uint8_t CmykToRgbComponent(std::uint8_t colour, std::uint8_t black) {
    int v = 255 - colour - black;
    return static_cast<std::uint8_t>(v < 0 ? 0 : v);
}
