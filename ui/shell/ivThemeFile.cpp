#include "ui/shell/ivThemeFile.h"

#include <cctype>

namespace {

struct PropertyName {
    std::string_view name;
    int id;
};

constexpr PropertyName kProperties[] = {
    {"border", 202},          {"border-left", 204},  {"border-inner", 210}, {"border-2", 211},
    {"border-right", 205},    {"border-style", 203}, {"highlight", 207},    {"shadow", 208},
    {"marker", 209},          {"background", 8},     {"background-top", 8}, {"background-bottom", 9},
    {"backgroundStyle", 12},  {"height", 16},        {"width", 17},         {"vseparator", 18},
    {"margins", 206},         {"hseparator", 19},    {"text", 240},         {"text-shadow", 243},
    {"text-decoration", 260}, {"font", 241},         {"imgIndex", 10},      {"imgIndex1", 20},
    {"imgIndex2", 21},        {"imgIndex3", 22},     {"imgIndex4", 23},     {"image", 11},
    {"srcLeft", 13},          {"srcTop", 13},        {"srcRight", 14},      {"srcBottom", 14},
    {"srcMiddle", 15},
};

std::string_view Trim(std::string_view s) {
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.front()))) s.remove_prefix(1);
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.back()))) s.remove_suffix(1);
    return s;
}

}  // namespace

int ThemePropertyId(std::string_view name) {
    for (const PropertyName& p : kProperties)
        if (p.name == name) return p.id;
    return -1;
}

void ivThemeFile::Parse(std::string_view text) {
    std::string section;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::string_view line = Trim(text.substr(0, end));
        text = end == std::string_view::npos ? std::string_view{} : text.substr(end + 1);
        if (line.empty() || line.front() == '#') continue;
        if (line.front() == '[' && line.back() == ']') {
            section = Trim(line.substr(1, line.size() - 2));
            continue;
        }
        const std::size_t eq = line.find('=');
        if (eq == std::string_view::npos) continue;
        const int id = ThemePropertyId(Trim(line.substr(0, eq)));
        if (id >= 0) m_values[{section, id}] = std::string(Trim(line.substr(eq + 1)));
    }
}

std::optional<std::string> ivThemeFile::Get(std::string_view section, int id) const {
    auto found = m_values.find(std::pair<std::string, int>(section, id));
    if (found == m_values.end()) return std::nullopt;
    return found->second;
}
