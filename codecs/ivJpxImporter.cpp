#include <openjpeg.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "codecs/ivCodecIo.h"
#include "codecs/ivCodecs.h"
#include "platform/ivFormat.h"

// JPEG 2000 through OpenJPEG, from memory: PDF streams are small enough to hold whole, and a
// memory source makes seeking trivial.

namespace {

constexpr std::uint8_t kJp2Signature[] = {0, 0, 0, 0x0C, 'j', 'P', ' ', ' ', 0x0D, 0x0A, 0x87, 0x0A};
constexpr std::uint8_t kCodestreamStart[] = {0xFF, 0x4F, 0xFF, 0x51};  // SOC then SIZ
constexpr std::size_t kMaxMessages = 4096;                             // characters kept for ErrorText

// The read position in the data, for OpenJPEG's stream callbacks.
struct JpxSource {
    std::span<const std::uint8_t> bytes;
    std::size_t pos = 0;
};

OPJ_SIZE_T OnJpxRead(void* buffer, OPJ_SIZE_T count, void* user) {
    auto* src = static_cast<JpxSource*>(user);
    const std::size_t n = std::min<std::size_t>(count, src->bytes.size() - src->pos);
    if (n == 0) return static_cast<OPJ_SIZE_T>(-1);  // OpenJPEG's end of data
    std::memcpy(buffer, src->bytes.data() + src->pos, n);
    src->pos += n;
    return n;
}

// Like a file, the position may not go below zero but may go past the end, where the next
// read finds nothing.
OPJ_OFF_T OnJpxSkip(OPJ_OFF_T count, void* user) {
    auto* src = static_cast<JpxSource*>(user);
    if (count < 0 && static_cast<std::size_t>(-count) > src->pos) return -1;
    const std::size_t target = src->pos + static_cast<std::size_t>(count);
    src->pos = std::min(target, src->bytes.size());
    return count;
}

OPJ_BOOL OnJpxSeek(OPJ_OFF_T pos, void* user) {
    auto* src = static_cast<JpxSource*>(user);
    if (pos < 0 || static_cast<std::uint64_t>(pos) > src->bytes.size()) return OPJ_FALSE;
    src->pos = static_cast<std::size_t>(pos);
    return OPJ_TRUE;
}

struct JpxMessages {
    std::string errors, warnings;
};

void Append(std::string& to, const char* message) noexcept {
    try {
        std::string text(message ? message : "");
        while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
        if (text.empty() || to.size() + text.size() > kMaxMessages) return;
        if (!to.empty()) to += "; ";
        to += text;
    } catch (...) {  // a lost message is no reason to let an exception into OpenJPEG
    }
}

void OnJpxError(const char* message, void* user) {
    Append(static_cast<JpxMessages*>(user)->errors, message);
}
void OnJpxWarning(const char* message, void* user) {
    Append(static_cast<JpxMessages*>(user)->warnings, message);
}
void OnJpxInfo(const char*, void*) {}

struct CodecDeleter {
    void operator()(opj_codec_t* codec) const { opj_destroy_codec(codec); }
};
struct StreamDeleter {
    void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
};
struct ImageDeleter {
    void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};
using JpxImage = std::unique_ptr<opj_image_t, ImageDeleter>;

// One output channel: a component resampled to the image grid and scaled to 8 bits.
class JpxChannel {
public:
    JpxChannel(const opj_image_t& image, const opj_image_comp_t& comp, std::uint32_t width) : m_comp(comp) {
        // A subsampled component has one sample for dx × dy grid points; its first sample
        // covers the grid point ceil(x0 / dx).
        m_columns.resize(width);
        const std::uint32_t first = (image.x0 + comp.dx - 1) / comp.dx;
        for (std::uint32_t x = 0; x < width; ++x)
            m_columns[x] = Clamp((image.x0 + x) / comp.dx, first, comp.w);
        m_firstRow = (image.y0 + comp.dy - 1) / comp.dy;
        m_y0 = image.y0;
        m_offset = comp.sgnd ? 1 << (comp.prec - 1) : 0;
    }

    // Sample values of grid row `y` as 8-bit values into `out`, `step` bytes apart.
    void Row(std::uint32_t y, std::uint8_t* out, int step) const {
        const std::uint32_t row = Clamp((m_y0 + y) / m_comp.dy, m_firstRow, m_comp.h);
        const OPJ_INT32* samples = m_comp.data + std::size_t(row) * m_comp.w;
        for (std::size_t x = 0; x < m_columns.size(); ++x, out += step) *out = Scale(samples[m_columns[x]]);
    }

private:
    static std::uint32_t Clamp(std::uint32_t index, std::uint32_t first, std::uint32_t count) {
        index = index < first ? 0 : index - first;
        return std::min(index, count - 1);
    }

