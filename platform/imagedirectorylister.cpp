#include "imagedirectorylister.h"

#include "imagevolume.h"

#include <QFile>
#include <QFileInfo>

#include "windows1252.h"

#include <cdio/bytesex.h>
#include <cdio/udf.h>

#include <algorithm>

#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace {

// An entry's name as the kernel shows it, decoded from its identifier's OSTA CS0 d-string (a
// compression id, 8 for Latin-1 bytes, 16 for UCS-2 big-endian units): libudf's own name keeps
// the low byte of each unit, so "é" would reach the catalogue as a byte no name decoding takes.
// Empty for the parent's entry, a deleted one, or an unknown compression.
QByteArray udfName(const udf_dirent_t *entry)
{
    const udf_fileid_desc_t *fid = entry->fid;
    if (!fid || (fid->file_characteristics & (UDF_FILE_PARENT | UDF_FILE_DELETED)) || fid->i_file_id < 2)
        return {};
    // The same bytes libudf decoded its own name from.
    const unsigned char *id = fid->u.imp_use.data + uint16_from_le(fid->u.i_imp_use);
    const size_t length = fid->i_file_id - 1u;
    QByteArray name;
    if (id[0] == 16) {
        appendUtf16AsUtf8(id + 1, length / 2, true, name);
    } else if (id[0] == 8) {
        name = QString::fromLatin1(reinterpret_cast<const char *>(id + 1), qsizetype(length)).toUtf8();
    }
    return name;
}

// UDF (DVD images) through libudf, which finds the volume and decodes its names. A directory is
// found again by its path, as libudf's entries do not outlive the listing that gave them.
class UdfVolume final : public ImageVolume
{
public:
    explicit UdfVolume(udf_t *udf)
        : m_udf(udf)
    {
    }
    ~UdfVolume() override { udf_close(m_udf); }
    bool mount()
    {
        udf_dirent_t *root = udf_get_root(m_udf, true, 0);
        if (root)
            udf_dirent_free(root);
        return root != nullptr;
    }
    ImageKind kind() const override { return ImageKind::Cd; }
    ImageDirectory root() override { return {}; }
    bool list(const ImageDirectory &, QByteArrayView path, DirectoryListing &entries,
              std::vector<ImageDirectory> &children) override
    {
        udf_dirent_t *directory = open(path);
        if (!directory)
            return false;
        while (udf_readdir(directory)) {
            const QByteArray native = udfName(directory);
            if (native.isEmpty() || native == "." || native == ".." || native.contains('/'))
                continue;
            const bool isDirectory = udf_is_dir(directory);
            entries.add(native, isDirectory);
            if (isDirectory)
                children.push_back({0, 0, native});
        }
        return true;
    }

    bool copyFile(const ImageDirectory &, QByteArrayView path, QByteArrayView name, QIODevice &out) override
    {
        udf_dirent_t *file = open(path);
        bool found = false;
        while (file && !found && udf_readdir(file))
            found = name == udfName(file) && !udf_is_dir(file);
        if (!found)
            return false; // the iterator freed itself at its end
        // libudf reads only data placed by allocation descriptors (and says so on stdout for
        // the rest): a file kept inside its entry is not read.
        udf_file_entry_t entry;
        const bool readable = udf_get_file_entry(file, &entry)
                              && (uint16_from_le(entry.icb_tag.flags) & ICBTAG_FLAG_AD_MASK) <= ICBTAG_FLAG_AD_LONG
                              && uint16_from_le(entry.icb_tag.strat_type) == ICBTAG_STRATEGY_TYPE_4;
        bool copied = readable;
        // One block a call: a call never reads across the end of an allocation extent.
        char block[UDF_BLOCKSIZE];
        for (std::uint64_t left = udf_get_file_length(file); copied && left > 0;) {
            const ssize_t got = udf_read_block(file, block, 1);
            const qint64 bytes = qint64(std::min<std::uint64_t>(left, got > 0 ? std::uint64_t(got) : 0));
            copied = bytes > 0 && out.write(block, bytes) == bytes;
            left -= std::uint64_t(std::max<qint64>(bytes, 0));
        }
        udf_dirent_free(file);
        return copied;
    }

private:
    // The directory at `path` from the root, as an iterator before its first entry; null when
    // it is not there.
    udf_dirent_t *open(QByteArrayView path)
    {
        // libudf's directory entry is an iterator: udf_readdir() moves it to the next entry and
        // frees it after the last one; udf_opendir() on an entry gives the sub-directory's.
        udf_dirent_t *directory = udf_get_root(m_udf, true, 0);
        for (const QByteArray &component : path.toByteArray().split('/')) {
            if (component.isEmpty() || !directory)
                continue;
            udf_dirent_t *child = nullptr;
            while (!child && udf_readdir(directory)) {
                if (component == udfName(directory) && udf_is_dir(directory))
                    child = udf_opendir(directory);
            }
            if (child)
                udf_dirent_free(directory); // left before its end
            directory = child;
        }
        return directory;
    }

