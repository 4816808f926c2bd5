#include <turbojpeg.h>

#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "codecs/ivCodecIo.h"
#include "codecs/ivCodecs.h"
#include "codecs/ivExportRows.h"
#include "platform/ivFormat.h"

// JPEG through the TurboJPEG API rather than libjpeg's: it reports errors as return codes,
// where libjpeg would longjmp through our frames.

namespace {

constexpr int kQuality = 90;

struct TjHandleDeleter {
    void operator()(void* handle) const { tjDestroy(handle); }
};
using TjHandle = std::unique_ptr<void, TjHandleDeleter>;

struct TjBufferDeleter {
    void operator()(unsigned char* buffer) const { tjFree(buffer); }
};
using TjBuffer = std::unique_ptr<unsigned char, TjBufferDeleter>;

struct JpegOutput {
    ivImage2d::Format format;
    int pixelFormat;  // TJPF_…
};

bool OutputFor(int colorspace, JpegOutput* out) {
    switch (colorspace) {
        case TJCS_GRAY:
            *out = {ivImage2d::kGray8, TJPF_GRAY};
            return true;
        case TJCS_RGB:
        case TJCS_YCbCr:
            *out = {ivImage2d::kBgr24, TJPF_BGR};
            return true;
        case TJCS_CMYK:
        case TJCS_YCCK:
            *out = {ivImage2d::kCmyk32, TJPF_CMYK};
            return true;
        default:
            return false;
    }
}

// Adobe's applications store CMYK inverted (0 is full ink) and mark such files with an
// APP14 "Adobe" segment; libjpeg hands the values back as stored. The segment can only
// come before the first scan.
bool HasAdobeMarker(std::span<const std::uint8_t> jpeg) {
    std::size_t pos = 2;  // past SOI
    while (pos + 4 <= jpeg.size() && jpeg[pos] == 0xFF) {
        const std::uint8_t marker = jpeg[pos + 1];
        if (marker == 0xFF) {  // fill byte
            ++pos;
            continue;
        }
        if (marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8)) {  // no length follows
            pos += 2;
            continue;
        }
        if (marker == 0xDA || marker == 0xD9) return false;
        const std::size_t length = std::size_t(jpeg[pos + 2]) << 8 | jpeg[pos + 3];
        if (length < 2) return false;
        if (marker == 0xEE && length >= 7 && pos + 9 <= jpeg.size() &&
            std::memcmp(&jpeg[pos + 4], "Adobe", 5) == 0)
            return true;
        pos += 2 + length;
    }
    return false;
}

class ivJpegImporter final : public ivImageImporter {
public:
    ivStatus Decode(ivStream& data, ivImage2d& image) override;
    std::string ErrorText() const override { return m_error; }

private:
    ivStatus DecodeBytes(std::span<const std::uint8_t> jpeg, ivImage2d& image);
    std::string m_error;
};

ivStatus ivJpegImporter::Decode(ivStream& data, ivImage2d& image) {
    m_error.clear();
    return ivDecodeWholeData(data, m_error,
                             [&](std::span<const std::uint8_t> bytes) { return DecodeBytes(bytes, image); });
}

ivStatus ivJpegImporter::DecodeBytes(std::span<const std::uint8_t> jpeg, ivImage2d& image) {
    if (jpeg.size() < 4 || jpeg.size() > ULONG_MAX) {
        m_error = "Not JPEG data";
        return kFail;
    }
    TjHandle tj(tjInitDecompress());
    if (!tj) {
        m_error = tjGetErrorStr2(nullptr);
        return kOutOfMemory;
    }
    const auto size = static_cast<unsigned long>(jpeg.size());
    int width = 0, height = 0, subsampling = 0, colorspace = 0;
    if (tjDecompressHeader3(tj.get(), jpeg.data(), size, &width, &height, &subsampling, &colorspace) != 0) {
        m_error = tjGetErrorStr2(tj.get());
        return kFail;
    }
    JpegOutput out{};
    if (!OutputFor(colorspace, &out)) {
        m_error = "Unsupported JPEG colour space";
        return kWrongType;
    }
    if (width <= 0 || height <= 0) {  // the data ended before the frame header
        m_error = "JPEG data has no image size";
        return kFail;
    }
    // The bitmap is the decoder's only full-size buffer, so its limit guards the decoder too.
    if (Failed(image.Create(out.format, static_cast<std::uint32_t>(width),
                            static_cast<std::uint32_t>(height)))) {
        m_error = ivFormat("Image of %d x %d pixels is too large", width, height);
        return kOutOfMemory;
    }
    ivStatus result = kOk;
    if (tjDecompress2(tj.get(), jpeg.data(), size, image.Pixels().data(), width,
                      static_cast<int>(image.Stride()), height, out.pixelFormat, TJFLAG_LIMITSCANS) != 0) {
        m_error = tjGetErrorStr2(tj.get());
        // A warning means the library went on to the end (truncated data comes out with its
        // missing rows filled) and is content with the result; anything else is a failure.
        if (tjGetErrorCode(tj.get()) != TJERR_WARNING) return kFail;
        result = kRemark;
    }
    if (out.format == ivImage2d::kCmyk32 && HasAdobeMarker(jpeg)) {
        for (std::uint8_t& b : image.Pixels()) b = static_cast<std::uint8_t>(~b);
    }
    return result;
}

class ivJpegExporter final : public ivImageExporter {
public:
    ivStatus Save(ivStream& file, const ivImage2d& image) override;
};

ivStatus ivJpegExporter::Save(ivStream& file, const ivImage2d& image) {
    if (image.Width() == 0 || image.Height() == 0) return kInvalidArg;
    try {
        TjHandle tj(tjInitCompress());
        if (!tj) return kOutOfMemory;
        const int width = static_cast<int>(image.Width()), height = static_cast<int>(image.Height());
        // Gray and BGR bitmaps go in as they are; every other format becomes RGB first.
        const std::uint8_t* source = image.Row(0);
        int pitch = static_cast<int>(image.Stride());
        int pixelFormat = TJPF_GRAY, subsampling = TJSAMP_GRAY;
        std::vector<std::uint8_t> rgb;
        if (image.PixelFormat() == ivImage2d::kBgr24) {
            pixelFormat = TJPF_BGR;
            subsampling = TJSAMP_444;
        } else if (image.PixelFormat() != ivImage2d::kGray8) {
            ivExportRows rows(image, ivExportRows::kRgb24);
            rgb.resize(rows.RowBytes() * image.Height());
            for (std::uint32_t y = 0; y < image.Height(); ++y)
                std::memcpy(rgb.data() + y * rows.RowBytes(), rows.Row(y), rows.RowBytes());
            source = rgb.data();
            pitch = static_cast<int>(rows.RowBytes());
            pixelFormat = TJPF_RGB;
            subsampling = TJSAMP_444;
        }
        unsigned char* out = nullptr;
        unsigned long outSize = 0;
        int rc = tjCompress2(tj.get(), source, width, pitch, height, pixelFormat, &out, &outSize, subsampling,
                             kQuality, 0);
        TjBuffer owned(out);
        if (rc != 0) return kFail;  // over 65,500 pixels wide or high, or out of memory
        return ivWriteAll(file, {owned.get(), outSize});
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
}

}  // namespace

std::unique_ptr<ivImageImporter> CreateJpegImporter() {
    return std::make_unique<ivJpegImporter>();
}
std::unique_ptr<ivImageExporter> CreateJpegExporter() {
    return std::make_unique<ivJpegExporter>();
}
