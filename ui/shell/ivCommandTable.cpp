#include "ui/shell/ivCommandTable.h"

#include <algorithm>
#include <cctype>

namespace {

std::string_view Trim(std::string_view s) {
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.front()))) s.remove_prefix(1);
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.back()))) s.remove_suffix(1);
    return s;
}

// The next blank-separated word of `s`, which loses it.
std::string_view NextWord(std::string_view& s) {
    s = Trim(s);
    std::size_t end = 0;
    while (end < s.size() && !std::isspace(static_cast<unsigned char>(s[end]))) ++end;
    std::string_view word = s.substr(0, end);
    s.remove_prefix(end);
    return word;
}

std::vector<std::string> SplitKeys(std::string_view keys) {
    std::vector<std::string> out;
    while (!keys.empty()) {
        const std::size_t comma = keys.find(',');
        std::string_view key = Trim(keys.substr(0, comma));
        if (!key.empty()) out.emplace_back(key);
        keys = comma == std::string_view::npos ? std::string_view{} : keys.substr(comma + 1);
    }
    return out;
}

bool SetAttribute(ivCommandInfo& c, std::string_view name, std::string_view value, std::string& error) {
    if (name == "text") {
        c.text = value;
    } else if (name == "hint") {
        c.hint = value;
    } else if (name == "keys") {
        c.keys = SplitKeys(value);
    } else if (name == "image") {
        std::string_view rest = value;
        c.imageLibrary = NextWord(rest);
        const std::string index(Trim(rest));
        if (c.imageLibrary.empty() || index.empty() || !std::all_of(index.begin(), index.end(), [](char ch) {
                return std::isdigit(static_cast<unsigned char>(ch));
            })) {
            error = "image takes a library and an index";
            return false;
        }
        c.imageIndex = std::stoi(index);
    } else if (name == "group") {
        c.group = value;
    } else if (name == "dropdown") {
        c.dropDown = value;
    } else {
        error = "unknown attribute " + std::string(name);
        return false;
    }
    return true;
}

}  // namespace

std::string ivCommandInfo::DisplayText() const {
    const std::size_t bar = text.find('|');
    if (bar == std::string::npos || bar == 0) return text;
    const bool attribute = std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(bar),
                                       [](char ch) { return std::isdigit(static_cast<unsigned char>(ch)); });
    return attribute ? text.substr(bar + 1) : text;
}

bool CommandNamesEqual(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

bool ivCommandTable::Parse(std::string_view text, std::string* error) {
    int lineNumber = 0;
    while (!text.empty()) {
        ++lineNumber;
        const std::size_t end = text.find('\n');
        std::string_view line = Trim(text.substr(0, end));
        text = end == std::string_view::npos ? std::string_view{} : text.substr(end + 1);
        if (line.empty() || line.front() == '#') continue;
        std::string_view rest = line;
        const std::string_view keyword = NextWord(rest);
        std::string why;
        bool ok = false;
        if (keyword == "command")
            ok = ParseCommand(rest, why);
        else if (keyword == "menu" || keyword == "popup")
            ok = ParseMenu(rest, keyword == "popup", why);
        else
            why = "unknown line";
        if (!ok) {
            if (error) *error = "line " + std::to_string(lineNumber) + ": " + why;
            return false;
        }
    }
    return true;
}

bool ivCommandTable::ParseCommand(std::string_view rest, std::string& error) {
    ivCommandInfo c;
    c.name = NextWord(rest);
    if (c.name.empty()) {
        error = "command without a name";
        return false;
    }
    for (rest = Trim(rest); !rest.empty(); rest = Trim(rest)) {
        const std::size_t eq = rest.find("=\"");
        const std::size_t close = eq == std::string_view::npos ? eq : rest.find('"', eq + 2);
        if (close == std::string_view::npos) {
            error = "attributes are written name=\"value\"";
            return false;
        }
        if (!SetAttribute(c, Trim(rest.substr(0, eq)), rest.substr(eq + 2, close - eq - 2), error))
            return false;
        rest.remove_prefix(close + 1);
    }
    m_commands.push_back(std::move(c));
    return true;
}

bool ivCommandTable::ParseMenu(std::string_view rest, bool popup, std::string& error) {
    const std::size_t eq = rest.find('=');
    const std::string_view name = Trim(rest.substr(0, eq));
    if (name.empty() || (popup && m_menus.empty())) {
        error = popup ? "popup without a menu before it" : "menu without a name";
        return false;
    }
    std::vector<ivMenuItem> items;
    for (std::string_view list = eq == std::string_view::npos ? std::string_view{} : rest.substr(eq + 1);;) {
        const std::string_view word = NextWord(list);
        if (word.empty()) break;
        ivMenuItem item;
        if (word == "|")
            item.kind = ivMenuItem::Kind::Separator;
        else
            item.command = word;
        items.push_back(std::move(item));
    }
    if (popup) {
        ivMenuItem entry;
        entry.kind = ivMenuItem::Kind::Popup;
        entry.text = name;
        entry.items = std::move(items);
        m_menus.back().items.push_back(std::move(entry));
    } else {
        m_menus.push_back({std::string(name), std::move(items)});
    }
    return true;
}

const ivCommandInfo* ivCommandTable::Find(std::string_view name) const {
    auto found = std::find_if(m_commands.begin(), m_commands.end(),
                              [&](const ivCommandInfo& c) { return CommandNamesEqual(c.name, name); });
    return found == m_commands.end() ? nullptr : &*found;
}

const ivMenuDef* ivCommandTable::FindMenu(std::string_view name) const {
    auto found = std::find_if(m_menus.begin(), m_menus.end(),
                              [&](const ivMenuDef& m) { return CommandNamesEqual(m.name, name); });
    return found == m_menus.end() ? nullptr : &*found;
}
