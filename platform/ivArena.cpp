#include "platform/ivArena.h"

void* ivArena::AllocateSlow(std::size_t size, std::size_t align) {
    // Large requests get a block of their own so the current block keeps serving small ones.
    if (size + align > m_blockSize / 4) {
        m_blocks.push_back(std::unique_ptr<std::byte[]>(new std::byte[size + align]));  // no zeroing
        auto raw = reinterpret_cast<std::uintptr_t>(m_blocks.back().get());
        auto aligned = (raw + align - 1) & ~(std::uintptr_t(align) - 1);
        m_bytes += size;
        return reinterpret_cast<void*>(aligned);
    }
    m_blocks.push_back(std::unique_ptr<std::byte[]>(new std::byte[m_blockSize]));
    m_block = m_blocks.back().get();
    m_capacity = m_blockSize;
    m_used = 0;
    return Allocate(size, align);
}