    udf_t *m_udf;
};

// Whether the volume recognition sequence after the ISO 9660 descriptors names UDF (NSR02/03).
bool hasUdf(const QString &path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return false;
    bool found = false;
    char descriptor[8];
    for (int sector = 16; sector < 64 && !found; ++sector) {
        if (::pread(fd, descriptor, sizeof descriptor, off_t(sector) * 2048) != ssize_t(sizeof descriptor))
            break;
        found = std::memcmp(descriptor + 1, "NSR02", 5) == 0 || std::memcmp(descriptor + 1, "NSR03", 5) == 0;
        if (std::memcmp(descriptor + 1, "TEA01", 5) == 0)
            break;
    }
    ::close(fd);
    return found;
}

std::unique_ptr<ImageVolume> openUdf(const QString &path)
{
    if (!hasUdf(path))
        return nullptr;
    udf_t *udf = udf_open(QFile::encodeName(path).constData());
    if (!udf)
        return nullptr;
    auto volume = std::make_unique<UdfVolume>(udf);
    if (!volume->mount())
        return nullptr;
    return volume;
}

// A floppy's FAT first (its boot sector is plain to see); then UDF, as the system's own probe
// prefers it on a disc holding both; then ISO 9660 in whatever holds its sectors.
std::unique_ptr<ImageVolume> openVolume(const QString &path)
{
    if (!QFileInfo(path).isFile())
        return nullptr;
    if (auto fat = openFatVolume(path))
        return fat;
    if (auto udf = openUdf(path))
        return udf;
    return openIsoVolume(openSectors(path));
}

} // namespace

QStringList DiscImage::nameFilters()
{
    return {QStringLiteral("*.iso"), QStringLiteral("*.bin"), QStringLiteral("*.cue"), QStringLiteral("*.img"),
            QStringLiteral("*.ima"), QStringLiteral("*.vfd"), QStringLiteral("*.nrg"), QStringLiteral("*.mdf")};
}

bool DiscImage::hasImageName(const QString &fileName)
{
    const QString suffix = QLatin1String("*.") + fileName.section(QLatin1Char('.'), -1).toLower();
    return fileName.contains(QLatin1Char('.')) && nameFilters().contains(suffix);
}

ImageKind DiscImage::probe(const QString &path)
{
    const std::unique_ptr<ImageVolume> volume = openVolume(path);
    return volume ? volume->kind() : ImageKind::Unknown;
}

