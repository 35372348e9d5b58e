#include "linuxdrives.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <map>

#include <unistd.h>

namespace {

// mountinfo escapes blanks, tabs, newlines and backslashes in paths as \ooo.
QString unescapeMountField(QByteArrayView field)
{
    QByteArray out;
    out.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            const QByteArrayView digits = field.sliced(i + 1, 3);
            bool ok = false;
            const int value = digits.toByteArray().toInt(&ok, 8);
            if (ok) {
                out.append(char(value));
                i += 3;
                continue;
            }
        }
        out.append(field[i]);
    }
    return QFile::decodeName(out);
}

bool isPseudoFileSystem(const QString &fsType)
{
    static const QSet<QString> pseudo = {
        QStringLiteral("proc"), QStringLiteral("sysfs"), QStringLiteral("tmpfs"),
        QStringLiteral("devtmpfs"), QStringLiteral("devpts"), QStringLiteral("cgroup"),
        QStringLiteral("cgroup2"), QStringLiteral("overlay"), QStringLiteral("squashfs"),
        QStringLiteral("autofs"), QStringLiteral("mqueue"), QStringLiteral("debugfs"),
        QStringLiteral("tracefs"), QStringLiteral("securityfs"), QStringLiteral("pstore"),
        QStringLiteral("bpf"), QStringLiteral("configfs"), QStringLiteral("fusectl"),
        QStringLiteral("hugetlbfs"), QStringLiteral("binfmt_misc"), QStringLiteral("efivarfs"),
        QStringLiteral("nsfs"), QStringLiteral("ramfs"), QStringLiteral("rpc_pipefs"),
        QStringLiteral("nfsd"), QStringLiteral("selinuxfs"), QStringLiteral("fuse.gvfsd-fuse"),
        QStringLiteral("fuse.portal"), QStringLiteral("fuse.lxcfs"), QStringLiteral("fuse.snapfuse"),
        QStringLiteral("devfs"), QStringLiteral("none"),
    };
    return pseudo.contains(fsType);
}

bool isSystemMountPoint(const QString &mountPoint)
{
    static const QStringList systemRoots = {QStringLiteral("/proc"), QStringLiteral("/sys"),
                                            QStringLiteral("/dev"), QStringLiteral("/run")};
    if (mountPoint.startsWith(QLatin1String("/run/media/")))
        return false;
    for (const QString &root : systemRoots) {
        if (mountPoint == root || mountPoint.startsWith(root + QLatin1Char('/')))
            return true;
    }
    return false;
}

QString letterName(int index)
{
    return QString(QChar(u'a' + index)) + QLatin1Char(':');
}

} // namespace

bool isCdRomFileSystem(const QString &fsType)
{
    return fsType == QLatin1String("iso9660") || fsType == QLatin1String("udf")
           || fsType == QLatin1String("fuse.fuseiso") || fsType == QLatin1String("fuse.fuseiso9660");
}

QList<MountEntry> parseMountInfo(QByteArrayView text)
{
    QList<MountEntry> mounts;
    for (QByteArrayView line : QByteArrayView(text).toByteArray().split('\n')) {
        const QList<QByteArray> fields = line.toByteArray().split(' ');
        // id parent major:minor root mount-point options [optional...] - type source super-options
        const auto dash = std::find(fields.begin(), fields.end(), QByteArrayLiteral("-"));
        if (fields.size() < 5 || dash == fields.end() || std::distance(dash, fields.end()) < 3)
            continue;
        MountEntry entry;
        entry.mountPoint = unescapeMountField(fields[4]);
        entry.fsType = QString::fromLatin1(*(dash + 1));
        entry.source = unescapeMountField(*(dash + 2));
        mounts.append(entry);
    }
    return mounts;
}

QList<Drive> assignDriveLetters(const DriveInventory &inventory)
{
    // The mount visible at each mount point is the last one mounted there.
    std::map<QString, MountEntry> byMountPoint;
    for (const MountEntry &mount : inventory.mounts)
        byMountPoint[mount.mountPoint] = mount;
    auto mountOfDevice = [&](const QString &device) -> QString {
        for (const auto &[point, mount] : byMountPoint) {
            if (mount.source == device)
                return point;
        }
        return {};
    };

    QList<Drive> drives;
    QSet<QString> devicesListed;
    for (int i = 0; i < std::min<qsizetype>(2, inventory.floppyDevices.size()); ++i) {
        const QString &device = inventory.floppyDevices[i];
        drives.append({letterName(i), DriveType::Removable, mountOfDevice(device)});
        devicesListed.insert(device);
    }
    drives.append({QStringLiteral("c:"), DriveType::Fixed, QStringLiteral("/")});

    int next = 3; // d:
    for (const QString &device : inventory.opticalDevices) {
        if (next > 25)
            break;
        drives.append({letterName(next++), DriveType::CdRom, mountOfDevice(device)});
        devicesListed.insert(device);
    }
    for (const auto &[point, mount] : byMountPoint) { // std::map: in order of mount point
        if (next > 25)
            break;
        if (point == QLatin1String("/") || !mount.readable || devicesListed.contains(mount.source)
            || isPseudoFileSystem(mount.fsType) || isSystemMountPoint(point))
            continue;
        const DriveType type = isCdRomFileSystem(mount.fsType) ? DriveType::CdRom : DriveType::Fixed;
        drives.append({letterName(next++), type, point});
    }
    return drives;
}

DriveInventory LinuxDrives::readInventory()
{
    DriveInventory inventory;
    QFile mountInfo(QStringLiteral("/proc/self/mountinfo"));
    if (mountInfo.open(QIODevice::ReadOnly))
        inventory.mounts = parseMountInfo(mountInfo.readAll());
    for (MountEntry &mount : inventory.mounts) {
        const QByteArray path = QFile::encodeName(mount.mountPoint);
        mount.readable = QFileInfo(mount.mountPoint).isDir() && ::access(path.constData(), R_OK | X_OK) == 0;
    }
    for (const char *fd : {"/dev/fd0", "/dev/fd1"}) {
        if (QFileInfo::exists(QLatin1String(fd)))
            inventory.floppyDevices.append(QLatin1String(fd));
    }
    QStringList optical = QDir(QStringLiteral("/sys/block")).entryList({QStringLiteral("sr*")}, QDir::AllEntries | QDir::System);
    std::sort(optical.begin(), optical.end(), [](const QString &a, const QString &b) {
        return a.mid(2).toInt() < b.mid(2).toInt();
    });
    for (const QString &name : optical)
        inventory.opticalDevices.append(QStringLiteral("/dev/") + name);
    return inventory;
}

QList<Drive> LinuxDrives::drives()
{
    return assignDriveLetters(readInventory());
}
