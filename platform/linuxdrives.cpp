#include "linuxdrives.h"

#include "regularfile.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSet>
#include <QSocketNotifier>

#include <algorithm>
#include <map>

#include <blkid/blkid.h>
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

// Labels in /dev/disk/by-label escape blanks and other bytes as \xHH.
QString unescapeLabel(const QString &name)
{
    return QString::fromUtf8(unescape(QFile::encodeName(name), "\\x", 2, 16));
}

constexpr qint64 kBookBytes = 64 * 1024;

QHash<QString, QString> udevNames(const QString &directory)
{
    // udev names each volume by a link to its device, escaping blanks and other bytes as \xHH.
    QHash<QString, QString> names;
    QDirIterator links(directory, QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    while (links.hasNext()) {
        links.next();
        const QString device = links.fileInfo().canonicalFilePath();
        if (!device.isEmpty())
            names.insert(device, unescapeLabel(links.fileName()));
    }
    return names;
}

struct Probed
{
    QString type;
    QString uuid;  // for ISO 9660, the volume's creation date
    QString label; // for ISO 9660, the volume identifier
};

// What libblkid reads from a file system's superblock (a device, or an image file).
Probed probe(const QString &path)
{
    Probed probed;
    blkid_probe pr = blkid_new_probe_from_filename(QFile::encodeName(path).constData());
    if (!pr)
        return probed;
    blkid_probe_enable_superblocks(pr, 1);
    blkid_probe_set_superblocks_flags(pr, BLKID_SUBLKS_LABEL | BLKID_SUBLKS_UUID | BLKID_SUBLKS_TYPE);
    if (blkid_do_safeprobe(pr) == 0) {
        auto value = [&](const char *name) {
            const char *data = nullptr;
            return blkid_probe_lookup_value(pr, name, &data, nullptr) == 0 && data ? QString::fromUtf8(data) : QString();
        };
        probed = {value("TYPE"), value("UUID"), value("LABEL")};
    }
    blkid_free_probe(pr);
    return probed;
}

QString fileSystemIdentity(const QString &type, const QString &uuid, const QString &label)
{
    if (uuid.isEmpty() && label.isEmpty())
        return {};
    return QStringLiteral("fs:%1:%2:%3").arg(type, uuid, label);
}

QString absoluteIn(const QString &path, const QString &directory)
{
    return QDir::cleanPath(QDir::isAbsolutePath(path) ? path : directory + QLatin1Char('/') + path);
}

// The image file each FUSE mount point was mounted from, read from the command lines of the
// processes serving them ("fuseiso -p IMAGE MOUNTPOINT"): the last argument before the mount
// point that is a regular file.
QHash<QString, QString> fuseImages(const QSet<QString> &mountPoints)
{
    QHash<QString, QString> images;
    const QStringList processes = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &pid : processes) {
        if (!pid.at(0).isDigit())
            continue;
        QFile cmdline(QStringLiteral("/proc/%1/cmdline").arg(pid));
        if (!cmdline.open(QIODevice::ReadOnly))
            continue;
        const QList<QByteArray> args = cmdline.read(64 * 1024).split('\0');
        const QString cwd = QFile::symLinkTarget(QStringLiteral("/proc/%1/cwd").arg(pid));
        for (qsizetype i = 1; i < args.size(); ++i) {
            const QString point = absoluteIn(QFile::decodeName(args[i]), cwd);
            if (!mountPoints.contains(point) || images.contains(point))
                continue;
            for (qsizetype j = i - 1; j >= 1; --j) {
                if (args[j].startsWith('-') || args[j - 1] == "-o")
                    continue;
                const QFileInfo image(absoluteIn(QFile::decodeName(args[j]), cwd));
                if (image.isFile()) {
                    images.insert(point, image.canonicalFilePath());
                    break;
                }
            }
        }
    }
    return images;
}

