#include "ui/shell/ivRecentFiles.h"

#include <algorithm>
#include <cctype>

namespace {

// Case folded for ASCII letters; other characters compare as they are.
bool EqualsNoCase(const std::string& a, const std::string& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

// The first `count` characters of UTF-8 text.
std::string FirstCharacters(const std::string& text, std::size_t count) {
    std::size_t i = 0;
    for (std::size_t n = 0; i < text.size() && n < count; ++n) {
        ++i;
        while (i < text.size() && (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80) ++i;
    }
    return text.substr(0, i);
}

}  // namespace

void ivRecentFiles::Load(ivRecentStore& store) {
    m_entries.clear();
    for (std::size_t i = 0; i < kCapacity; ++i) {
        std::optional<std::string> path = store.Read(std::to_string(i));
        if (!path || path->empty()) break;
        m_entries.push_back({FirstCharacters(*path, kLongestPath), m_nextId++});
    }
    m_changed = false;
}

void ivRecentFiles::Save(ivRecentStore& store) {
    if (!m_changed) return;
    store.Clear();
    for (std::size_t i = 0; i < m_entries.size(); ++i) store.Write(std::to_string(i), m_entries[i].path);
    m_changed = false;
}

void ivRecentFiles::Add(const std::string& path) {
    if (path.empty()) return;
    auto found =
        std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& e) { return e.path == path; });
    if (found != m_entries.end() && found == m_entries.begin()) return;
    if (found != m_entries.end()) {
        std::rotate(m_entries.begin(), found, found + 1);
    } else {
        while (m_entries.size() >= kCapacity) m_entries.pop_back();
        m_entries.insert(m_entries.begin(), {path, m_nextId++});
    }
    m_changed = true;
}

void ivRecentFiles::Remove(const std::string& path) {
    auto found = std::find_if(m_entries.begin(), m_entries.end(),
                              [&](const Entry& e) { return EqualsNoCase(e.path, path); });
    if (found == m_entries.end()) return;
    m_entries.erase(found);
    m_changed = true;
}

const ivRecentFiles::Entry* ivRecentFiles::FindById(int id) const {
    auto found = std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& e) { return e.id == id; });
    return found == m_entries.end() ? nullptr : &*found;
}