    std::uint8_t Scale(OPJ_INT32 sample) const {
        std::int64_t v = std::int64_t(sample) + m_offset;
        if (m_comp.prec > 8)
            v >>= m_comp.prec - 8;
        else if (m_comp.prec < 8)
            v = v * 255 / ((1 << m_comp.prec) - 1);
        return static_cast<std::uint8_t>(std::clamp<std::int64_t>(v, 0, 255));
    }

    const opj_image_comp_t& m_comp;
    std::vector<std::uint32_t> m_columns;
    std::uint32_t m_firstRow = 0, m_y0 = 0;
    std::int64_t m_offset = 0;
};

std::uint8_t ClampByte(double v) {
    return static_cast<std::uint8_t>(std::clamp(v + 0.5, 0.0, 255.0));
}

// sYCC as OpenJPEG leaves it: the JFIF equations on 8-bit values centred at 128.
void YccToBgr(std::uint8_t* row, std::uint32_t width) {
    for (std::uint32_t x = 0; x < width; ++x, row += 3) {
        const double y = row[2], cb = row[1] - 128.0, cr = row[0] - 128.0;
        row[2] = ClampByte(y + 1.402 * cr);
        row[1] = ClampByte(y - 0.344136 * cb - 0.714136 * cr);
        row[0] = ClampByte(y + 1.772 * cb);
    }
}

class ivJpxImporter final : public ivImageImporter {
public:
    ivStatus Decode(ivStream& data, ivImage2d& image) override;
    std::string ErrorText() const override { return m_error; }

private:
    ivStatus DecodeBytes(std::span<const std::uint8_t> bytes, ivImage2d& image);
    ivStatus ReadHeader(opj_codec_t* codec, opj_stream_t* stream, JpxImage& out);
    ivStatus Convert(const opj_image_t& jpx, ivImage2d& image);
    ivStatus Fail(ivStatus status, const char* text);

    JpxMessages m_messages;
    std::string m_error;
};

ivStatus ivJpxImporter::Fail(ivStatus status, const char* text) {
    m_error = !m_messages.errors.empty() ? m_messages.errors : text;
    return status;
}

ivStatus ivJpxImporter::Decode(ivStream& data, ivImage2d& image) {
    m_messages = {};
    m_error.clear();
    return ivDecodeWholeData(data, m_error,
                             [&](std::span<const std::uint8_t> bytes) { return DecodeBytes(bytes, image); });
}

ivStatus ivJpxImporter::DecodeBytes(std::span<const std::uint8_t> bytes, ivImage2d& image) {
    auto startsWith = [bytes](std::span<const std::uint8_t> prefix) {
        return bytes.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), bytes.begin());
    };
    OPJ_CODEC_FORMAT format = startsWith(kJp2Signature)      ? OPJ_CODEC_JP2
                              : startsWith(kCodestreamStart) ? OPJ_CODEC_J2K
                                                             : OPJ_CODEC_UNKNOWN;
    if (format == OPJ_CODEC_UNKNOWN) return Fail(kWrongType, "Not JPEG 2000 data");

    std::unique_ptr<opj_codec_t, CodecDeleter> codec(opj_create_decompress(format));
    if (!codec) return Fail(kOutOfMemory, "Out of memory");
    opj_set_error_handler(codec.get(), OnJpxError, &m_messages);
    opj_set_warning_handler(codec.get(), OnJpxWarning, &m_messages);
    opj_set_info_handler(codec.get(), OnJpxInfo, nullptr);
    opj_dparameters_t params;
    opj_set_default_decoder_parameters(&params);
    // Strict: a codestream cut short is an error here, not an image with its end missing.
    if (!opj_setup_decoder(codec.get(), &params) || !opj_decoder_set_strict_mode(codec.get(), OPJ_TRUE))
        return Fail(kFail, "JPEG 2000 decoder can't be set up");

    JpxSource source{bytes, 0};
    std::unique_ptr<opj_stream_t, StreamDeleter> stream(
        opj_stream_create(OPJ_J2K_STREAM_CHUNK_SIZE, OPJ_TRUE));
    if (!stream) return Fail(kOutOfMemory, "Out of memory");
    opj_stream_set_read_function(stream.get(), OnJpxRead);
    opj_stream_set_skip_function(stream.get(), OnJpxSkip);
    opj_stream_set_seek_function(stream.get(), OnJpxSeek);
    opj_stream_set_user_data(stream.get(), &source, nullptr);
    opj_stream_set_user_data_length(stream.get(), bytes.size());

    JpxImage jpx;
    ivStatus st = ReadHeader(codec.get(), stream.get(), jpx);
    if (Failed(st)) return st;
    if (!opj_decode(codec.get(), stream.get(), jpx.get()) || !opj_end_decompress(codec.get(), stream.get()))
        return Fail(kFail, "JPEG 2000 data can't be decoded");
    st = Convert(*jpx, image);
    if (Succeeded(st) && !m_messages.warnings.empty()) {
        m_error = m_messages.warnings;
        return kRemark;
    }
    return st;
}

