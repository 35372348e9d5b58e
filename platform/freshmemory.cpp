#include "freshmemory.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include <sys/mman.h>
#include <unistd.h>

namespace {

size_t pageSize()
{
    static const size_t size = size_t(::sysconf(_SC_PAGESIZE));
    return size;
}

size_t roundedUp(size_t bytes, size_t unit)
{
    return (std::max<size_t>(bytes, 1) + unit - 1) / unit * unit;
}

// What a region of `bytes` takes: whole huge pages from one huge page on, else whole pages.
size_t mappedSize(size_t bytes)
{
    return bytes >= FreshMemory::kHugePage ? roundedUp(bytes, FreshMemory::kHugePage) : roundedUp(bytes, pageSize());
}

char *mapRegion(size_t size)
{
    if (size < FreshMemory::kHugePage) {
        void *mapping = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapping == MAP_FAILED)
            throw std::bad_alloc();
        return static_cast<char *>(mapping);
    }
    // Mapped with room to start at a huge page's boundary, the rest given back.
    const size_t mapped = size + FreshMemory::kHugePage;
    void *mapping = ::mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED)
        throw std::bad_alloc();
    const auto start = reinterpret_cast<uintptr_t>(mapping);
    const uintptr_t aligned = roundedUp(start, FreshMemory::kHugePage);
    if (aligned > start)
        ::munmap(mapping, aligned - start);
    if (start + mapped > aligned + size)
        ::munmap(reinterpret_cast<void *>(aligned + size), start + mapped - (aligned + size));
    auto *data = reinterpret_cast<char *>(aligned);
#ifdef MADV_HUGEPAGE
    ::madvise(data, size, MADV_HUGEPAGE);
#endif
    return data;
}

void makeReady(char *start, size_t bytes)
{
#ifdef MADV_POPULATE_WRITE
    ::madvise(start, bytes, MADV_POPULATE_WRITE); // older systems refuse it: pages then fault in
#else
    (void)start;
    (void)bytes;
#endif
}

} // namespace

FreshMemory::FreshMemory(size_t bytes)
    : m_data(mapRegion(mappedSize(bytes)))
    , m_size(mappedSize(bytes))
{
}

FreshMemory::~FreshMemory()
{
    if (m_data)
        ::munmap(m_data, m_size);
}

FreshMemory::FreshMemory(FreshMemory &&other) noexcept
    : m_data(std::exchange(other.m_data, nullptr))
    , m_size(std::exchange(other.m_size, 0))
    , m_prepared(std::exchange(other.m_prepared, 0))
{
}

FreshMemory &FreshMemory::operator=(FreshMemory &&other) noexcept
{
    if (this != &other) {
        if (m_data)
            ::munmap(m_data, m_size);
        m_data = std::exchange(other.m_data, nullptr);
        m_size = std::exchange(other.m_size, 0);
        m_prepared = std::exchange(other.m_prepared, 0);
    }
    return *this;
}

void FreshMemory::prepare(size_t bytes)
{
    if (bytes <= m_prepared || !m_data)
        return;
    const size_t end = std::min(m_size, roundedUp(bytes, kHugePage));
    makeReady(m_data + m_prepared, end - m_prepared);
    m_prepared = end;
}

void *FreshMemory::takeReady(size_t bytes)
{
    const size_t size = mappedSize(bytes);
    char *data = mapRegion(size);
    makeReady(data, size);
    return data;
}

void FreshMemory::release(void *memory, size_t bytes) noexcept
{
    if (memory)
        ::munmap(memory, mappedSize(bytes));
}
