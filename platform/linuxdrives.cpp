#include "linuxdrives.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QSocketNotifier>

#include <algorithm>
#include <map>

#include <fcntl.h>
#include <unistd.h>

namespace {

// Undoes the escapes of the mount table (blanks, tabs, newlines and backslashes in paths as \ooo,
// octal) and of udev's link names (\xHH): `lead` then `digits` digits in `base`.
QByteArray unescape(QByteArrayView text, QByteArrayView lead, int digits, int base)
{
    QByteArray out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const qsizetype end = i + lead.size() + digits;
        if (end <= text.size() && text.sliced(i).startsWith(lead)) {
            bool ok = false;
            const int value = text.sliced(i + lead.size(), digits).toByteArray().toInt(&ok, base);
            if (ok) {
                out.append(char(value));
                i = end - 1;
                continue;
            }
        }
        out.append(text[i]);
    }
    return out;
}

QString unescapeMountField(QByteArrayView field)
{
    return QFile::decodeName(unescape(field, "\\", 3, 8));
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

// /boot, /boot/efi and /efi belong to the system disk whatever their file system.
bool isBootMountPoint(const QString &mountPoint)
{
    return mountPoint == QLatin1String("/boot") || mountPoint.startsWith(QLatin1String("/boot/"))
           || mountPoint == QLatin1String("/efi");
}

QString letterName(int index)
{
    return QString(QChar(u'a' + index)) + QLatin1Char(':');
}

// What tells a drive apart from the others over time: an optical or floppy drive is its device,
// whatever is mounted from it; any other volume is what is mounted where.
QString identityOf(const Drive &drive)
{
    if (drive.name == QLatin1String("c:"))
        return QStringLiteral("c:");
    if (drive.device.startsWith(QLatin1String("/dev/sr")) || drive.device.startsWith(QLatin1String("/dev/fd")))
        return drive.device;
    return drive.device + QLatin1Char('\n') + drive.mountPoint;
}

// Labels in /dev/disk/by-label escape blanks and other bytes as \xHH.
QString unescapeLabel(const QString &name)
{
    return QString::fromUtf8(unescape(QFile::encodeName(name), "\\x", 2, 16));
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
        entry.deviceNumber = QString::fromLatin1(fields[2]);
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
    const auto system = byMountPoint.find(QStringLiteral("/"));
    auto isSystemFileSystem = [&](const MountEntry &mount) {
        if (system == byMountPoint.end())
            return false;
        const MountEntry &root = system->second;
        return (!root.deviceNumber.isEmpty() && mount.deviceNumber == root.deviceNumber)
               || (root.source.startsWith(QLatin1String("/dev/")) && mount.source == root.source);
    };
    auto drive = [&](int letter, DriveType type, const QString &mountPoint, const QString &device) {
        return Drive{letterName(letter), type, mountPoint, inventory.labels.value(device), device};
    };

    QList<Drive> drives;
    QSet<QString> devicesListed;
    for (int i = 0; i < std::min<qsizetype>(2, inventory.floppyDevices.size()); ++i) {
        const QString &device = inventory.floppyDevices[i];
        drives.append(drive(i, DriveType::Removable, mountOfDevice(device), device));
        devicesListed.insert(device);
    }
    drives.append(drive(2, DriveType::Fixed, QStringLiteral("/"),
                        system == byMountPoint.end() ? QString() : system->second.source));

    int next = 3; // d:
    for (const QString &device : inventory.opticalDevices) {
        if (next > 25)
            break;
        const QString mountPoint = mountOfDevice(device);
        drives.append(drive(next++, DriveType::CdRom, mountPoint, device));
        devicesListed.insert(device);
    }
    for (const auto &[point, mount] : byMountPoint) { // std::map: in order of mount point
        if (next > 25)
            break;
        if (point == QLatin1String("/") || !mount.readable || devicesListed.contains(mount.source)
            || isPseudoFileSystem(mount.fsType) || isSystemMountPoint(point) || isBootMountPoint(point)
            || isSystemFileSystem(mount))
            continue;
        const DriveType type = isCdRomFileSystem(mount.fsType) ? DriveType::CdRom : DriveType::Fixed;
        drives.append(drive(next++, type, point, mount.source));
    }
    return drives;
}

QList<Drive> keepLetters(const QList<Drive> &shown, const QList<Drive> &fresh)
{
    QHash<QString, QString> letterOf;
    for (const Drive &drive : shown)
        letterOf.insert(identityOf(drive), drive.name);
    QSet<QString> taken;
    for (const Drive &drive : fresh) {
        const auto kept = letterOf.constFind(identityOf(drive));
        if (kept != letterOf.cend())
            taken.insert(*kept);
    }
    QList<Drive> result;
    for (Drive drive : fresh) {
        const auto kept = letterOf.constFind(identityOf(drive));
        if (kept != letterOf.cend()) {
            drive.name = *kept;
        } else if (taken.contains(drive.name)) {
            int letter = 3;
            while (letter <= 25 && taken.contains(letterName(letter)))
                ++letter;
            if (letter > 25)
                continue;
            drive.name = letterName(letter);
        }
        taken.insert(drive.name);
        result.append(drive);
    }
    std::sort(result.begin(), result.end(), [](const Drive &a, const Drive &b) { return a.name < b.name; });
    return result;
}

MountWatcher::MountWatcher(const QString &mountTable, QObject *parent)
    : QObject(parent)
{
    m_fd = ::open(QFile::encodeName(mountTable).constData(), O_RDONLY | O_CLOEXEC);
    if (m_fd < 0)
        return; // no mount table: drives are read afresh at each opening only
    m_notifier = new QSocketNotifier(m_fd, QSocketNotifier::Exception, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &MountWatcher::mountsChanged);
}

MountWatcher::~MountWatcher()
{
    delete m_notifier;
    if (m_fd >= 0)
        ::close(m_fd);
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
    // udev names each labelled volume by a link to its device.
    QDirIterator labels(QStringLiteral("/dev/disk/by-label"), QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    while (labels.hasNext()) {
        labels.next();
        const QString device = labels.fileInfo().canonicalFilePath();
        if (!device.isEmpty())
            inventory.labels.insert(device, unescapeLabel(labels.fileName()));
    }
    return inventory;
}

LinuxDrives::LinuxDrives()
    : m_reader(&LinuxDrives::readInventory)
{
    auto *watcher = new MountWatcher(QStringLiteral("/proc/self/mountinfo"), this);
    connect(watcher, &MountWatcher::mountsChanged, this, &LinuxDrives::refresh);
}

LinuxDrives::LinuxDrives(InventoryReader reader)
    : m_reader(std::move(reader))
{
}

QList<Drive> LinuxDrives::drives()
{
    const QList<Drive> fresh = assignDriveLetters(m_reader());
    const QMutexLocker lock(&m_mutex);
    m_given = m_anyGiven ? keepLetters(m_given, fresh) : fresh;
    m_anyGiven = true;
    return m_given;
}

void LinuxDrives::refresh()
{
    QList<Drive> before;
    bool anyBefore = false;
    {
        const QMutexLocker lock(&m_mutex);
        before = m_given;
        anyBefore = m_anyGiven;
    }
    if (drives() != before || !anyBefore)
        emit changed();
}
