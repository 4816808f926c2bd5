#pragma once
#include <cstdint>
#include <memory>
#include <vector>

struct pdfObject;

// The parser's output: the records read, and where stream data starts when a "stream"
// keyword ended the parse (0 otherwise).
struct ObjList {
    std::vector<pdfObject*> items;
    std::uint32_t streamPos = 0;
};

// Lists are reused: a parse takes one, copies the records out and gives it back, so the
// vectors keep their capacity from one object to the next.
class ObjListPool {
public:
    std::unique_ptr<ObjList> Take() {
        if (m_free.empty()) return std::make_unique<ObjList>();
        auto list = std::move(m_free.back());
        m_free.pop_back();
        return list;
    }
    void Give(std::unique_ptr<ObjList> list) {
        list->items.clear();
        list->streamPos = 0;
        m_free.push_back(std::move(list));
    }

private:
    std::vector<std::unique_ptr<ObjList>> m_free;
};

// Holds a pooled list for the length of a scope and gives it back on every path.
class PooledList {
public:
    explicit PooledList(ObjListPool& pool) : m_pool(pool), m_list(pool.Take()) {}
    ~PooledList() { m_pool.Give(std::move(m_list)); }
    PooledList(const PooledList&) = delete;
    PooledList& operator=(const PooledList&) = delete;
    ObjList& operator*() { return *m_list; }
    ObjList* operator->() { return m_list.get(); }

private:
    ObjListPool& m_pool;
    std::unique_ptr<ObjList> m_list;
};