// What a medium's top directory holds: each entry's name, size and time.
QString treeIdentity(const QString &mountPoint)
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    const QFileInfoList entries = QDir(mountPoint).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System
                                                                 | QDir::NoDotAndDotDot, QDir::Name);
    if (entries.isEmpty())
        return {};
    for (const QFileInfo &entry : entries) {
        hash.addData(QFile::encodeName(entry.fileName()) + '\0' + QByteArray::number(entry.size()) + '\0'
                     + QByteArray::number(entry.lastModified().toSecsSinceEpoch()) + '\n');
    }
    return QStringLiteral("tree:") + QString::fromLatin1(hash.result().toHex());
}

bool isFuse(const QString &fsType)
{
    return fsType == QLatin1String("fuse") || fsType.startsWith(QLatin1String("fuse."));
}

// Fills in what each real mount's medium is known by and its label: an image's file (a loop device's
// backing file, a FUSE image), else the file system's UUID and label from udev, else from libblkid.
void identifyMedia(QList<MountEntry> &mounts)
{
    const QHash<QString, QString> uuids = udevNames(QStringLiteral("/dev/disk/by-uuid"));
    const QHash<QString, QString> labels = udevNames(QStringLiteral("/dev/disk/by-label"));
    QSet<QString> fusePoints;
    for (const MountEntry &mount : std::as_const(mounts)) {
        if (mount.readable && isFuse(mount.fsType) && !isPseudoFileSystem(mount.fsType))
            fusePoints.insert(mount.mountPoint);
    }
    const QHash<QString, QString> images = fusePoints.isEmpty() ? QHash<QString, QString>() : fuseImages(fusePoints);
    for (MountEntry &mount : mounts) {
        if (!mount.readable || isPseudoFileSystem(mount.fsType) || isSystemMountPoint(mount.mountPoint))
            continue;
        QString image = images.value(mount.mountPoint);
        if (mount.source.startsWith(QLatin1String("/dev/loop"))) {
            QFile backing(QStringLiteral("/sys/block/%1/loop/backing_file").arg(mount.source.mid(5)));
            if (backing.open(QIODevice::ReadOnly))
                image = QFile::decodeName(backing.readAll().trimmed());
        }
        if (!image.isEmpty()) {
            mount.medium = QStringLiteral("file:") + image;
            if (QFileInfo(image).isFile()) // never a FIFO
                mount.label = probe(image).label;
            continue;
        }
        if (isFuse(mount.fsType)) {
            // The image's path was relative to where the server started: the medium's own top
            // directory tells it from others.
            mount.medium = treeIdentity(mount.mountPoint);
            continue;
        }
        if (!mount.source.startsWith(QLatin1String("/dev/")))
            continue;
        const QString device = QFileInfo(mount.source).canonicalFilePath();
        Probed probed{mount.fsType, uuids.value(device), labels.value(device)};
        if (probed.uuid.isEmpty() && probed.label.isEmpty() && ::access(QFile::encodeName(device).constData(), R_OK) == 0)
            probed = probe(device); // no udev (a container): the superblock itself
        mount.medium = fileSystemIdentity(mount.fsType, probed.uuid, probed.label);
        mount.label = probed.label;
    }
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

QString mediumKey(const MountEntry &mount)
{
    if (!mount.medium.isEmpty())
        return mount.medium;
    if (mount.source.startsWith(QLatin1Char('/')))
        return QStringLiteral("source:") + mount.source;
    return QStringLiteral("source:") + mount.source + QStringLiteral(" at ") + mount.mountPoint;
}

QList<Drive> assignDriveLetters(const DriveInventory &inventory, DriveLetterBook &book)
{
    // The mount visible at each mount point is the last one mounted there.
    std::map<QString, MountEntry> byMountPoint;
    for (const MountEntry &mount : inventory.mounts)
        byMountPoint[mount.mountPoint] = mount;
    auto mountOfDevice = [&](const QString &device) -> const MountEntry * {
        for (const auto &[point, mount] : byMountPoint) {
            if (mount.source == device)
                return &mount;
        }
        return nullptr;
    };
    const auto system = byMountPoint.find(QStringLiteral("/"));
    auto isSystemFileSystem = [&](const MountEntry &mount) {
        if (system == byMountPoint.end())
            return false;
        const MountEntry &root = system->second;
        return (!root.deviceNumber.isEmpty() && mount.deviceNumber == root.deviceNumber)
               || (root.source.startsWith(QLatin1String("/dev/")) && mount.source == root.source);
    };
    auto driveOfDevice = [&](DriveType type, const QString &device) {
        const MountEntry *mount = mountOfDevice(device);
        if (!mount)
            return Drive{{}, type, {}, {}, device};
        return Drive{{}, type, mount->mountPoint, mount->label, device, mediumKey(*mount)};
    };

    QList<Drive> drives;
    QSet<QString> devicesListed;
    for (int i = 0; i < std::min<qsizetype>(2, inventory.floppyDevices.size()); ++i) {
        const QString &device = inventory.floppyDevices[i];
        drives.append(driveOfDevice(DriveType::Removable, device));
        drives.last().name = letterName(i);
        devicesListed.insert(device);
    }
    Drive systemDrive{letterName(2), DriveType::Fixed, QStringLiteral("/")};
    if (system != byMountPoint.end())
        systemDrive.device = system->second.source;
    drives.append(systemDrive);

    // Those given letters by the book: optical drives by device, volumes by medium.
    QList<Drive> booked;
    QList<DriveLetterBook::Wanted> keys;
    for (const QString &device : inventory.opticalDevices) {
        booked.append(driveOfDevice(DriveType::CdRom, device));
        keys.append({QStringLiteral("device:") + device, device});
        devicesListed.insert(device);
    }
    for (const auto &[point, mount] : byMountPoint) { // std::map: in order of mount point
        if (point == QLatin1String("/") || !mount.readable || devicesListed.contains(mount.source)
            || isPseudoFileSystem(mount.fsType) || isSystemMountPoint(point) || isBootMountPoint(point)
            || isSystemFileSystem(mount))
            continue;
        const DriveType type = isCdRomFileSystem(mount.fsType) ? DriveType::CdRom : DriveType::Fixed;
        const QString key = mediumKey(mount);
        booked.append(Drive{{}, type, point, mount.label, mount.source, key});
        keys.append({key, point});
    }
    const QList<char> letters = book.give(keys);
    for (qsizetype i = 0; i < booked.size(); ++i) {
        if (!letters[i])
            continue; // every letter taken
        booked[i].name = QString(QLatin1Char(letters[i])) + QLatin1Char(':');
        drives.append(booked[i]);
    }
    std::sort(drives.begin(), drives.end(), [](const Drive &a, const Drive &b) { return a.name < b.name; });
    return drives;
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
    identifyMedia(inventory.mounts);
    return inventory;
}

LinuxDrives::LinuxDrives(const QString &bookFile)
    : LinuxDrives(&LinuxDrives::readInventory, bookFile)
{
    auto *watcher = new MountWatcher(QStringLiteral("/proc/self/mountinfo"), this);
    connect(watcher, &MountWatcher::mountsChanged, this, &LinuxDrives::refresh);
}

LinuxDrives::LinuxDrives(InventoryReader reader, const QString &bookFile)
    : m_reader(std::move(reader))
    , m_bookFile(bookFile)
{
    if (m_bookFile.isEmpty())
        return;
    // Only the letters' memory: a file that is missing, foreign or too large gives letters afresh.
    bool whole = false;
    const QByteArray text = readRegularFile(m_bookFile, kBookBytes, &whole);
    if (whole)
        m_book = DriveLetterBook::fromText(text);
}

QList<Drive> LinuxDrives::drives()
{
    const DriveInventory inventory = m_reader();
    const QMutexLocker lock(&m_mutex);
    m_given = assignDriveLetters(inventory, m_book);
    m_anyGiven = true;
    if (m_book.takeChanged() && !m_bookFile.isEmpty()) {
        QSaveFile file(m_bookFile); // whole or not at all
        if (file.open(QIODevice::WriteOnly) && file.write(m_book.text()) >= 0)
            file.commit();
    }
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
