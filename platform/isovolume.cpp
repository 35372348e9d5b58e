// ISO 9660 with Joliet and Rock Ridge, read the way the kernel's mount shows it: the Rock Ridge
// tree when the root says it has one (SUSP "SP"), else the Joliet tree, else the plain names less
// their version. Each directory's extent is read in one call; names are decoded by hand, since a
// converter per entry cost more than the reading.
#include "imagevolume.h"

#include <cdio/iso9660.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

constexpr std::uint32_t kSector = ISO_BLOCKSIZE;
// A directory larger than this is no real one (a damaged size): it is refused, not read.
constexpr std::uint64_t kMaxDirectory = 16u << 20;
// Continuation areas one record may chain through, so that a loop of them ends.
constexpr int kMaxContinuations = 16;
constexpr size_t kExtent = offsetof(iso9660_dir_t, extent);
constexpr size_t kSize = offsetof(iso9660_dir_t, size);
constexpr size_t kFlags = offsetof(iso9660_dir_t, file_flags);
constexpr size_t kNameLength = offsetof(iso9660_dir_t, filename);
constexpr size_t kName = kNameLength + 1;

// The directory record at `at` in an extent of `size` bytes, `at` moved past it; null where a
// sector's records end (no record crosses a sector: a zero or impossible length), `at` then
// moved to the next sector.
const unsigned char *nextRecord(const unsigned char *extent, std::uint64_t size, std::uint64_t &at)
{
    const unsigned char *record = extent + at;
    const std::uint64_t inSector = kSector - at % kSector;
    const size_t length = record[0];
    if (length == 0 || length < kName || length > inSector || at + length > size) {
        at += inSector;
        return nullptr;
    }
    at += length;
    return record;
}
constexpr size_t kPvdRoot = offsetof(iso9660_pvd_t, root_directory_record);
constexpr size_t kSvdEscapes = offsetof(iso9660_svd_t, escape_sequences);

enum class Names { RockRidge, Joliet, Plain };

// What a record's System Use area says (Rock Ridge).
struct RockRidge
{
    QByteArray name;       // NM, joined; empty when none
    bool hasName = false;
    bool dots = false;     // NM for "." or ".."
    bool relocated = false; // RE: shown at its real place, not here
    std::int64_t child = -1; // CL: a relocated directory's real extent
    bool link = false;     // PX says symbolic link
};

class IsoVolume final : public ImageVolume
{
public:
    explicit IsoVolume(std::unique_ptr<SectorReader> sectors)
        : m_sectors(std::move(sectors))
    {
    }

    bool mount();
    ImageKind kind() const override { return ImageKind::Cd; }
    ImageDirectory root() override { return m_root; }
    bool list(const ImageDirectory &directory, QByteArrayView path, DirectoryListing &entries,
              std::vector<ImageDirectory> &children) override;
    bool copyFile(const ImageDirectory &directory, QByteArrayView path, QByteArrayView name,
                  QIODevice &out) override;

private:
    // One entry of a directory as the mount shows it.
    struct IsoEntry
    {
        QByteArrayView name; // valid during the visit only
        bool isDirectory;
        bool link;
        std::uint64_t where;
        std::uint64_t size;
        bool multiExtent; // the file goes on in the next record
        std::uint64_t next; // where the next record begins in m_extent
    };
    // Reads the directory's extent and calls `visit` for each shown entry until it returns false.
    template <typename Visit>
    bool forEachEntry(const ImageDirectory &directory, Visit visit);
    bool readExtent(std::uint32_t sector, std::uint64_t size);
    void readSystemUse(const unsigned char *area, size_t length, RockRidge &rr, int depth);
    std::uint64_t sizeOfDirectoryAt(std::uint32_t sector);

    std::unique_ptr<SectorReader> m_sectors;
    ImageDirectory m_root;
    Names m_names = Names::Plain;
    unsigned m_skip = 0; // SUSP bytes to skip at the start of every System Use area
    std::unique_ptr<char[]> m_extent;
    std::uint64_t m_extentCapacity = 0;
    std::uint64_t m_extentSize = 0; // the directory last read into m_extent
    char m_continuation[kSector];
    QByteArray m_name;
};

ImageDirectory rootOf(const unsigned char *descriptor)
{
    const unsigned char *record = descriptor + kPvdRoot;
    return {le32(record + kExtent), le32(record + kSize), {}};
}

