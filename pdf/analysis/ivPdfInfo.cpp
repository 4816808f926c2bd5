#include "pdf/analysis/ivPdfInfo.h"

#include <algorithm>
#include <cstring>
#include <functional>

#include "pdf/analysis/pdfRoles.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace {

constexpr int kMaxParentDepth = 8;  // sections extending sections, a loop included

void CollectKeys(pugi::xml_node section, std::vector<std::pair<std::string, pugi::xml_node>>& keys) {
    for (pugi::xml_node child : section.children()) {
        if (std::strcmp(child.name(), "category") == 0) {
            CollectKeys(child, keys);
        } else if (std::strcmp(child.name(), "i") == 0) {
            pugi::xml_attribute id = child.attribute("id");
            if (id) keys.emplace_back(id.value(), child);
        }
    }
}

}  // namespace

std::filesystem::path ivPdfInfo::ExecutableFolder() {
#ifdef _WIN32
    wchar_t buffer[MAX_PATH];
    DWORD n = GetModuleFileNameW(nullptr, buffer, MAX_PATH);
    if (n == 0 || n == MAX_PATH) return {};
    return std::filesystem::path(std::wstring(buffer, n)).parent_path();
#else
    std::error_code ec;
    std::filesystem::path exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    return ec ? std::filesystem::path() : exe.parent_path();
#endif
}

ivPdfInfo& ivPdfInfo::Instance() {
    static ivPdfInfo instance(ExecutableFolder() / "pdfinfo.xml");
    return instance;
}

ivPdfInfo::ivPdfInfo(const std::filesystem::path& file) {
    if (file.empty() || !m_document.load_file(file.c_str())) return;
    m_root = m_document.child("pdf");
}

ivPdfInfo::RoleCache& ivPdfInfo::CacheFor(std::uint8_t role) {
    auto [it, created] = m_caches.try_emplace(role);
    if (!created) return it->second;
    RoleCache& cache = it->second;
    const char* name = RoleSectionName(role);
    pugi::xml_node section = name ? m_root.child(name) : pugi::xml_node();
    if (!section) return cache;
    if (pugi::xml_attribute parent = section.attribute("parent"))
        cache.parents[0] = RoleFromSectionName(parent.value());
    CollectKeys(section, cache.keys);
    std::stable_sort(cache.keys.begin(), cache.keys.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    return cache;
}

pugi::xml_node ivPdfInfo::Find(std::uint8_t role, std::string_view key) {
    if (!m_root) return {};
    std::lock_guard lock(m_mutex);
    return Find(role, key, 0);
}

pugi::xml_node ivPdfInfo::Find(std::uint8_t role, std::string_view key, int depth) {
    RoleCache& cache = CacheFor(role);
    auto it = std::lower_bound(cache.keys.begin(), cache.keys.end(), key,
                               [](const auto& entry, std::string_view k) { return entry.first < k; });
    if (it != cache.keys.end() && it->first == key) return it->second;
    if (depth >= kMaxParentDepth) return {};
    for (std::uint8_t parent : cache.parents)
        if (parent && parent != role)
            if (pugi::xml_node found = Find(parent, key, depth + 1)) return found;
    return {};
}
