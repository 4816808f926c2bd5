#include "ui/shell/ivCommandLine.h"

#include <algorithm>
#include <cctype>

namespace {

constexpr std::size_t kLongestToken = 1024;

bool EqualsNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

}  // namespace

std::vector<std::string> SplitCommandLine(std::string_view line) {
    std::vector<std::string> tokens;
    std::size_t i = 0;
    for (;;) {
        while (i < line.size() && (line[i] == ' ' || line[i] == '\t')) ++i;
        if (i >= line.size()) return tokens;
        if (line[i] == '"') {
            const std::size_t close = line.find('"', i + 1);
            const std::size_t end = close == std::string_view::npos ? line.size() : close;
            tokens.emplace_back(line.substr(i + 1, end - i - 1));
            i = close == std::string_view::npos ? line.size() : close + 1;
        } else {
            std::size_t end = i;
            while (end < line.size() && line[end] != ' ' && line[end] != '\t') ++end;
            tokens.emplace_back(line.substr(i, end - i));
            i = end;
        }
    }
}

ivCommandLine ScanCommandLine(const std::vector<std::string>& tokens, bool slashOptions) {
    ivCommandLine result;
    for (const std::string& token : tokens) {
        if (token.empty() || token.size() >= kLongestToken) break;
        const bool option =
            token[0] == '-' || (token[0] == '/' && (slashOptions || EqualsNoCase(token, "/scan")));
        if (!option) {
            result.path = token;
        } else if (EqualsNoCase(std::string_view(token).substr(1), "scan")) {
            result.scan = true;  // kept, read by nothing
        }
    }
    return result;
}
