#include "directorylister.h"

#include "windows1252.h"

#include <algorithm>
#include <cstring>

void DirectoryListing::clear()
{
    m_namesSize = 0;
    m_entries.clear();
}

void DirectoryListing::add(QByteArrayView nativeName, bool isDirectory)
{
    const size_t at = m_namesSize;
    const size_t length = size_t(nativeName.size());
    // The catalogue name is never longer than the native one: room for both.
    if (at + 2 * length > m_namesCapacity) {
        // Small at first: a walk keeps one listing per depth, and a deep chain has thousands.
        const size_t capacity = std::max<size_t>(2 * (at + 2 * length), 256);
        auto names = std::make_unique_for_overwrite<char[]>(capacity);
        if (at > 0) // the first buffer has nothing to keep (and no address to copy from)
            std::memcpy(names.get(), m_names.get(), at);
        m_names = std::move(names);
        m_namesCapacity = capacity;
    }
    char *native = m_names.get() + at;
    std::memcpy(native, nativeName.data(), length);
    char *archive = native + length;
    const size_t archiveLength = size_t(Windows1252::fromNativeFileName(nativeName, archive) - archive);
    m_namesSize = at + length + archiveLength;

    std::uint64_t key = 0;
    for (size_t k = 0; k < std::min<size_t>(archiveLength, 8); ++k)
        key |= std::uint64_t(Windows1252::kUpper[static_cast<unsigned char>(archive[k])]) << (56 - 8 * k);
    m_entries.push_back({key, {std::uint32_t(at), std::uint32_t(length)},
                         {std::uint32_t(at + length), std::uint32_t(archiveLength)}, isDirectory});
}

void DirectoryListing::addDots()
{
    add(".", true);
    add("..", true);
}

bool DirectoryListing::less(const Entry &a, const Entry &b) const
{
    if (a.key != b.key)
        return a.key < b.key;
    // Equal keys: the names agree on their first eight bytes ignoring case, or are equally short.
    const QByteArrayView x = name(a.archive), y = name(b.archive);
    const qsizetype common = std::min(x.size(), y.size());
    qsizetype i = 8;
    // Bytes stored alike compare alike: a long shared stretch ("Fichier numéro 00...") is passed
    // eight at a time.
    while (i + 8 <= common && std::memcmp(x.data() + i, y.data() + i, 8) == 0)
        i += 8;
    for (; i < common; ++i) {
        const unsigned char cx = Windows1252::kUpper[static_cast<unsigned char>(x[i])];
        const unsigned char cy = Windows1252::kUpper[static_cast<unsigned char>(y[i])];
        if (cx != cy)
            return cx < cy;
    }
    if (x.size() != y.size())
        return x.size() < y.size();
    const QByteArrayView nx = name(a.native), ny = name(b.native);
    const int bytes = std::memcmp(nx.data(), ny.data(), size_t(std::min(nx.size(), ny.size())));
    return bytes != 0 ? bytes < 0 : nx.size() < ny.size();
}

void DirectoryListing::sortFrom(qsizetype first)
{
    std::sort(m_entries.begin() + first, m_entries.end(),
              [this](const Entry &a, const Entry &b) { return less(a, b); });
}
