#pragma once

#include "drives.h"

#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>

struct MountEntry
{
    QString mountPoint;
    QString fsType;
    QString source;
    bool readable = true; // a directory the user can list
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

// Letters, in order: a: and b: for floppies, c: for the file system holding "/", the optical
// drives from d: (listed even when empty), then every other readable, real volume by mount point.
QList<Drive> assignDriveLetters(const DriveInventory &inventory);

bool isCdRomFileSystem(const QString &fsType);

class LinuxDrives final : public Drives
{
public:
    QList<Drive> drives() override;

    static DriveInventory readInventory();
};