// Reads the main header and checks the sizes it claims before OpenJPEG allocates the
// component buffers (four bytes a sample) in opj_decode.
ivStatus ivJpxImporter::ReadHeader(opj_codec_t* codec, opj_stream_t* stream, JpxImage& out) {
    opj_image_t* raw = nullptr;
    const bool read = opj_read_header(stream, codec, &raw);
    out.reset(raw);
    if (!read || !raw) return Fail(kFail, "JPEG 2000 header can't be read");
    if (raw->numcomps == 0 || raw->x1 <= raw->x0 || raw->y1 <= raw->y0)
        return Fail(kFail, "JPEG 2000 image is empty");
    const std::uint64_t width = raw->x1 - raw->x0, height = raw->y1 - raw->y0;
    if (width * height * raw->numcomps > ivImage2d::kMaxBytes) {
        m_error = ivFormat("Image of %llu x %llu pixels and %u components is too large",
                           static_cast<unsigned long long>(width), static_cast<unsigned long long>(height),
                           raw->numcomps);
        return kOutOfMemory;
    }
    return kOk;
}

ivStatus ivJpxImporter::Convert(const opj_image_t& jpx, ivImage2d& image) {
    for (OPJ_UINT32 i = 0; i < jpx.numcomps; ++i) {
        const opj_image_comp_t& c = jpx.comps[i];
        if (!c.data || c.w == 0 || c.h == 0 || c.dx == 0 || c.dy == 0 || c.prec == 0 || c.prec > 31)
            return Fail(kFail, "JPEG 2000 component is missing or damaged");
    }
    // Colour channels first; a trailing alpha channel (sRGB with alpha, gray with alpha) is
    // dropped. Four channels without a word on the colour space are taken as CMYK, as PDF
    // does for four-component images.
    const OPJ_UINT32 n = jpx.numcomps;
    const bool rgbSpace = jpx.color_space == OPJ_CLRSPC_SRGB || jpx.color_space == OPJ_CLRSPC_SYCC ||
                          jpx.color_space == OPJ_CLRSPC_EYCC;
    ivImage2d::Format format = ivImage2d::kGray8;
    if (n >= 4 && !rgbSpace && !jpx.comps[3].alpha && jpx.color_space != OPJ_CLRSPC_GRAY)
        format = ivImage2d::kCmyk32;
    else if (n >= 3 && jpx.color_space != OPJ_CLRSPC_GRAY)
        format = ivImage2d::kBgr24;

    const std::uint32_t width = jpx.x1 - jpx.x0, height = jpx.y1 - jpx.y0;
    if (Failed(image.Create(format, width, height))) return Fail(kOutOfMemory, "Image is too large");
    const int channels = format == ivImage2d::kCmyk32 ? 4 : format == ivImage2d::kBgr24 ? 3 : 1;
    std::vector<JpxChannel> sources;
    for (int c = 0; c < channels; ++c) sources.emplace_back(jpx, jpx.comps[c], width);
    // OpenJPEG undoes its own component transform but leaves a file's YCC colour space to us.
    // e-sYCC gets the same equations: near enough for looking at, and rare.
    const bool ycc = format == ivImage2d::kBgr24 &&
                     (jpx.color_space == OPJ_CLRSPC_SYCC || jpx.color_space == OPJ_CLRSPC_EYCC);
    for (std::uint32_t y = 0; y < height; ++y) {
        std::uint8_t* row = image.Row(y);
        for (int c = 0; c < channels; ++c) {
            // Our colour bitmaps are blue-green-red: component 0 goes last.
            const int place = channels == 3 ? 2 - c : c;
            sources[static_cast<std::size_t>(c)].Row(y, row + place, channels);
        }
        if (ycc) YccToBgr(row, width);
    }
    return kOk;
}

}  // namespace

std::unique_ptr<ivImageImporter> CreateJpxImporter() {
    return std::make_unique<ivJpxImporter>();
}
