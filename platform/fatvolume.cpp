// FAT12 and FAT16 floppy and small disk images, read here rather than through mtools: mtools is a
// set of commands, not a library, so each directory would cost a process and a parse of mdir's
// columns (names with blanks, a short and a long name on one line, the locale's date format).
// What a walk needs of FAT is small: the boot sector, the FAT, directory entries, long names.
#include "imagevolume.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::uint64_t kMaxDirectory = 2u << 20; // 65,536 entries, FAT's own limit
// The root's place among directories: no cluster number (16 bits) can be it.
constexpr std::uint64_t kRoot = std::uint64_t(1) << 32;

class FatVolume final : public ImageVolume
{
public:
    ~FatVolume() override
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }

    bool mount(const QString &path);
    ImageKind kind() const override { return ImageKind::Floppy; }
    ImageDirectory root() override { return {kRoot, m_rootBytes, {}}; }
    bool list(const ImageDirectory &directory, QByteArrayView path, DirectoryListing &entries,
              std::vector<ImageDirectory> &children) override;
    bool copyFile(const ImageDirectory &directory, QByteArrayView path, QByteArrayView name,
                  QIODevice &out) override;

private:
    // Reads the directory and calls `visit` (name, whether a directory, the 32-byte entry) for each
    // shown entry until it returns false.
    template <typename Visit>
    bool forEachEntry(const ImageDirectory &directory, Visit visit);
    bool readAt(std::uint64_t offset, size_t size, char *out) const;
    std::uint32_t next(std::uint32_t cluster) const;
    bool readChain(std::uint32_t first);

    int m_fd = -1;
    std::uint64_t m_fileSize = 0;
    std::uint32_t m_clusterBytes = 0;
    std::uint64_t m_rootOffset = 0;
    std::uint32_t m_rootBytes = 0;
    std::uint64_t m_dataOffset = 0;
    std::uint32_t m_clusters = 0; // data clusters, numbered from 2
    bool m_fat12 = true;
    std::vector<unsigned char> m_fat;
    std::vector<char> m_directory;
    QByteArray m_longName;
    std::array<unsigned char, 260> m_units{}; // a long name's UCS-2 units, at most 20 parts of 13
};

bool FatVolume::readAt(std::uint64_t offset, size_t size, char *out) const
{
    if (offset + size > m_fileSize)
        return false;
    while (size > 0) {
        const ssize_t got = ::pread(m_fd, out, size, off_t(offset));
        if (got <= 0)
            return false;
        out += got;
        size -= size_t(got);
        offset += std::uint64_t(got);
    }
    return true;
}

bool FatVolume::mount(const QString &path)
{
    m_fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    struct stat st;
    if (m_fd < 0 || ::fstat(m_fd, &st) != 0 || !S_ISREG(st.st_mode))
        return false;
    m_fileSize = std::uint64_t(st.st_size);
    unsigned char boot[512];
    if (!readAt(0, sizeof boot, reinterpret_cast<char *>(boot)) || boot[510] != 0x55 || boot[511] != 0xAA)
        return false;
    const std::uint32_t sectorBytes = le16(boot + 11), perCluster = boot[13], reserved = le16(boot + 14);
    const std::uint32_t fats = boot[16], rootEntries = le16(boot + 17), fatSectors = le16(boot + 22);
    const std::uint32_t total = le16(boot + 19) != 0 ? le16(boot + 19) : le32(boot + 32);
    const bool powerOfTwo = perCluster != 0 && (perCluster & (perCluster - 1)) == 0;
    if ((sectorBytes != 512 && sectorBytes != 1024 && sectorBytes != 2048 && sectorBytes != 4096) || !powerOfTwo
        || reserved == 0 || fats == 0 || fats > 4 || fatSectors == 0 || rootEntries == 0)
        return false; // FAT32 has no fixed root (and 0 sectors per FAT here): not a floppy's FAT
    m_clusterBytes = sectorBytes * perCluster;
    m_rootOffset = std::uint64_t(reserved + fats * fatSectors) * sectorBytes;
    m_rootBytes = rootEntries * 32;
    m_dataOffset = m_rootOffset + (m_rootBytes + sectorBytes - 1) / sectorBytes * sectorBytes;
    const std::uint64_t dataSectors = total > m_dataOffset / sectorBytes ? total - m_dataOffset / sectorBytes : 0;
    m_clusters = std::uint32_t(dataSectors / perCluster);
    if (m_clusters >= 65525)
        return false;
    m_fat12 = m_clusters < 4085;
    const std::uint64_t fatBytes = std::uint64_t(fatSectors) * sectorBytes;
    const std::uint64_t needed = m_fat12 ? (std::uint64_t(m_clusters) + 2) * 3 / 2 + 1 : (std::uint64_t(m_clusters) + 2) * 2;
    if (fatBytes < needed)
        return false;
    m_fat.resize(size_t(needed));
    return readAt(std::uint64_t(reserved) * sectorBytes, m_fat.size(), reinterpret_cast<char *>(m_fat.data()));
}

std::uint32_t FatVolume::next(std::uint32_t cluster) const
{
    if (m_fat12) {
        const std::uint32_t value = le16(m_fat.data() + cluster * 3 / 2);
        return (cluster & 1) != 0 ? value >> 4 : value & 0xFFF;
    }
    return le16(m_fat.data() + cluster * 2);
}

