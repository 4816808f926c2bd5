#include "pdf/analysis/pdfImage.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "pdf/analysis/ivPdf.h"
#include "pdf/decode/pdfCcittFax.h"
#include "pdf/decode/pdfFilterChain.h"
#include "pdf/object/pdfAccessors.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfObjectAccess.h"
#include "platform/ivByteReader.h"
#include "platform/ivCodec.h"

namespace {

bool NameOrStringIs(const pdfObject* o, const char* text) {
    return TextEquals(o, text);
}

std::uint32_t Pack(std::uint8_t r, std::uint8_t g, std::uint8_t b) {
    return r | std::uint32_t(g) << 8 | std::uint32_t(b) << 16 | 0xFF000000u;
}

// Reads the colour space: a device name, or an Indexed array with its base, count and lookup.
ivStatus ReadColourSpace(ivPdf& doc, const pdfObject* space, pdfImageDescription& desc) {
    if (AsTextValued(space)) {
        if (NameOrStringIs(space, "DeviceGray")) desc.colourModel = kColourGrey;
        if (NameOrStringIs(space, "DeviceCMYK")) desc.colourModel = kColourCmyk;
        if (NameOrStringIs(space, "DeviceRGB")) desc.colourModel = kColourRgb;
        return kOk;
    }
    const pdfArray* a = AsArray(space);
    if (!a || a->count == 2) return kOk;
    if (a->count != 4) {
        Report(
            doc,
            "An Indexed color space must be defined by a four-element array: [ /Indexed base hival lookup ]");
        return kOk;
    }
    if (!TextEquals(a->Items()[0], "Indexed") || !AsName(a->Items()[0])) {
        Report(doc, "Indexed color space is expected");
        return kOk;
    }
    if (AsTextValued(a->Items()[1])) desc.base = a->Items()[1];
    std::uint32_t hival = 0;
    if (Failed(GetInteger(doc, a->Items()[2], &hival)))
        Report(doc, "Can't read 'maximum valid palette index'");
    else
        desc.paletteCount = hival + 1;
    desc.lookup = Deref(doc, a->Items()[3]);
    if (!desc.lookup) Report(doc, "Can't get resolve palette object");
    return kOk;
}

ivImage2d::Format ChooseFormat(const pdfImageDescription& d) {
    const bool palette = d.lookup != nullptr;
    if (d.bitsPerComponent == 1) return ivImage2d::kIndexed1;
    if (d.bitsPerComponent <= 4) return ivImage2d::kIndexed4;
    if (d.bitsPerComponent > 8) return ivImage2d::kBgr24;
    if (d.colourModel == kColourCmyk) return palette ? ivImage2d::kIndexed8 : ivImage2d::kCmyk32;
    if (d.colourModel == kColourGrey) return ivImage2d::kGray8;
    return palette ? ivImage2d::kIndexed8 : ivImage2d::kBgr24;
}

void ReadPaletteFromLookup(ivPdf& doc, ivImage2d& image, pdfImageDescription& d) {
    std::size_t count = d.paletteCount;
    if (count > image.PaletteCapacity()) {
        Report(doc, "Palette size (%d)is wrong. Reverted to %d", static_cast<int>(count),
               static_cast<int>(image.PaletteCapacity()));
        count = image.PaletteCapacity();
    }
    auto& palette = image.Palette();
    if (AsStream(d.lookup)) {
        pdfDecodedStream data;
        if (Failed(OpenDecodedStream(doc, d.lookup, FindEntryByRecord(doc, d.lookup), data))) {
            Report(doc, "Can't read palette steram");
            return;
        }
        const bool cmyk = TextEquals(d.base, "DeviceCMYK");
        if (cmyk) d.colourModel = kColourCmyk;
        ivByteReader in(*data.stream);
        std::uint8_t c[4];
        const std::uint32_t size = cmyk ? 4 : 3;
        for (std::size_t i = 0; i < count; ++i) {
            if (in.Read(c, size) < size) {
                Report(doc, "Error in reading pallete colors");
                return;
            }
            palette[i] = cmyk ? Pack(CmykToRgbComponent(c[0], c[3]), CmykToRgbComponent(c[1], c[3]),
                                     CmykToRgbComponent(c[2], c[3]))
                              : Pack(c[0], c[1], c[2]);
        }
    } else if (d.lookup->tag == kTagHexString) {
        const auto* s = static_cast<const pdfBytes*>(d.lookup);
        for (std::size_t i = 0; i < count; ++i) {
            if (3 * i + 3 > s->size) {
                Report(doc, "Error in reading pallete colors");
                return;
            }
            palette[i] = Pack(s->Data()[3 * i], s->Data()[3 * i + 1], s->Data()[3 * i + 2]);
        }
    }
    // Deliberately, a lookup given as a literal string is not read.
}

void FillPalette(ivPdf& doc, ivImage2d& image, pdfImageDescription& d) {
    if (image.PaletteCapacity() == 0) return;
    auto& palette = image.Palette();
    if (d.lookup) {
        ReadPaletteFromLookup(doc, image, d);
    } else if (d.imageMask) {
        palette[0] = Pack(0, 0, 0);
        palette[1] = Pack(255, 255, 255);
    } else if (d.colourModel == kColourGrey && image.PixelFormat() != ivImage2d::kIndexed8) {
        const std::size_t n = std::size_t(1) << d.bitsPerComponent;
        if (n < 2) return;  // no ramp of a single shade (BitsPerComponent 0)
        for (std::size_t i = 0; i < n && i < palette.size(); ++i) {
            auto v = static_cast<std::uint8_t>(n == 256 ? i : static_cast<float>(i) * 255.0f / float(n - 1));
            palette[i] = Pack(v, v, v);
        }
    }
}

// Reads `count` bytes of a row: as many as `buffer` holds into it, the rest passed over in
// pieces (a row claimed by a huge depth is never held whole). Returns the bytes read.
std::uint64_t ReadLongRow(ivByteReader& in, std::vector<std::uint8_t>& buffer, std::uint64_t count) {
    const auto first = static_cast<std::uint32_t>(std::min<std::uint64_t>(count, buffer.size()));
    std::uint64_t got = in.Read(buffer.data(), first);
    if (got < first) return got;
    std::uint8_t scratch[4096];
    while (got < count) {
        const auto want = static_cast<std::uint32_t>(std::min<std::uint64_t>(count - got, sizeof scratch));
        const std::uint32_t n = in.Read(scratch, want);
        got += n;
        if (n < want) break;
    }
    return got;
}

// Reads the image's samples row by row straight into the bitmap. A row longer than the
// bitmap's (16-bit samples, a depth the format does not have) goes through a buffer: 16-bit
// samples keep their high byte, anything else is cut to the bitmap's row.
void ReadRows(ivPdf& doc, ivStream& data, ivImage2d& image, const pdfImageDescription& d) {
    const int components = image.PixelFormat() == ivImage2d::kCmyk32 ? 4
                           : image.PixelFormat() == ivImage2d::kBgr24 ? 3
                                                                       : 1;
    const std::uint64_t rowBytes = (std::uint64_t(image.Width()) * d.bitsPerComponent * components + 7) / 8;
    const bool direct = rowBytes <= image.Stride();
    const bool sixteen = d.bitsPerComponent == 16 && image.PixelFormat() == ivImage2d::kBgr24;
    // Only the part of a long row that the bitmap can take is kept.
    const std::uint64_t kept = std::min<std::uint64_t>(rowBytes, 2 * std::uint64_t(image.Stride()));
    std::vector<std::uint8_t> buffer(direct ? 0 : static_cast<std::size_t>(kept));
    ivByteReader in(data);
    for (std::uint32_t y = 0; y < image.Height(); ++y) {
        std::uint8_t* out = image.Row(y);
        const std::uint64_t got = direct ? in.Read(out, static_cast<std::uint32_t>(rowBytes))
                                         : ReadLongRow(in, buffer, rowBytes);
        if (!direct) {
            if (sixteen)
                for (std::size_t i = 0; i < image.Stride() && 2 * i < got && 2 * i < buffer.size(); ++i)
                    out[i] = buffer[2 * i];
            else
                std::memcpy(out, buffer.data(), static_cast<std::size_t>(std::min<std::uint64_t>(got, image.Stride())));
        }
        if (got < rowBytes) {
            if (Failed(in.LastStatus()))
                Report(doc, "Read error: %s\n", data.ErrorText().c_str());
            else
                Report(doc, "Error in reading image");
            return;
        }
        if (image.PixelFormat() == ivImage2d::kBgr24)
            for (std::uint32_t x = 0; x < image.Width(); ++x) std::swap(out[3 * x], out[3 * x + 2]);
    }
}

// Width and Height for a CCITT bitmap; 0 when absent or unreadable.
std::uint32_t Dimension(ivPdf& doc, const pdfObject* dict, const char* key, bool report) {
    const pdfObject* v = DictGet(dict, key);
    if (!v) return 0;
    if (report) {
        std::uint32_t n = 0;
        return Succeeded(GetInteger(doc, v, &n)) ? n : 0;
    }
    double d = 0;
    return Succeeded(GetNumber(doc, v, &d)) && d > 0 && d < 4.3e9 ? static_cast<std::uint32_t>(d + 0.5) : 0;
}

enum class CodecOutcome { Decoded, FallBack };

CodecOutcome DecodeWithCodec(ivPdf& doc, const char* id, const char* missing, const pdfDecodedStream& data,
                             ivImage2d& image, ivStatus* status) {
    auto importer = CreateInterface<ivImageImporter>(id);
    if (!importer) {
        Report(doc, "%s", missing);
        return CodecOutcome::FallBack;
    }
    if (std::strcmp(id, "jbig2") == 0) {
        const pdfObject* globals = DictGet(data.params, "JBIG2Globals");
        if (globals && !AsArray(globals)) {
            pdfDecodedStream g;
            std::vector<std::uint8_t> bytes;
            if (Succeeded(OpenDecodedStream(doc, Deref(doc, globals), nullptr, g)) && g.stream)
                ivReadAll(*g.stream, bytes);
            importer->SetGlobals(bytes);
        }
    }
    *status = importer->Decode(*data.stream, image);
    // Data the codec could only partly decode (it says why) counts as not decoded.
    if (*status == kRemark && !importer->ErrorText().empty()) *status = kFail;
    if (Failed(*status)) {
        std::string why = importer->ErrorText();
        Report(doc, "Image can't be decoded: %s", why.empty() ? "damaged data" : why.c_str());
    }
    return CodecOutcome::Decoded;
}

}  // namespace

