#pragma once
#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

// The key-help knowledge base, "pdfinfo.xml" beside the executable: per role section, the
// descriptions of its keys (and, in the section "operators", of the content operators).
class ivPdfInfo {
public:
    // The program's one instance, loaded on first use from the executable's folder.
    static ivPdfInfo& Instance();

    // Loads a file; without it every lookup answers nothing.
    explicit ivPdfInfo(const std::filesystem::path& file);
    bool Loaded() const { return static_cast<bool>(m_root); }

    // The element describing `key` in the section of `role`, or in the sections it extends;
    // an empty node when none does.
    pugi::xml_node Find(std::uint8_t role, std::string_view key);

    // The folder of the running executable; empty when it cannot be told.
    static std::filesystem::path ExecutableFolder();

private:
    struct RoleCache {
        std::array<std::uint8_t, 4> parents{};
        std::vector<std::pair<std::string, pugi::xml_node>> keys;  // sorted by key
    };
    RoleCache& CacheFor(std::uint8_t role);
    pugi::xml_node Find(std::uint8_t role, std::string_view key, int depth);

    pugi::xml_document m_document;
    pugi::xml_node m_root;
    std::map<std::uint8_t, RoleCache> m_caches;
    std::mutex m_mutex;  // views on several threads may ask at once
};