// A sub-directory's clusters, one after the other; a chain longer than the volume has clusters
// (a loop) or leaving the data area is a damaged directory.
bool FatVolume::readChain(std::uint32_t first)
{
    m_directory.clear();
    std::uint32_t cluster = first;
    for (std::uint32_t steps = 0; cluster >= 2 && cluster < m_clusters + 2; ++steps) {
        if (steps >= m_clusters || m_directory.size() + m_clusterBytes > kMaxDirectory)
            return false;
        const size_t at = m_directory.size();
        m_directory.resize(at + m_clusterBytes);
        if (!readAt(m_dataOffset + std::uint64_t(cluster - 2) * m_clusterBytes, m_clusterBytes, m_directory.data() + at))
            return false;
        cluster = next(cluster);
    }
    const std::uint32_t end = m_fat12 ? 0xFF8 : 0xFFF8;
    return cluster >= end && !m_directory.empty();
}

unsigned char shortNameSum(const unsigned char *entry)
{
    unsigned char sum = 0;
    for (int i = 0; i < 11; ++i)
        sum = static_cast<unsigned char>(((sum & 1) << 7) + (sum >> 1) + entry[i]);
    return sum;
}

template <typename Visit>
bool FatVolume::forEachEntry(const ImageDirectory &directory, Visit visit)
{
    if (directory.where == kRoot) {
        m_directory.resize(m_rootBytes);
        if (!readAt(m_rootOffset, m_rootBytes, m_directory.data()))
            return false;
    } else if (!readChain(std::uint32_t(directory.where))) {
        return false;
    }
    int longParts = 0; // parts of the long name gathered so far, counted down from the last
    unsigned char longSum = 0;
    int expected = 0;
    QByteArray name;
    for (size_t at = 0; at + 32 <= m_directory.size(); at += 32) {
        const auto *e = reinterpret_cast<const unsigned char *>(m_directory.data() + at);
        if (e[0] == 0)
            break;
        if (e[0] == 0xE5) {
            longParts = 0;
            continue;
        }
        const unsigned char attributes = e[11];
        if ((attributes & 0x3F) == 0x0F) {
            const int sequence = e[0] & 0x1F;
            if (e[0] & 0x40) {
                longParts = sequence;
                expected = sequence;
                longSum = e[13];
            } else if (sequence != expected - 1 || e[13] != longSum) {
                longParts = 0;
                continue;
            } else {
                expected = sequence;
            }
            if (sequence < 1 || sequence > 20) {
                longParts = 0;
                continue;
            }
            unsigned char *units = m_units.data() + (sequence - 1) * 26;
            std::memcpy(units, e + 1, 10);
            std::memcpy(units + 10, e + 14, 12);
            std::memcpy(units + 22, e + 28, 4);
            continue;
        }
        const bool hasLong = longParts > 0 && expected == 1 && longSum == shortNameSum(e);
        const int parts = longParts;
        longParts = 0;
        if (attributes & 0x08)
            continue; // the volume label
        name.clear();
        if (hasLong) {
            size_t count = size_t(parts) * 13;
            for (size_t k = 0; k < count; ++k) {
                if (m_units[2 * k] == 0 && m_units[2 * k + 1] == 0) {
                    count = k;
                    break;
                }
            }
            appendUtf16AsUtf8(m_units.data(), count, false, name);
        } else {
            // The 8.3 name, lower-cased where the entry's case bits say so.
            const auto part = [&](int from, int length, bool lower) {
                int end = from + length;
                while (end > from && e[end - 1] == ' ')
                    --end;
                for (int k = from; k < end; ++k) {
                    unsigned char c = (k == 0 && e[k] == 0x05) ? 0xE5 : e[k];
                    if (lower && c >= 'A' && c <= 'Z')
                        c = static_cast<unsigned char>(c + 32);
                    name.append(char(c));
                }
                return end > from;
            };
            part(0, 8, e[12] & 0x08);
            const qsizetype base = name.size();
            name.append('.');
            if (!part(8, 3, e[12] & 0x10))
                name.truncate(base);
        }
        if (name.isEmpty() || name == "." || name == ".." || name.contains('/') || name.contains('\0'))
            continue;
        if (!visit(name, bool(attributes & 0x10), e))
            break;
    }
    return true;
}

bool FatVolume::list(const ImageDirectory &directory, QByteArrayView, DirectoryListing &entries,
                     std::vector<ImageDirectory> &children)
{
    return forEachEntry(directory, [&](const QByteArray &name, bool isDirectory, const unsigned char *entry) {
        entries.add(name, isDirectory);
        if (isDirectory)
            children.push_back({le16(entry + 26), 0, name});
        return true;
    });
}

bool FatVolume::copyFile(const ImageDirectory &directory, QByteArrayView, QByteArrayView name, QIODevice &out)
{
    std::uint32_t cluster = 0;
    std::uint64_t left = 0;
    bool found = false;
    if (!forEachEntry(directory, [&](const QByteArray &entryName, bool isDirectory, const unsigned char *entry) {
            if (isDirectory || entryName != name)
                return true;
            cluster = le16(entry + 26);
            left = le32(entry + 28);
            found = true;
            return false;
        })
        || !found)
        return false;
    // The chain must hold the whole size, and a loop in it ends after as many steps as clusters.
    std::vector<char> buffer(m_clusterBytes);
    for (std::uint32_t steps = 0; left > 0; ++steps) {
        if (steps >= m_clusters || cluster < 2 || cluster >= m_clusters + 2)
            return false;
        const std::uint32_t bytes = std::uint32_t(std::min<std::uint64_t>(left, m_clusterBytes));
        if (!readAt(m_dataOffset + std::uint64_t(cluster - 2) * m_clusterBytes, bytes, buffer.data())
            || out.write(buffer.data(), bytes) != bytes)
            return false;
        left -= bytes;
        cluster = next(cluster);
    }
    return true;
}

} // namespace

std::unique_ptr<ImageVolume> openFatVolume(const QString &path)
{
    auto volume = std::make_unique<FatVolume>();
    if (!volume->mount(path))
        return nullptr;
    return volume;
}