ivStatus CreateImageFromDictionary(ivPdf& doc, const pdfObject* dict, ivImage2d& image,
                                   pdfImageDescription& desc) {
    const pdfDict* d = AsDict(dict);
    if (!d) {
        Report(doc, "Dictionary must a be a Dictionary");
        return kMissing;
    }
    const pdfObject* space = nullptr;
    for (const pdfPair& p : d->Entries()) {
        const pdfBytes* key = AsName(p.key);
        if (!key) continue;
        std::uint32_t n = 0;
        if (std::strcmp(key->Chars(), "ImageMask") == 0) {
            GetBool(doc, p.value, &desc.imageMask);
        } else if (std::strcmp(key->Chars(), "Width") == 0) {
            if (Succeeded(GetInteger(doc, p.value, &n))) desc.width = static_cast<std::int32_t>(n);
        } else if (std::strcmp(key->Chars(), "Height") == 0) {
            if (Succeeded(GetInteger(doc, p.value, &n))) desc.height = static_cast<std::int32_t>(n);
        } else if (std::strcmp(key->Chars(), "BitsPerComponent") == 0) {
            if (Succeeded(GetInteger(doc, p.value, &n))) desc.bitsPerComponent = static_cast<std::int32_t>(n);
        } else if (std::strcmp(key->Chars(), "ColorSpace") == 0) {
            space = Deref(doc, p.value);
        }
    }
    // The colour space is looked at only up to 8 bits per component; the extra checks ask
    // for one at any depth.
    const bool spaceNeeded = !space && !desc.imageMask && (desc.bitsPerComponent <= 8 || doc.ExtraChecks());
    const char* missing = desc.width < 0              ? "Image Width is not specified"
                          : desc.height < 0           ? "Image Height is not specified"
                          : desc.bitsPerComponent < 0 ? "Image BPP is not specified"
                          : spaceNeeded               ? "ColorSpace is not specified"
                                                      : nullptr;
    if (missing) {
        Report(doc, "%s", missing);
        return kFail;
    }
    if (desc.bitsPerComponent == 0 || desc.bitsPerComponent > 16)
        ReportExtra(doc, "Image BPP %d is not valid", desc.bitsPerComponent);
    if (desc.bitsPerComponent <= 8 && space) ReadColourSpace(doc, space, desc);
    const ivImage2d::Format format = ChooseFormat(desc);
    if (Failed(image.Create(format, static_cast<std::uint32_t>(desc.width),
                            static_cast<std::uint32_t>(desc.height), desc.bitsPerComponent == 2 ? 2 : 0))) {
        Report(doc, "Image of %d x %d pixels can't be held in memory", desc.width, desc.height);
        return kOutOfMemory;
    }
    FillPalette(doc, image, desc);
    return kOk;
}

