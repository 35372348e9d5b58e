#include "linuxdrives.h"
#include "testsupport.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

MountEntry mount(const char *point, const char *type, const char *source, bool readable = true,
                 const char *deviceNumber = "")
{
    return {QLatin1String(point), QLatin1String(type), QLatin1String(source), readable, QLatin1String(deviceNumber)};
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

    void twoFloppiesAtMost()
    {
        DriveInventory inventory;
        inventory.floppyDevices = {u"/dev/fd0"_qs, u"/dev/fd1"_qs, u"/dev/fd2"_qs};
        inventory.mounts = {mount("/", "ext4", "/dev/sda1")};
        QCOMPARE(describe(assignDriveLetters(inventory)), (QStringList{u"a: floppy "_qs, u"b: floppy "_qs, u"c: disk /"_qs}));
    }

    void lastMountAtAPointIsTheVisibleOne()
    {
        DriveInventory inventory;
        inventory.mounts = {mount("/", "ext4", "/dev/sda1"), mount("/mnt/cd", "ext4", "/dev/sdc1"),
                            mount("/mnt/cd", "udf", "/dev/sdc2")};
        QCOMPARE(describe(assignDriveLetters(inventory)), (QStringList{u"c: disk /"_qs, u"d: cd /mnt/cd"_qs}));
    }

    void theSystemsOwnFileSystemIsNotADrive()
    {
        DriveInventory inventory;
        inventory.mounts = {
            mount("/", "btrfs", "/dev/nvme0n1p2", true, "0:31"),
            mount("/home", "btrfs", "/dev/nvme0n1p2", true, "0:31"),       // a subvolume
            mount("/srv/www", "btrfs", "/dev/nvme0n1p2", true, "0:31"),    // a bind mount
            mount("/var/lib/docker/btrfs", "btrfs", "/dev/nvme0n1p2", true, "0:31"),
            mount("/boot/efi", "vfat", "/dev/nvme0n1p1", true, "259:1"),   // the system disk's EFI partition
            mount("/boot", "ext4", "/dev/nvme0n1p3", true, "259:3"),
            mount("/data", "ext4", "/dev/sda1", true, "8:1"),              // another disk: a drive
            mount("/media/anne/CLE USB", "vfat", "/dev/sdb1", true, "8:17"),
        };
        inventory.labels = {{u"/dev/sdb1"_qs, u"CLE USB"_qs}};
        const QList<Drive> drives = assignDriveLetters(inventory);
        QCOMPARE(describe(drives), (QStringList{u"c: disk /"_qs, u"d: disk /data"_qs, u"e: disk /media/anne/CLE USB"_qs}));
        QCOMPARE(drives[2].label, u"CLE USB"_qs);
        QCOMPARE(drives[2].device, u"/dev/sdb1"_qs);
        QCOMPARE(driveDescription(drives[2]), u"[CLE USB]  /media/anne/CLE USB"_qs);
        QCOMPARE(driveDescription(drives[1]), u"/data"_qs);
        QCOMPARE(driveDescription(Drive{u"d:"_qs, DriveType::CdRom, QString()}), u"(aucun support)"_qs);

        // The same file system bind-mounted from an overlay root is told by its device number.
        inventory.mounts = {mount("/", "overlay", "overlay", true, "0:50"), mount("/work", "overlay", "overlay", true, "0:50"),
                            mount("/mnt/usb", "vfat", "/dev/sdc1", true, "8:33")};
        QCOMPARE(describe(assignDriveLetters(inventory)), (QStringList{u"c: disk /"_qs, u"d: disk /mnt/usb"_qs}));
    }

    void lettersOfTheDrivesThatStayDoNotMove()
    {
        DriveInventory inventory;
        inventory.opticalDevices = {u"/dev/sr0"_qs};
        inventory.mounts = {mount("/", "ext4", "/dev/sda1", true, "8:1"),
                            mount("/media/b", "vfat", "/dev/sdc1", true, "8:33"),
                            mount("/media/d", "vfat", "/dev/sdd1", true, "8:49")};
        LinuxDrives drives([&inventory] { return inventory; });
        QSignalSpy changed(&drives, &Drives::changed);
        QCOMPARE(describe(drives.drives()),
                 (QStringList{u"c: disk /"_qs, u"d: cd "_qs, u"e: disk /media/b"_qs, u"f: disk /media/d"_qs}));

        // A stick mounted at a point sorted before the others, and a disc in the optical drive:
        // the drives that were there keep their letters, the new one takes the first free letter.
        inventory.mounts.append(mount("/media/a", "vfat", "/dev/sde1", true, "8:65"));
        inventory.mounts.append(mount("/media/cdrom", "iso9660", "/dev/sr0", true, "11:0"));
        drives.refresh();
        QCOMPARE(changed.size(), 1);
        QCOMPARE(describe(drives.drives()), (QStringList{u"c: disk /"_qs, u"d: cd /media/cdrom"_qs, u"e: disk /media/b"_qs,
                                                         u"f: disk /media/d"_qs, u"g: disk /media/a"_qs}));
        // Nothing changed: nothing said.
        drives.refresh();
        QCOMPARE(changed.size(), 1);

        // e: goes; f: stays f:, and a new stick takes the first free letter, not one still held.
        inventory.mounts.removeAt(1);
        inventory.mounts.append(mount("/media/z", "vfat", "/dev/sdf1", true, "8:81"));
        drives.refresh();
        QCOMPARE(changed.size(), 2);
        QCOMPARE(describe(drives.drives()), (QStringList{u"c: disk /"_qs, u"d: cd /media/cdrom"_qs, u"e: disk /media/z"_qs,
                                                         u"f: disk /media/d"_qs, u"g: disk /media/a"_qs}));
        QCOMPARE(drives.find(u"F:\\"_qs)->mountPoint, u"/media/d"_qs);
    }

    // Every letter from d: to z: held: a new volume gets none rather than a letter twice.
    void aNewVolumeWithoutAFreeLetterIsLeftOut()
    {
        QList<Drive> shown;
        for (int letter = 3; letter <= 25; ++letter) {
            const QString point = u"/media/v"_qs + QString::number(letter);
            shown.append({QString(QChar(u'a' + letter)) + u":"_qs, DriveType::Fixed, point, {}, point});
        }
        QList<Drive> fresh = shown;
        fresh.append({u"d:"_qs, DriveType::Fixed, u"/media/new"_qs, {}, u"/media/new"_qs});
        QCOMPARE(keepLetters(shown, fresh), shown);
    }

    void driveHoldingPicksTheDeepestMountPoint()
    {
        const QList<Drive> drives = {{u"c:"_qs, DriveType::Fixed, u"/"_qs},
                                     {u"d:"_qs, DriveType::CdRom, QString()},
                                     {u"e:"_qs, DriveType::Removable, u"/media/usb"_qs},
                                     {u"f:"_qs, DriveType::Fixed, u"/mnt/disk/"_qs}};
        QCOMPARE(driveHolding(drives, u"/home/kalvex2"_qs), 0);
        QCOMPARE(driveHolding(drives, u"/"_qs), 0);
        QCOMPARE(driveHolding(drives, u"/media/usb"_qs), 2);
        QCOMPARE(driveHolding(drives, u"/media/usb/kalvex2"_qs), 2);
        QCOMPARE(driveHolding(drives, u"/media/usb2"_qs), 0);
        QCOMPARE(driveHolding(drives, u"/mnt/disk/kalvex2"_qs), 3);
        QCOMPARE(driveHolding({}, u"/home"_qs), -1);
    }

    // A real mount after the drives were first read: the mount table wakes the watcher, and the
    // image becomes a CD-ROM drive; unmounted, it goes.
    void aMountAfterStartIsFollowed()
    {
        QString why;
        if (!TestSupport::fuseUsable(&why))
            QSKIP(qPrintable(u"FUSE cannot be used here: "_qs + why));
        QTemporaryDir work;
        const QDir base(work.path());
        QVERIFY(base.mkdir(u"tree"_qs) && base.mkdir(u"mnt"_qs));
        QVERIFY(TestSupport::writeFile(base.filePath(u"tree/A.TXT"_qs), "x"));
        const QString image = base.filePath(u"stick.iso"_qs);
        QString output;
        QVERIFY2(TestSupport::run(u"genisoimage"_qs, {u"-quiet"_qs, u"-J"_qs, u"-o"_qs, image, base.filePath(u"tree"_qs)}, &output),
                 qPrintable(output));

        LinuxDrives drives;
        const QList<Drive> before = drives.drives();
        QSignalSpy changed(&drives, &Drives::changed);
        const QString mountPoint = base.filePath(u"mnt"_qs);
        QVERIFY2(TestSupport::run(u"fuseiso"_qs, {image, mountPoint}, &output), qPrintable(output));
        const bool seen = changed.wait(5000);
        const QList<Drive> after = drives.drives();
        const bool unmounted = TestSupport::unmountFuse(mountPoint);
        QVERIFY2(seen, "the mount table did not wake the watcher");
        const auto imageDrive = std::find_if(after.cbegin(), after.cend(),
                                             [&](const Drive &drive) { return drive.mountPoint == mountPoint; });
        QVERIFY2(imageDrive != after.cend(), "the mounted image is not a drive");
        QCOMPARE(imageDrive->type, DriveType::CdRom);
        for (const Drive &drive : before) { // the drives that stay keep their letters
            for (const Drive &now : after) {
                if (now.mountPoint == drive.mountPoint && now.device == drive.device)
                    QCOMPARE(now.name, drive.name);
            }
        }

        QVERIFY(unmounted);
        QVERIFY(changed.wait(5000));
        for (const Drive &drive : drives.drives())
            QVERIFY(drive.mountPoint != mountPoint);
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
