#pragma once

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
};

// What the drive letters are given from: the system's mounts and its floppy and optical devices.
struct DriveInventory
{
    QList<MountEntry> mounts;      // in the mount table's order
    QStringList floppyDevices;     // "/dev/fd0", "/dev/fd1"
    QStringList opticalDevices;    // "/dev/sr0", "/dev/sr1", ... in device order
    QHash<QString, QString> labels = {}; // volume label by device ("/dev/sdb1")
};

// Parses /proc/self/mountinfo.
QList<MountEntry> parseMountInfo(QByteArrayView text);

// Letters, in order: a: and b: for floppies, c: for the file system holding "/", the optical
// drives from d: (listed even when empty), then every other readable, real volume by mount point.
// Other mounts of the system's own file system (bind mounts, btrfs subvolumes) and the boot
// partitions are part of c:, not drives.
QList<Drive> assignDriveLetters(const DriveInventory &inventory);

// `fresh` with the letters of `shown` kept for the drives that are in both; a new drive takes its
// own letter when no drive that stays holds it, else the first free letter from d:.
QList<Drive> keepLetters(const QList<Drive> &shown, const QList<Drive> &fresh);

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

    // Follows the system's mounts; tests give their own inventory and call refresh() themselves.
    LinuxDrives();
    explicit LinuxDrives(InventoryReader reader);

    // Safe from any thread: a walk looks its drive up on its worker while the window's thread
    // follows the mounts.
    QList<Drive> drives() override;

    // Reads the drives again and says changed() when they differ from those last given.
    void refresh();

    static DriveInventory readInventory();

private:
    InventoryReader m_reader;
    QMutex m_mutex; // guards the two below
    QList<Drive> m_given;
    bool m_anyGiven = false;
};
