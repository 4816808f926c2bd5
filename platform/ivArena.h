#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

// The document arena: bump allocation in blocks, freed all at once with the arena.
// Only trivially destructible types may live here, since nothing is destroyed one by one.
class ivArena {
public:
    explicit ivArena(std::size_t blockSize = 0x20000) : m_blockSize(blockSize) {}
    ivArena(const ivArena&) = delete;
    ivArena& operator=(const ivArena&) = delete;

    // Throws std::bad_alloc when memory runs out; the core's entry points catch it.
    void* Allocate(std::size_t size, std::size_t align = alignof(std::max_align_t)) {
        std::size_t at = (m_used + align - 1) & ~(align - 1);
        if (at + size > m_capacity) return AllocateSlow(size, align);
        m_used = at + size;
        m_bytes += size;
        return m_block + at;
    }

    template <class T, class... Args>
    T* New(Args&&... args) {
        static_assert(std::is_trivially_destructible_v<T>, "arena objects are never destroyed");
        return ::new (Allocate(sizeof(T), alignof(T))) T{std::forward<Args>(args)...};
    }

    // Bytes handed out so far (without alignment gaps).
    std::size_t BytesAllocated() const { return m_bytes; }

private:
    void* AllocateSlow(std::size_t size, std::size_t align);

    std::size_t m_blockSize;
    std::vector<std::unique_ptr<std::byte[]>> m_blocks;
    std::byte* m_block = nullptr;
    std::size_t m_used = 0;
    std::size_t m_capacity = 0;
    std::size_t m_bytes = 0;
};
