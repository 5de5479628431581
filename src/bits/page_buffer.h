#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

constexpr size_t PAGE_ALIGNMENT = 4096;

// Allocates at page boundaries. The kernel copies between a file and a buffer that is not aligned at half the speed on
// some processors.
template <typename T>
struct PageAllocator {
    using value_type = T;
    PageAllocator() = default;
    template <typename U>
    explicit PageAllocator(const PageAllocator<U>&) {}
    T* allocate(size_t count) {
        return static_cast<T*>(::operator new (count * sizeof(T), std::align_val_t{PAGE_ALIGNMENT}));
    }
    void deallocate(T* pointer, size_t) { ::operator delete (pointer, std::align_val_t{PAGE_ALIGNMENT}); }
    bool operator==(const PageAllocator&) const { return true; }
};

// Bytes on their way between a file and the program.
using PageBuffer = std::vector<uint8_t, PageAllocator<uint8_t>>;