bool IsoVolume::mount()
{
    const std::uint32_t start = m_sectors->sessionStart();
    unsigned char descriptor[kSector];
    bool primary = false;
    ImageDirectory joliet;
    bool hasJoliet = false;
    for (std::uint32_t i = 0; i < 32; ++i) {
        if (!m_sectors->read(start + ISO_PVD_SECTOR + i, 1, reinterpret_cast<char *>(descriptor)))
            break;
        if (std::memcmp(descriptor + 1, ISO_STANDARD_ID, 5) != 0 || descriptor[0] == ISO_VD_END)
            break;
        if (descriptor[0] == ISO_VD_PRIMARY && !primary) {
            m_root = rootOf(descriptor);
            primary = true;
        } else if (descriptor[0] == ISO_VD_SUPPLEMENTARY && !hasJoliet) {
            const unsigned char *esc = descriptor + kSvdEscapes;
            if (esc[0] == '%' && esc[1] == '/' && (esc[2] == '@' || esc[2] == 'C' || esc[2] == 'E')) {
                joliet = rootOf(descriptor);
                hasJoliet = true;
            }
        }
    }
    if (!primary || !readExtent(std::uint32_t(m_root.where), kSector))
        return false;
    // Rock Ridge: the root's "." record begins its System Use area with "SP" and BE EF.
    const auto *dot = reinterpret_cast<const unsigned char *>(m_extent.get());
    const size_t length = dot[0];
    const size_t su = kName + dot[kNameLength] + ((dot[kNameLength] & 1) == 0 ? 1 : 0);
    if (length >= su + 7 && dot[su] == 'S' && dot[su + 1] == 'P' && dot[su + 4] == 0xBE && dot[su + 5] == 0xEF) {
        m_names = Names::RockRidge;
        m_skip = dot[su + 6];
    } else if (hasJoliet) {
        m_names = Names::Joliet;
        m_root = joliet;
    }
    return true;
}

bool IsoVolume::readExtent(std::uint32_t sector, std::uint64_t size)
{
    if (size > kMaxDirectory)
        return false;
    const std::uint32_t count = std::uint32_t((size + kSector - 1) / kSector);
    if (std::uint64_t(count) * kSector > m_extentCapacity) {
        m_extentCapacity = std::max<std::uint64_t>(std::uint64_t(count) * kSector, 64 * kSector);
        m_extent = std::make_unique_for_overwrite<char[]>(m_extentCapacity);
    }
    return m_sectors->read(sector, count, m_extent.get());
}

void IsoVolume::readSystemUse(const unsigned char *area, size_t length, RockRidge &rr, int depth)
{
    for (size_t at = 0; at + 4 <= length;) {
        const unsigned char *e = area + at;
        const size_t size = e[2];
        if (size < 4 || at + size > length)
            return;
        const auto is = [e](char a, char b) { return e[0] == a && e[1] == b; };
        if (is('N', 'M') && size >= 5) {
            const unsigned char flags = e[4];
            if (flags & 0x06)
                rr.dots = true;
            rr.name.append(reinterpret_cast<const char *>(e + 5), qsizetype(size - 5));
            rr.hasName = true;
        } else if (is('R', 'E')) {
            rr.relocated = true;
        } else if (is('C', 'L') && size >= 12) {
            rr.child = le32(e + 4);
        } else if (is('P', 'X') && size >= 12) {
            rr.link = (le32(e + 4) & 0170000) == 0120000;
        } else if (is('S', 'T')) {
            return;
        } else if (is('C', 'E') && size >= 28 && depth < kMaxContinuations) {
            const std::uint32_t block = le32(e + 4), offset = le32(e + 12), ceLength = le32(e + 20);
            if (offset < kSector && ceLength <= kSector - offset
                && m_sectors->read(block, 1, m_continuation)) {
                // The area is read into a copy: a continuation may continue in the same sector.
                unsigned char copy[kSector];
                std::memcpy(copy, m_continuation + offset, ceLength);
                readSystemUse(copy, ceLength, rr, depth + 1);
            }
            return; // a CE ends its area
        }
        at += size;
    }
}

// A relocated directory's size, from its own "." record.
std::uint64_t IsoVolume::sizeOfDirectoryAt(std::uint32_t sector)
{
    unsigned char first[kSector];
    if (!m_sectors->read(sector, 1, reinterpret_cast<char *>(first)) || first[0] < kName)
        return 0;
    return le32(first + kSize);
}

