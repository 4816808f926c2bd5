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
