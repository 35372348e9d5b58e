#include "linuxdrives.h"

#include <QTest>

namespace {

MountEntry mount(const char *point, const char *type, const char *source, bool readable = true)
{
    return {QLatin1String(point), QLatin1String(type), QLatin1String(source), readable};
}

QStringList describe(const QList<Drive> &drives)
{
    QStringList out;
    for (const Drive &drive : drives) {
        const char *type = drive.type == DriveType::CdRom ? "cd" : drive.type == DriveType::Removable ? "floppy" : "disk";
        out.append(drive.name + QLatin1Char(' ') + QLatin1String(type) + QLatin1Char(' ') + drive.mountPoint);
    }
    return out;
}

} // namespace

class tst_LinuxDrives : public QObject
{
    Q_OBJECT

private slots:
    void parsesMountInfoWithEscapes()
    {
        const QByteArray text =
            "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
            "40 22 11:0 / /media/user/MON\\040CD rw,relatime shared:5 master:1 - iso9660 /dev/sr0 ro\n"
            "41 22 0:50 / /tmp/img rw - fuse.fuseiso fuseiso rw,user_id=0\n"
            "garbage line\n\n";
        const QList<MountEntry> mounts = parseMountInfo(text);
        QCOMPARE(mounts.size(), 3);
        QCOMPARE(mounts[1].mountPoint, u"/media/user/MON CD"_qs);
        QCOMPARE(mounts[1].fsType, u"iso9660"_qs);
        QCOMPARE(mounts[1].source, u"/dev/sr0"_qs);
        QCOMPARE(mounts[2].fsType, u"fuse.fuseiso"_qs);
    }

    void lettersFollowTheDevicesThenMountPoints()
    {
        DriveInventory inventory;
        inventory.floppyDevices = {u"/dev/fd0"_qs};
        inventory.opticalDevices = {u"/dev/sr0"_qs, u"/dev/sr1"_qs};
        inventory.mounts = {
            mount("/", "ext4", "/dev/sda1"),
            mount("/proc", "proc", "proc"),
            mount("/sys/fs/cgroup", "cgroup2", "cgroup2"),
            mount("/run/user/1000", "tmpfs", "tmpfs"),
            mount("/run/media/anne/USB", "vfat", "/dev/sdb1"),
            mount("/media/cdrom1", "iso9660", "/dev/sr1"),
            mount("/tmp/disque", "fuse.fuseiso", "fuseiso"),
            mount("/home", "ext4", "/dev/sda2"),
            mount("/mnt/secret", "ext4", "/dev/sda3", false),
            mount("/snap/core/1", "squashfs", "/dev/loop0"),
            mount("/dev/shm", "tmpfs", "shm"),
        };
        const QStringList expected = {
            u"a: floppy "_qs,
            u"c: disk /"_qs,
            u"d: cd "_qs,                      // an empty optical drive is listed all the same
            u"e: cd /media/cdrom1"_qs,
            u"f: disk /home"_qs,
            u"g: disk /run/media/anne/USB"_qs,
            u"h: cd /tmp/disque"_qs,          // an image mounted through FUSE counts as a CD-ROM
        };
        QCOMPARE(describe(assignDriveLetters(inventory)), expected);

        // The same drives listed in another order give the same letters.
        std::reverse(inventory.mounts.begin(), inventory.mounts.end());
        QCOMPARE(describe(assignDriveLetters(inventory)), expected);
    }

    void lastMountAtAPointIsTheVisibleOne()
    {
        DriveInventory inventory;
        inventory.mounts = {mount("/", "ext4", "/dev/sda1"), mount("/mnt/cd", "ext4", "/dev/sdc1"),
                            mount("/mnt/cd", "udf", "/dev/sdc2")};
        QCOMPARE(describe(assignDriveLetters(inventory)), (QStringList{u"c: disk /"_qs, u"d: cd /mnt/cd"_qs}));
    }

    void driveNamesAndLookUp()
    {
        QCOMPARE(driveNameOf(u"D:\\"_qs), u"d:"_qs);
        QCOMPARE(driveNameOf(u"d"_qs), u"d:"_qs);
        QCOMPARE(driveNameOf(u""_qs), QString());
        QCOMPARE(driveNameOf(u"\\x"_qs), QString());

        // The machine's own drives: c: is always there and holds "/".
        LinuxDrives drives;
        const auto system = drives.find(u"C:\\"_qs);
        QVERIFY(system.has_value());
        QCOMPARE(system->mountPoint, u"/"_qs);
        QVERIFY(!drives.find(u"?"_qs).has_value());
    }
};

QTEST_GUILESS_MAIN(tst_LinuxDrives)
#include "tst_linuxdrives.moc"