ivStatus DecodeImage(ivPdf& doc, const pdfObject* object, std::unique_ptr<ivImage2d>& image,
                     ivRef<ivStream>* passThrough) {
    ivObjScope scope(doc.Control(), object, doc, "Accessing Image stream %s");
    pdfDecodedStream data;
    if (ivStatus st = OpenDecodedStream(doc, object, FindEntryByRecord(doc, object), data); Failed(st))
        return st;
    const pdfStream* stream = AsStream(object);
    const pdfObject* dict = stream->dict;
    image = std::make_unique<ivImage2d>();
    ivStatus status = kOk;
    const pdfObject* filter = data.filter;
    if (TextEquals(filter, "CCITTFaxDecode") || TextEquals(filter, "CCF")) {
        if (passThrough) {
            *passThrough = data.stream;
            image.reset();
            return kOk;
        }
        std::uint32_t width = Dimension(doc, dict, "Width", false),
                      height = Dimension(doc, dict, "Height", true);
        if (width && height) {
            if (Failed(image->Create(ivImage2d::kIndexed1, width, height))) {
                Report(doc, "Image of %u x %u pixels can't be held in memory", width, height);
                return kOutOfMemory;
            }
            return DecodeCCITTFax(doc, data.params, *image, *data.stream);
        }
        Report(doc, "Image Width or Height was not specified\n");
    } else if (TextEquals(filter, "JBIG2Decode")) {
        if (DecodeWithCodec(doc, "jbig2", "JBIG2 Import Filter is not implemented yet\n", data, *image,
                            &status) == CodecOutcome::Decoded)
            return status;
    } else if (TextEquals(filter, "JPXDecode")) {
        if (DecodeWithCodec(doc, "jpx", "JPEG 2000 Import Filter is not implemented yet\n", data, *image,
                            &status) == CodecOutcome::Decoded)
            return status;
    } else if (TextEquals(filter, "DCTDecode") || TextEquals(filter, "DCT")) {
        if (passThrough) {
            *passThrough = data.stream;
            image.reset();
            return kOk;
        }
        if (DecodeWithCodec(doc, "jpeg", "JPEG Import Filter is not implemented yet\n", data, *image,
                            &status) == CodecOutcome::Decoded)
            return status;
    }
    if (!dict) {
        Report(doc, "Image Dictionary is not present");
        return kWrongType;
    }
    pdfImageDescription desc;
    if (Failed(status = CreateImageFromDictionary(doc, dict, *image, desc)))
        return status == kOutOfMemory ? kOutOfMemory : kWrongType;
    ReadRows(doc, *data.stream, *image, desc);
    return status;
}
