#pragma once

#include "driveletterbook.h"
#include "drives.h"

#include <QByteArrayView>
#include <QHash>
#include <QList>
#include <QMutex>
#include <QString>
#include <QStringList>

#include <functional>

class QSocketNotifier;

struct MountEntry
{
    QString mountPoint;
    QString fsType;
    QString source;
    bool readable = true;       // a directory the user can list
    QString deviceNumber = {};  // "major:minor" of the file system: the same for all its mounts
    QString medium = {};        // what the medium is, when known: its file system's identity or image file
    QString label = {};         // its volume label, when it has one
};

// What the drive letters are given from: the system's mounts and its floppy and optical devices.
struct DriveInventory
{
    QList<MountEntry> mounts;      // in the mount table's order
    QStringList floppyDevices;     // "/dev/fd0", "/dev/fd1"
    QStringList opticalDevices;    // "/dev/sr0", "/dev/sr1", ... in device order
};

// Parses /proc/self/mountinfo.
QList<MountEntry> parseMountInfo(QByteArrayView text);

// The drives, in letter order: a: and b: for floppies, c: for the file system holding "/", then the
// optical drives (listed even when empty) and every other readable, real volume, each with the letter
// `book` gives it: an optical drive keeps its device's letter whatever disc is in it, a volume the
// letter of its medium (mediumKey). Drives new to the book take the free letters from d:, optical
// drives first in device order, then volumes by mount point. Other mounts of the system's own file
// system (bind mounts, btrfs subvolumes) and the boot partitions are part of c:, not drives.
QList<Drive> assignDriveLetters(const DriveInventory &inventory, DriveLetterBook &book);

// What a mounted medium is known by: its file system's identity or image file (`medium`), else
// its mount source, and the mount point too when the source names no device or file ("fuseiso").
QString mediumKey(const MountEntry &mount);

bool isCdRomFileSystem(const QString &fsType);

// Wakes when the system's mounts change: the kernel flags a mount table file (/proc/self/mountinfo)
// for poll() with POLLPRI after every mount and unmount.
class MountWatcher final : public QObject
{
    Q_OBJECT

public:
    explicit MountWatcher(const QString &mountTable = QStringLiteral("/proc/self/mountinfo"),
                          QObject *parent = nullptr);
    ~MountWatcher() override;

    bool isWatching() const { return m_notifier != nullptr; }

signals:
    void mountsChanged();

private:
    int m_fd = -1;
    QSocketNotifier *m_notifier = nullptr;
};

// The drives of this machine. The letters given stay with their drives as long as the program runs,
// so a drive chooser and the scan it starts agree on them while mounts come and go.
class LinuxDrives final : public Drives
{
    Q_OBJECT

public:
    using InventoryReader = std::function<DriveInventory()>;

    // Follows the system's mounts. The letters given are remembered in `bookFile` (none: for this
    // run only), so media get them back in the next runs.
    explicit LinuxDrives(const QString &bookFile = {});
    // Tests give their own inventory and call refresh() themselves.
    explicit LinuxDrives(InventoryReader reader, const QString &bookFile = {});

    // Safe from any thread: a walk looks its drive up on its worker while the window's thread
    // follows the mounts.
    QList<Drive> drives() override;

    // Reads the drives again and says changed() when they differ from those last given.
    void refresh();

    static DriveInventory readInventory();

private:
    InventoryReader m_reader;
    QString m_bookFile;
    QMutex m_mutex; // guards the three below
    DriveLetterBook m_book;
    QList<Drive> m_given;
    bool m_anyGiven = false;
};
