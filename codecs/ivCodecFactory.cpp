#include <algorithm>
#include <iterator>
#include <vector>

#include "codecs/ivCodecs.h"

namespace {

struct CodecEntry {
    ivCodecInfo info;
    std::unique_ptr<ivImageImporter> (*importer)();
    std::unique_ptr<ivImageExporter> (*exporter)();
};

// The format list's order: JPEG first, as the default export format.
const CodecEntry kCodecs[] = {
#ifdef VANTREL_CODEC_JPEG
    {{"jpeg", "JPEG", "jpg", kCodecImport | kCodecExport}, CreateJpegImporter, CreateJpegExporter},
#endif
#ifdef VANTREL_CODEC_PNG
    {{"png", "PNG", "png", kCodecExport}, nullptr, CreatePngExporter},
#endif
#ifdef VANTREL_CODEC_TIFF
    {{"tiff", "TIFF", "tif", kCodecExport}, nullptr, CreateTiffExporter},
#endif
    {{"bmp", "Windows Bitmap", "bmp", kCodecExport}, nullptr, CreateBmpExporter},
#ifdef VANTREL_CODEC_JPX
    {{"jpx", "JPEG 2000", "jp2", kCodecImport}, CreateJpxImporter, nullptr},
#endif
#ifdef VANTREL_CODEC_JBIG2
    {{"jbig2", "JBIG2", "jb2", kCodecImport}, CreateJbig2Importer, nullptr},
#endif
};

const CodecEntry* Find(std::string_view id) {
    auto it = std::find_if(std::begin(kCodecs), std::end(kCodecs), [id](const CodecEntry& c) { return c.info.id == id; });
    return it != std::end(kCodecs) ? &*it : nullptr;
}

std::vector<ivCodecInfo> MakeInfos() {
    std::vector<ivCodecInfo> infos;
    for (const CodecEntry& c : kCodecs) infos.push_back(c.info);
    return infos;
}

}  // namespace

std::span<const ivCodecInfo> RegisteredCodecs() {
    static const std::vector<ivCodecInfo> infos = MakeInfos();
    return infos;
}

const ivCodecInfo* FindCodec(std::string_view id) {
    const CodecEntry* c = Find(id);
    return c ? &c->info : nullptr;
}

template <>
std::unique_ptr<ivImageImporter> CreateInterface<ivImageImporter>(std::string_view id) {
    const CodecEntry* c = Find(id);
    return c && c->importer ? c->importer() : nullptr;
}

template <>
std::unique_ptr<ivImageExporter> CreateInterface<ivImageExporter>(std::string_view id) {
    const CodecEntry* c = Find(id);
    return c && c->exporter ? c->exporter() : nullptr;
}