template <typename Visit>
bool IsoVolume::forEachEntry(const ImageDirectory &directory, Visit visit)
{
    std::uint64_t size = directory.size;
    if (size == 0) // a relocated directory, known only by where it is
        size = sizeOfDirectoryAt(std::uint32_t(directory.where));
    if (size == 0 || !readExtent(std::uint32_t(directory.where), size))
        return false;
    m_extentSize = size;
    const auto *extent = reinterpret_cast<const unsigned char *>(m_extent.get());
    bool continued = false; // the last record was not its file's last extent
    for (std::uint64_t at = 0; at < size;) {
        const unsigned char *record = nextRecord(extent, size, at);
        if (!record)
            continue;
        const size_t length = record[0];
        const size_t nameLength = record[kNameLength];
        if (kName + nameLength > length)
            continue;
        const unsigned char flags = record[kFlags];
        const bool wasContinued = continued;
        continued = flags & ISO_MULTIEXTENT;
        if (wasContinued || (flags & ISO_ASSOCIATED))
            continue; // the later extents of one file; associated files are not shown
        const unsigned char *name = record + kName;
        if (nameLength == 1 && name[0] <= 1)
            continue; // "." and ".."
        IsoEntry entry{{}, bool(flags & ISO_DIRECTORY), false, le32(record + kExtent), le32(record + kSize),
                       continued, at};
        m_name.clear();
        bool named = false;
        if (m_names == Names::RockRidge) {
            const size_t su = kName + nameLength + ((nameLength & 1) == 0 ? 1 : 0) + m_skip;
            RockRidge rr;
            if (su < length)
                readSystemUse(record + su, length - su, rr, 0);
            if (rr.relocated || rr.dots)
                continue;
            if (rr.child >= 0) {
                entry.isDirectory = true;
                entry.where = std::uint64_t(rr.child);
                entry.size = 0;
            }
            if (rr.link) {
                entry.isDirectory = false;
                entry.link = true;
            }
            if (rr.hasName) {
                m_name = rr.name;
                named = true;
            }
        } else if (m_names == Names::Joliet) {
            appendUtf16AsUtf8(name, nameLength / 2, true, m_name);
            if (m_name.endsWith(";1"))
                m_name.chop(2);
            while (m_name.size() >= 2 && m_name.endsWith('.'))
                m_name.chop(1);
            named = true;
        }
        if (!named) {
            m_name = QByteArray(reinterpret_cast<const char *>(name), qsizetype(nameLength));
            const qsizetype version = m_name.lastIndexOf(';');
            if (version >= 0)
                m_name.truncate(version);
            if (m_name.size() >= 2 && m_name.endsWith('.'))
                m_name.chop(1); // "NOEXT.;1" is NOEXT
        }
        const qsizetype nul = m_name.indexOf('\0');
        if (nul >= 0)
            m_name.truncate(nul);
        if (m_name.isEmpty() || m_name == "." || m_name == ".." || m_name.contains('/'))
            continue; // no system could show such a name
        entry.name = m_name;
        if (!visit(entry))
            break;
    }
    return true;
}

bool IsoVolume::list(const ImageDirectory &directory, QByteArrayView, DirectoryListing &entries,
                     std::vector<ImageDirectory> &children)
{
    return forEachEntry(directory, [&](const IsoEntry &entry) {
        entries.add(entry.name, entry.isDirectory);
        if (entry.isDirectory)
            children.push_back({entry.where, entry.size, m_name});
        return true;
    });
}

bool IsoVolume::copyFile(const ImageDirectory &directory, QByteArrayView, QByteArrayView name, QIODevice &out)
{
    struct Extent
    {
        std::uint32_t sector;
        std::uint64_t size;
    };
    std::vector<Extent> extents;
    bool found = false;
    std::uint64_t at = 0;
    bool more = false;
    if (!forEachEntry(directory, [&](const IsoEntry &entry) {
            if (entry.name != name || entry.isDirectory || entry.link)
                return true;
            extents.push_back({std::uint32_t(entry.where), entry.size});
            found = true;
            more = entry.multiExtent;
            at = entry.next;
            return false;
        })
        || !found)
        return false;
    // A file larger than one extent goes on in the records that follow its first.
    const auto *extent = reinterpret_cast<const unsigned char *>(m_extent.get());
    while (more && at < m_extentSize) {
        if (const unsigned char *record = nextRecord(extent, m_extentSize, at)) {
            extents.push_back({le32(record + kExtent), le32(record + kSize)});
            more = record[kFlags] & ISO_MULTIEXTENT;
        }
    }
    if (more)
        return false;
    constexpr std::uint32_t kChunkSectors = kImageCopyChunk / kSector;
    const auto chunk = std::make_unique_for_overwrite<char[]>(kImageCopyChunk);
    for (const Extent &part : extents) {
        std::uint32_t sector = part.sector;
        for (std::uint64_t left = part.size; left > 0;) {
            const std::uint32_t count = std::uint32_t(std::min<std::uint64_t>((left + kSector - 1) / kSector, kChunkSectors));
            const std::uint64_t bytes = std::min<std::uint64_t>(left, std::uint64_t(count) * kSector);
            if (!m_sectors->read(sector, count, chunk.get()) || out.write(chunk.get(), qint64(bytes)) != qint64(bytes))
                return false;
            sector += count;
            left -= bytes;
        }
    }
    return true;
}

} // namespace

std::unique_ptr<ImageVolume> openIsoVolume(std::unique_ptr<SectorReader> sectors)
{
    if (!sectors)
        return nullptr;
    auto volume = std::make_unique<IsoVolume>(std::move(sectors));
    if (!volume->mount())
        return nullptr;
    return volume;
}
