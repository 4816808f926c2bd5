#include "codecs/CodecTestSupport.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "platform/ivMemStream.h"
#include "support/TestSupport.h"

Bytes ReadCodecFixture(const std::string& name) {
    std::string s = ReadTestFile("codecs/" + name);
    return Bytes(s.begin(), s.end());
}

DecodeResult DecodeBytes(ivImageImporter& importer, std::span<const std::uint8_t> data) {
    DecodeResult r;
    ivMemStream stream(Bytes(data.begin(), data.end()));
    r.status = importer.Decode(stream, r.image);
    r.error = importer.ErrorText();
    return r;
}

Bytes PackedPixels(const ivImage2d& image, int bytesPerPixel) {
    Bytes out;
    const std::size_t rowBytes = std::size_t(image.Width()) * static_cast<std::size_t>(bytesPerPixel);
    for (std::uint32_t y = 0; y < image.Height(); ++y)
        out.insert(out.end(), image.Row(y), image.Row(y) + rowBytes);
    return out;
}

int MaxDifference(const Bytes& a, const Bytes& b) {
    if (a.size() != b.size()) return 256;
    int worst = 0;
    for (std::size_t i = 0; i < a.size(); ++i) worst = std::max(worst, std::abs(int(a[i]) - int(b[i])));
    return worst;
}

void SwapRedBlue(Bytes& pixels) {
    for (std::size_t i = 0; i + 2 < pixels.size(); i += 3) std::swap(pixels[i], pixels[i + 2]);
}

Bytes ReadPbmPixels(const std::string& name, std::uint32_t* width, std::uint32_t* height) {
    std::string file = ReadTestFile("codecs/" + name);
    std::istringstream in(file);
    std::string magic;
    in >> magic >> *width >> *height;
    in.get();  // the one whitespace byte before the bits
    if (magic != "P4" || !in) return {};
    const auto bits = file.substr(static_cast<std::size_t>(in.tellg()));
    const std::size_t stride = (*width + 7) / 8;
    Bytes pixels;
    for (std::uint32_t y = 0; y < *height; ++y)
        for (std::uint32_t x = 0; x < *width; ++x)
            pixels.push_back((static_cast<std::uint8_t>(bits[y * stride + x / 8]) >> (7 - x % 8)) & 1);
    return pixels;
}
