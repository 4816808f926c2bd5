#include "support/TestSupport.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace {

void Walk(const ivMessageNode& node, std::vector<std::string>& scopes, std::vector<std::string>& out,
          bool paths) {
    for (const auto& child : node.children) {
        if (child->isScope) {
            scopes.push_back(child->text);
            Walk(*child, scopes, out, paths);
            scopes.pop_back();
        } else if (paths) {
            std::string line;
            for (const auto& s : scopes) line += s + " > ";
            out.push_back(line + child->text);
        } else {
            out.push_back(child->text);
        }
    }
}

}  // namespace

std::vector<std::string> RecordingControl::Texts() const {
    std::vector<std::string> scopes, out;
    Walk(Messages(), scopes, out, false);
    return out;
}

std::vector<std::string> RecordingControl::Paths() const {
    std::vector<std::string> scopes, out;
    Walk(Messages(), scopes, out, true);
    return out;
}

int RecordingControl::Count(const std::string& text) const {
    auto texts = Texts();
    return static_cast<int>(std::count(texts.begin(), texts.end(), text));
}

ivRef<ivMemStream> MemStream(const std::string& bytes) {
    return ivMemStream::Create(std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
}

std::unique_ptr<pdfDocument> DocFromBytes(const std::string& bytes, ivIOControl* control) {
    return std::make_unique<pdfDocument>(MemStream(bytes), control);
}

std::string TestDataPath(const std::string& relativePath) {
    return std::string(VANTREL_TEST_DATA) + "/" + relativePath;
}

std::string ReadTestFile(const std::string& relativePath) {
    std::ifstream in(TestDataPath(relativePath), std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

// LZW codes (EarlyChange 1) that never clear the table: a run of codes each naming the entry
// just made, so strings grow by a byte per code until the table is full, then `repeats` more
// codes naming the longest string the 12-bit codes reach.
std::string LzwWithoutClearCodes(std::size_t repeats) {
    std::string out;
    std::uint64_t acc = 0;
    int bits = 0, width = 9;
    std::uint32_t nextFree = 258, threshold = 510;
    bool first = true;
    auto put = [&](std::uint32_t code) {
        acc = acc << width | code;
        for (bits += width; bits >= 8; bits -= 8) out += static_cast<char>(acc >> (bits - 8));
        if (first) {
            first = false;
        } else if (nextFree < 5119 && ++nextFree > threshold && width < 12) {
            ++width;
            threshold = (1u << width) - 2;
        }
    };
    put('A');
    while (nextFree <= 4095) put(nextFree);
    for (std::size_t i = 0; i < repeats; ++i) put(4095);
    if (bits) out += static_cast<char>(acc << (8 - bits));
    return out;
}
