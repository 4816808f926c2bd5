#pragma once
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

// Where the list is kept: one string value a position, named by the position ("0" is the
// most recent). The settings class gives the real one; tests give their own.
class ivRecentStore {
public:
    virtual ~ivRecentStore() = default;
    virtual std::optional<std::string> Read(const std::string& name) = 0;
    virtual void Clear() = 0;  // deletes every value
    virtual void Write(const std::string& name, const std::string& value) = 0;
};

// The recent-files list, most recent first. Every entry keeps the identifier it got when it
// was loaded or added, also when it moves to the front, so that a menu item made from it
// still finds it.
class ivRecentFiles {
public:
    struct Entry {
        std::string path;  // UTF-8
        int id;
    };
    static constexpr std::size_t kCapacity = 20;
    static constexpr std::size_t kLongestPath = 260;  // characters read back from the store

    // Reads "0", "1", … up to the first value that is missing or empty.
    void Load(ivRecentStore& store);
    // Rewrites the store, only when the list changed since it was loaded or saved.
    void Save(ivRecentStore& store);
    // Puts `path` in front: an entry already there moves (the first one changes nothing); a
    // new one drops entries from the end to make room. An empty path is ignored.
    void Add(const std::string& path);
    // Removes the first entry equal to `path` without regard to case.
    void Remove(const std::string& path);

    const std::vector<Entry>& Entries() const { return m_entries; }
    const Entry* FindById(int id) const;
    bool Changed() const { return m_changed; }

private:
    std::vector<Entry> m_entries;
    int m_nextId = 0;
    bool m_changed = false;
};
