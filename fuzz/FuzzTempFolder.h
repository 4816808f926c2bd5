#pragma once
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

// The one folder a fuzz target may write to: made under TMPDIR when first asked for, emptied
// after every input by Clear(), and removed when the process ends normally.
class FuzzTempFolder {
public:
    static FuzzTempFolder& Instance() {
        static FuzzTempFolder folder;
        return folder;
    }
    const std::filesystem::path& Path() const { return m_path; }

    void Clear() const {
        std::error_code ec;
        for (const auto& item : std::filesystem::directory_iterator(m_path, ec))
            std::filesystem::remove_all(item.path(), ec);
    }

    FuzzTempFolder(const FuzzTempFolder&) = delete;
    FuzzTempFolder& operator=(const FuzzTempFolder&) = delete;

private:
    FuzzTempFolder() {
        std::error_code ec;
        std::string pattern = (std::filesystem::temp_directory_path(ec) / "vantrel-fuzz-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) std::abort();  // nowhere safe to write
        m_path = pattern;
    }
    ~FuzzTempFolder() {
        std::error_code ec;
        std::filesystem::remove_all(m_path, ec);
    }

    std::filesystem::path m_path;
};