bool DiscImage::copyFile(const QString &imagePath, const QString &storedPath, QIODevice &out)
{
    const QStringList components = storedPath.mid(storedPath.indexOf(u':') == 1 ? 2 : 0)
                                       .split(u'\\', Qt::SkipEmptyParts);
    if (components.isEmpty() || components.contains(u"."_qs) || components.contains(u".."_qs))
        return false;
    ImageDirectoryLister lister;
    DirectoryListing entries;
    if (lister.open(QFile::encodeName(imagePath), true, entries) != DirectoryLister::Result::Listed)
        return false;
    for (qsizetype c = 0; c < components.size(); ++c) {
        const bool last = c == components.size() - 1;
        // The catalogue's own spelling first, else the first name equal to it ignoring case.
        const QByteArray wanted = Windows1252::encode(components[c]);
        const QByteArray upper = Windows1252::toUpper(wanted);
        qsizetype found = -1;
        for (qsizetype i = 0; i < entries.size(); ++i) {
            if (entries.isDirectory(i) == last || entries.nativeName(i) == "." || entries.nativeName(i) == "..")
                continue;
            if (entries.archiveName(i) == wanted) {
                found = i;
                break;
            }
            if (found < 0 && Windows1252::toUpper(entries.archiveName(i)) == upper)
                found = i;
        }
        if (found < 0)
            return false;
        const QByteArray native = entries.nativeName(found).toByteArray();
        if (last)
            return lister.copyFile(native, out);
        if (lister.enter(native, entries) != DirectoryLister::Result::Listed)
            return false;
    }
    return false;
}

ImageDirectoryLister::ImageDirectoryLister() = default;
ImageDirectoryLister::~ImageDirectoryLister() = default;

DirectoryLister::Result ImageDirectoryLister::list(Level &level, bool isRoot, DirectoryListing &entries)
{
    entries.clear();
    if (!isRoot)
        entries.addDots();
    const qsizetype first = entries.size();
    if (!m_volume->list(level.self, m_path.isEmpty() ? QByteArrayView("/") : QByteArrayView(m_path), entries,
                        level.children)) {
        entries.clear();
        return Result::Failed;
    }
    entries.sortFrom(first);
    return Result::Listed;
}

DirectoryLister::Result ImageDirectoryLister::open(const QByteArray &nativePath, bool isRoot, DirectoryListing &entries)
{
    close();
    entries.clear();
    QByteArray path = nativePath;
    while (path.size() > 1 && path.endsWith('/'))
        path.chop(1);
    m_volume = openVolume(QFile::decodeName(path));
    if (!m_volume)
        return Result::Failed;
    m_levels.push_back({m_volume->root(), {}, 0, 0});
    const Result result = list(m_levels.back(), isRoot, entries);
    if (result != Result::Listed)
        close();
    return result;
}

DirectoryLister::Result ImageDirectoryLister::enter(QByteArrayView name, DirectoryListing &entries)
{
    entries.clear();
    if (m_levels.empty())
        return Result::Failed;
    Level &current = m_levels.back();
    // Sub-directories are entered in listing order: the search starts where the last one ended.
    const size_t count = current.children.size();
    size_t found = count;
    for (size_t k = 0; k < count && found == count; ++k) {
        const size_t i = (current.next + k) % count;
        if (current.children[i].name == name)
            found = i;
    }
    if (found == count)
        return Result::Failed;
    current.next = found + 1;
    const ImageDirectory child = current.children[found];
    // A record leading back to a directory the walk is in would never end.
    for (const Level &level : m_levels) {
        if (child.where != 0 && level.self.where == child.where)
            return Result::Failed;
    }
    const qsizetype pathLength = m_path.size();
    m_path.append('/').append(child.name);
    m_levels.push_back({child, {}, 0, pathLength});
    const Result result = list(m_levels.back(), false, entries);
    if (result != Result::Listed) {
        m_levels.pop_back();
        m_path.truncate(pathLength);
    }
    return result;
}

bool ImageDirectoryLister::copyFile(QByteArrayView name, QIODevice &out)
{
    if (m_levels.empty())
        return false;
    return m_volume->copyFile(m_levels.back().self, m_path.isEmpty() ? QByteArrayView("/") : QByteArrayView(m_path),
                              name, out);
}

void ImageDirectoryLister::leave()
{
    if (m_levels.size() <= 1)
        return;
    m_path.truncate(m_levels.back().pathLength);
    m_levels.pop_back();
}

void ImageDirectoryLister::close()
{
    m_levels.clear();
    m_path.clear();
    m_volume.reset();
}
