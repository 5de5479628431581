#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>

namespace quorlin {

constexpr size_t PAGE_ALIGNMENT = 4096;

struct PageDeleter {
    void operator()(uint8_t* bytes) const { ::operator delete (bytes, std::align_val_t{PAGE_ALIGNMENT}); }
};

// Bytes on their way between a file and the program, at a page boundary: the kernel copies between a file and a buffer
// that is not aligned at half the speed on some processors.
struct PageBuffer {
    std::unique_ptr<uint8_t[], PageDeleter> bytes;
    size_t size = 0;
};

// Makes room for `size` bytes at least. They are not cleared: a buffer is large and is filled by what follows.
inline void page_buffer_allocate(PageBuffer& buffer, size_t size) {
    if (buffer.bytes && buffer.size >= size) return;
    buffer = {};
    buffer.bytes.reset(static_cast<uint8_t*>(::operator new (size, std::align_val_t{PAGE_ALIGNMENT})));
    buffer.size = size;
}

inline std::span<uint8_t> page_buffer_bytes(const PageBuffer& buffer) {
    return {buffer.bytes.get(), buffer.size};
}

}  // namespace quorlin
