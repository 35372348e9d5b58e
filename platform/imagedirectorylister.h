#pragma once

#include "directorylister.h"
#include "drives.h"

#include <QByteArray>
#include <QIODevice>
#include <QString>

#include <memory>
#include <vector>

class ImageVolume;

// What an image file holds, judged by its content (and, for a CUE sheet, by its name).
enum class ImageKind {
    Unknown,
    Cd,     // ISO 9660 (with Joliet, Rock Ridge) or UDF: catalogued as the first CD-ROM drive
    Floppy, // FAT12/16: catalogued as "a:"
};

namespace DiscImage {

// The file patterns of image files, for a file dialog and for the files of a folder.
QStringList nameFilters();
bool hasImageName(const QString &fileName);
ImageKind probe(const QString &path);
// Writes the bytes of the file at `storedPath` ("D:\\DOC\\LISEZMOI.TXT": each component matched
// against the catalogue names the image's walk gives, the same spelling first, else ignoring
// case) to `out`, 64 KiB at a time. False when the image cannot be read, the file is not in it or
// lies past its end, or a write fails; `out` may then hold part of the file. The image is only read.
bool copyFile(const QString &imagePath, const QString &storedPath, QIODevice &out);

} // namespace DiscImage

// One image file as a drive: its path stands for the mount point, so a walk through
// ImageDirectoryLister reads the image where a walk through the system's lister reads a mount.
class ImageDrive final : public Drives
{
public:
    void set(const QString &name, const QString &imagePath)
    {
        m_drive = {name, DriveType::CdRom, imagePath, {}, imagePath};
    }
    QList<Drive> drives() override { return {m_drive}; }

private:
    Drive m_drive;
};

// Lists the directories of a disc image without mounting it, with the contract of every lister
// (dots first but at the root, names sorted ignoring case, Windows-1252 catalogue names), and
// names as the kernel's own mount shows them: Rock Ridge names, else Joliet, else the ISO 9660
// names less their version; relocated directories at their real place; FAT long names.
//
// open() takes the image file's path (a trailing "/" is ignored) and lists its root. The image is
// only read, never written; an image that cannot be read as any known format gives Failed, which
// a walk takes for a drive that is not ready. A directory record that leads back to one of its
// parents, or past the end of the image, gives Failed: the walk stops and writes nothing.
// Memory does not grow with the image: one directory's records at a time.
class ImageDirectoryLister final : public DirectoryLister
{
public:
    ImageDirectoryLister();
    ~ImageDirectoryLister() override;
    ImageDirectoryLister(const ImageDirectoryLister &) = delete;
    ImageDirectoryLister &operator=(const ImageDirectoryLister &) = delete;

    Result open(const QByteArray &nativePath, bool isRoot, DirectoryListing &entries) override;
    Result enter(QByteArrayView name, DirectoryListing &entries) override;
    void leave() override;
    void close() override;
    // Writes the bytes of the file `name` (native) of the current directory to `out`.
    bool copyFile(QByteArrayView name, QIODevice &out);

    // A sub-directory as a volume finds it: where it is, and its name to go into it.
    struct Directory
    {
        std::uint64_t where = 0; // a sector, a cluster: what the volume needs to read it again
        std::uint64_t size = 0;
        QByteArray name;
    };

private:
    struct Level
    {
        Directory self;
        std::vector<Directory> children;
        size_t next = 0; // where the search for the next child entered begins (they come in order)
        qsizetype pathLength = 0;
    };
    Result list(Level &level, bool isRoot, DirectoryListing &entries);

    std::unique_ptr<ImageVolume> m_volume;
    std::vector<Level> m_levels;
    QByteArray m_path; // the current directory's native path in the image, from "/"
};
