#include "imagedirectorylister.h"

#include "imagevolume.h"

#include <QFile>
#include <QFileInfo>

#include <cdio/udf.h>

#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace {

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
        // libudf's directory entry is an iterator: udf_readdir() moves it to the next entry and
        // frees it after the last one; udf_opendir() on an entry gives the sub-directory's.
        udf_dirent_t *directory = udf_get_root(m_udf, true, 0);
        for (const QByteArray &component : path.toByteArray().split('/')) {
            if (component.isEmpty() || !directory)
                continue;
            udf_dirent_t *child = nullptr;
            while (!child && udf_readdir(directory)) {
                const char *name = udf_get_filename(directory);
                if (name && component == QByteArrayView(name) && udf_is_dir(directory))
                    child = udf_opendir(directory);
            }
            if (child)
                udf_dirent_free(directory); // left before its end
            directory = child;
        }
        if (!directory)
            return false;
        while (udf_readdir(directory)) {
            const char *name = udf_get_filename(directory);
            if (!name || !*name || std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0)
                continue;
            const QByteArray native(name);
            if (native.contains('/'))
                continue;
            const bool isDirectory = udf_is_dir(directory);
            entries.add(native, isDirectory);
            if (isDirectory)
                children.push_back({0, 0, native});
        }
        return true;
    }

private:
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
