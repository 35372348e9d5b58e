#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>
#include <vector>

// Large memory taken from the system and made ready before it is used. Memory a process gets anew
// is cleared and mapped a page at a time, at the first touch of each page; on a virtual machine each
// of those faults is a trap that costs several microseconds, more than clearing the page, while
// readying many pages in one call costs little more than clearing them. Regions of a huge page or
// more start at a huge page's boundary and ask for huge pages, which the system gives where it has
// them (each then also saves address translations).
class FreshMemory
{
public:
    static constexpr size_t kHugePage = size_t(2) << 20;

    FreshMemory() = default;
    // At least `bytes` (whole pages); nothing is made ready yet. Throws std::bad_alloc.
    explicit FreshMemory(size_t bytes);
    ~FreshMemory();
    FreshMemory(FreshMemory &&other) noexcept;
    FreshMemory &operator=(FreshMemory &&other) noexcept;
    FreshMemory(const FreshMemory &) = delete;
    FreshMemory &operator=(const FreshMemory &) = delete;

    char *data() const { return m_data; }
    size_t size() const { return m_size; }

    // Makes the first `bytes` ready in one call, a huge page at least at a time (what is ready
    // already is left). A hint: where the system cannot, pages are readied at their first touch.
    void prepare(size_t bytes);

    // A region of at least `bytes`, made ready whole; `release` takes it back with the same `bytes`.
    static void *takeReady(size_t bytes);
    static void release(void *memory, size_t bytes) noexcept;

private:
    char *m_data = nullptr;
    size_t m_size = 0;
    size_t m_prepared = 0;
};

// For vectors that may grow large: from 16 KB on their room is FreshMemory, made ready whole; smaller
// ones come from malloc, which reuses what the process has freed.
template<typename T>
struct FreshAllocator
{
    using value_type = T;
    static constexpr size_t kFromSystem = size_t(16) << 10;

    FreshAllocator() = default;
    template<typename U>
    FreshAllocator(const FreshAllocator<U> &) noexcept
    {
    }

    T *allocate(size_t count)
    {
        const size_t bytes = count * sizeof(T);
        if (bytes >= kFromSystem)
            return static_cast<T *>(FreshMemory::takeReady(bytes));
        void *memory = alignof(T) > alignof(std::max_align_t)
                           ? std::aligned_alloc(alignof(T), (bytes + alignof(T) - 1) / alignof(T) * alignof(T))
                           : std::malloc(bytes);
        if (!memory)
            throw std::bad_alloc();
        return static_cast<T *>(memory);
    }
    void deallocate(T *memory, size_t count) noexcept
    {
        const size_t bytes = count * sizeof(T);
        if (bytes >= kFromSystem)
            FreshMemory::release(memory, bytes);
        else
            std::free(memory);
    }

    template<typename U>
    bool operator==(const FreshAllocator<U> &) const noexcept
    {
        return true;
    }
};

template<typename T>
using LargeVector = std::vector<T, FreshAllocator<T>>;
