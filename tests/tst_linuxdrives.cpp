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

// A medium known by `medium` (empty: nothing known of it but its source).
MountEntry medium(const char *point, const char *medium, const char *source = "/dev/sdz1")
{
    MountEntry entry = mount(point, "vfat", source);
    entry.medium = QLatin1String(medium);
    return entry;
}

// The drives as "letter type mount point medium"; `afterC`: only those after c:.
QStringList describe(const QList<Drive> &drives, bool afterC = false)
{
    QStringList out;
    for (const Drive &drive : drives) {
        const char *type = drive.type == DriveType::CdRom ? "cd" : drive.type == DriveType::Removable ? "floppy" : "disk";
        if (!afterC || drive.name > u"c:")
            out.append(u"%1 %2 %3 %4"_qs.arg(drive.name, QLatin1String(type), drive.mountPoint, drive.medium).simplified());
    }
    return out;
}

using MountSteps = QList<QList<MountEntry>>;

} // namespace

Q_DECLARE_METATYPE(DriveInventory)
Q_DECLARE_METATYPE(MountSteps)
Q_DECLARE_METATYPE(Drive)

class tst_LinuxDrives : public QObject
{
    Q_OBJECT

private slots:
    void parsesMountInfoWithEscapes()
    {
        const QList<MountEntry> mounts = parseMountInfo(
            "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
            "40 22 11:0 / /media/user/MON\\040CD rw,relatime shared:5 master:1 - iso9660 /dev/sr0 ro\ngarbage line\n\n");
        QCOMPARE(mounts.size(), 2);
        const MountEntry &cd = mounts[1];
        QCOMPARE(QStringList({cd.mountPoint, cd.fsType, cd.source, cd.deviceNumber}).join(u'|'), u"/media/user/MON CD|iso9660|/dev/sr0|11:0"_qs);
    }

    // Which mounts are drives, and the letters a machine seen for the first time gives.
    void firstLetters_data()
    {
        QTest::addColumn<DriveInventory>("inventory");
        QTest::addColumn<QStringList>("expected");
        DriveInventory mixed{{mount("/", "ext4", "/dev/sda1"), mount("/proc", "proc", "proc"),
                              mount("/run/user/1000", "tmpfs", "tmpfs"), mount("/run/media/anne/USB", "vfat", "/dev/sdb1"),
                              mount("/media/cdrom1", "iso9660", "/dev/sr1"), mount("/tmp/disque", "fuse.fuseiso", "fuseiso"),
                              mount("/home", "ext4", "/dev/sda2"), mount("/mnt/secret", "ext4", "/dev/sda3", false),
                              mount("/snap/core/1", "squashfs", "/dev/loop0")},
                             {u"/dev/fd0"_qs}, {u"/dev/sr0"_qs, u"/dev/sr1"_qs}};
        // An empty optical drive is listed all the same; an image mounted through FUSE is a CD-ROM.
        const QStringList mixedLetters = {u"a: floppy"_qs, u"c: disk /"_qs, u"d: cd"_qs, u"e: cd /media/cdrom1 source:/dev/sr1"_qs,
                                          u"f: disk /home source:/dev/sda2"_qs, u"g: disk /run/media/anne/USB source:/dev/sdb1"_qs,
                                          u"h: cd /tmp/disque source:fuseiso at /tmp/disque"_qs};
        QTest::newRow("devices, then mount points") << mixed << mixedLetters;
        std::reverse(mixed.mounts.begin(), mixed.mounts.end());
        QTest::newRow("the table in another order") << mixed << mixedLetters;
        const DriveInventory floppies{{mount("/", "ext4", "/dev/sda1"), mount("/mnt/cd", "ext4", "/dev/sdc1"),
                                       mount("/mnt/cd", "udf", "/dev/sdc2")},
                                      {u"/dev/fd0"_qs, u"/dev/fd1"_qs, u"/dev/fd2"_qs}, {}};
        QTest::newRow("two floppies; the last mount at a point") << floppies
            << QStringList{u"a: floppy"_qs, u"b: floppy"_qs, u"c: disk /"_qs, u"d: cd /mnt/cd source:/dev/sdc2"_qs};
        const DriveInventory system{{
            mount("/", "btrfs", "/dev/nvme0n1p2", true, "0:31"),
            mount("/home", "btrfs", "/dev/nvme0n1p2", true, "0:31"),    // a subvolume
            mount("/srv/www", "btrfs", "/dev/nvme0n1p2", true, "0:31"), // a bind mount
            mount("/boot/efi", "vfat", "/dev/nvme0n1p1", true, "259:1"), mount("/data", "ext4", "/dev/sda1", true, "8:1"),
            mount("/work", "overlay", "overlay", true, "0:31"), // told by its device number
        }, {}, {}};
        QTest::newRow("the system's own file system") << system << QStringList{u"c: disk /"_qs, u"d: disk /data source:/dev/sda1"_qs};
    }

    void firstLetters()
    {
        QFETCH(DriveInventory, inventory);
        QFETCH(QStringList, expected);
        DriveLetterBook book;
        QCOMPARE(describe(assignDriveLetters(inventory, book)), expected);
    }

    // The same run sees mounts come and go: each medium keeps its letter, wherever it is mounted.
    void lettersStayWithMedia_data()
    {
        QTest::addColumn<MountSteps>("steps");
        QTest::addColumn<QList<QStringList>>("expected"); // after each step
        QTest::newRow("remounted in the other order")
            << MountSteps{{medium("/media/a", "PCFUN75"), medium("/media/b", "PCMAG13")}, {},
                          {medium("/media/a", "PCMAG13"), medium("/media/b", "PCFUN75")}}
            << QList<QStringList>{{u"d: cd"_qs, u"e: disk /media/a PCFUN75"_qs, u"f: disk /media/b PCMAG13"_qs},
                                  {u"d: cd"_qs},
                                  {u"d: cd"_qs, u"e: disk /media/b PCFUN75"_qs, u"f: disk /media/a PCMAG13"_qs}};
        QTest::newRow("a disc replaced in the same drive")
            << MountSteps{{medium("/media/cdrom", "PCFUN75", "/dev/sr0"), medium("/media/s", "STICK")},
                          {medium("/media/cdrom", "PCMAG13", "/dev/sr0"), medium("/media/s", "STICK")}}
            << QList<QStringList>{{u"d: cd /media/cdrom PCFUN75"_qs, u"e: disk /media/s STICK"_qs},
                                  {u"d: cd /media/cdrom PCMAG13"_qs, u"e: disk /media/s STICK"_qs}};
        QTest::newRow("two copies of one disc")
            << MountSteps{{medium("/media/a", "PCFUN75"), medium("/mnt/image", "PCFUN75")}, {medium("/mnt/image", "PCFUN75")},
                          {medium("/mnt/image", "PCFUN75"), medium("/media/z", "PCFUN75")}}
            << QList<QStringList>{{u"d: cd"_qs, u"e: disk /media/a PCFUN75"_qs, u"f: disk /mnt/image PCFUN75"_qs},
                                  {u"d: cd"_qs, u"f: disk /mnt/image PCFUN75"_qs},
                                  {u"d: cd"_qs, u"e: disk /media/z PCFUN75"_qs, u"f: disk /mnt/image PCFUN75"_qs}};
        QTest::newRow("known by the mount source; a freed letter stays free")
            << MountSteps{{medium("/media/a", "", "/dev/sdb1"), medium("/mnt/1", "", "fuseiso")},
                          {medium("/media/a", "", "/dev/sdc1")}, {medium("/media/b", "", "/dev/sdb1")}}
            << QList<QStringList>{{u"d: cd"_qs, u"e: disk /media/a source:/dev/sdb1"_qs, u"f: disk /mnt/1 source:fuseiso at /mnt/1"_qs},
                                  {u"d: cd"_qs, u"g: disk /media/a source:/dev/sdc1"_qs},
                                  {u"d: cd"_qs, u"e: disk /media/b source:/dev/sdb1"_qs}};
    }

    void lettersStayWithMedia()
    {
        QFETCH(MountSteps, steps);
        QFETCH(QList<QStringList>, expected);
        DriveInventory inventory{{}, {}, {u"/dev/sr0"_qs}};
        LinuxDrives drives([&inventory] { return inventory; });
        QSignalSpy changed(&drives, &Drives::changed);
        for (qsizetype i = 0; i < steps.size(); ++i) {
            inventory.mounts = QList<MountEntry>{mount("/", "ext4", "/dev/sda1", true, "8:1")} + steps[i];
            drives.refresh();
            QCOMPARE(describe(drives.drives(), true), expected[i]);
        }
        drives.refresh(); // nothing changed: nothing said
        QCOMPARE(changed.size(), steps.size());
    }

    // The letters outlive the run; a lost or foreign memory only means letters given afresh.
    void lettersAreRememberedAcrossRuns()
    {
        QTemporaryDir data;
        const QString bookFile = data.filePath(u"lecteurs.txt"_qs);
        DriveInventory inventory{{mount("/", "ext4", "/dev/sda1"), medium("/media/a", "PCFUN75"), medium("/media/b", "PCMAG13")}, {}, {}};
        const auto letters = [&] { return describe(LinuxDrives([&] { return inventory; }, bookFile).drives(), true); };
        QCOMPARE(letters(), (QStringList{u"d: disk /media/a PCFUN75"_qs, u"e: disk /media/b PCMAG13"_qs}));
        // The next run: PCMAG13 alone, then a new disc, which does not take PCFUN75's letter.
        inventory.mounts = {mount("/", "ext4", "/dev/sda1"), medium("/media/a", "PCMAG13"), medium("/media/c", "NEW")};
        QCOMPARE(letters(), (QStringList{u"e: disk /media/a PCMAG13"_qs, u"f: disk /media/c NEW"_qs}));
        QVERIFY(TestSupport::writeFile(bookFile, "e\tx\n\x01\x02 garbage\n"));
        QCOMPARE(letters(), (QStringList{u"d: disk /media/a PCMAG13"_qs, u"e: disk /media/c NEW"_qs}));
    }

    // Every letter from d: to z: held in this run: a new volume gets none rather than a letter
    // twice. In the next run, it takes the letter of the medium seen longest ago.
    void whenEveryLetterIsTaken()
    {
        QTemporaryDir data;
        const QString bookFile = data.filePath(u"lecteurs.txt"_qs);
        DriveInventory inventory{{mount("/", "ext4", "/dev/sda1")}, {}, {}};
        for (int letter = 0; letter < 23; ++letter) { // in letter order
            const QByteArray point = "/media/v" + QByteArray::number(100 + letter);
            inventory.mounts.append(medium(point.constData(), point.constData()));
        }
        {
            LinuxDrives drives([&] { return inventory; }, bookFile);
            const QList<Drive> before = drives.drives();
            inventory.mounts.append(medium("/media/w", "NEW"));
            QCOMPARE(drives.drives(), before);
        }
        inventory.mounts.remove(1, 2); // v100 (d:) and v101 (e:) went
        QCOMPARE(describe(LinuxDrives([&] { return inventory; }, bookFile).drives(), true).first(), u"d: disk /media/w NEW"_qs);
    }

    // What a chooser shows of a drive: in its list, and under it.
    void descriptions_data()
    {
        QTest::addColumn<Drive>("drive");
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("description");
        QTest::newRow("labelled") << Drive{u"d:"_qs, DriveType::CdRom, u"/media/user/PCFUN75"_qs, u"PCFUN75"_qs}
                                  << u"d:  PCFUN75  (/media/user/PCFUN75)"_qs << u"[PCFUN75]  /media/user/PCFUN75"_qs;
        QTest::newRow("no label") << Drive{u"e:"_qs, DriveType::Fixed, u"/data"_qs} << u"e:  (/data)"_qs << u"/data"_qs;
        QTest::newRow("empty") << Drive{u"d:"_qs, DriveType::CdRom, {}, {}, u"/dev/sr0"_qs} << u"d:  (vide)"_qs
                               << u"(aucun support)"_qs;
    }

    void descriptions()
    {
        QFETCH(Drive, drive);
        QFETCH(QString, line);
        QFETCH(QString, description);
        QCOMPARE(driveListLine(drive), line);
        QCOMPARE(driveDescription(drive), description);
    }

    // A path belongs to the deepest mount point holding it; a drive is named by its letter.
    void drivesByPathAndByName()
    {
        const QList<Drive> drives = {{u"c:"_qs, DriveType::Fixed, u"/"_qs},
                                     {u"d:"_qs, DriveType::CdRom, QString()},
                                     {u"e:"_qs, DriveType::Removable, u"/media/usb"_qs},
                                     {u"f:"_qs, DriveType::Fixed, u"/mnt/disk/"_qs}};
        QList<qsizetype> held;
        for (const char *path : {"/home/kalvex2", "/media/usb", "/media/usb/kalvex2", "/media/usb2", "/mnt/disk/kalvex2"})
            held.append(driveHolding(drives, QLatin1String(path)));
        QCOMPARE(held, (QList<qsizetype>{0, 2, 2, 0, 3}));
        QCOMPARE(driveHolding({}, u"/home"_qs), -1);
        QVERIFY(driveNameOf(u"D:\\"_qs) == u"d:"_qs && driveNameOf(u"d"_qs) == u"d:"_qs);
        QVERIFY(driveNameOf(u""_qs).isEmpty() && driveNameOf(u"\\x"_qs).isEmpty());

        // The machine's own drives: c: is always there and holds "/".
        LinuxDrives machine;
        QCOMPARE(machine.find(u"C:\\"_qs).value_or(Drive()).mountPoint, u"/"_qs);
        QVERIFY(!machine.find(u"?"_qs).has_value());
    }

    // A real mount after the drives were first read: the mount table wakes the watcher, and the
    // image becomes a CD-ROM drive known by its file and labelled with its volume identifier;
    // unmounted, it goes.
    void aMountAfterStartIsFollowed()
    {
        QString why;
        if (!TestSupport::fuseUsable(&why))
            QSKIP(qPrintable(u"FUSE cannot be used here: "_qs + why));
        QTemporaryDir work;
        const QString image = work.filePath(u"stick.iso"_qs), mountPoint = work.filePath(u"mnt"_qs);
        QString output;
        QVERIFY(QDir().mkpath(mountPoint) && TestSupport::writeFile(work.filePath(u"tree/A.TXT"_qs), "x"));
        QVERIFY2(TestSupport::run(u"genisoimage"_qs, {u"-quiet"_qs, u"-J"_qs, u"-V"_qs, u"PCFUN75"_qs, u"-o"_qs, image,
                                                     work.filePath(u"tree"_qs)}, &output), qPrintable(output));
        LinuxDrives drives;
        drives.drives();
        QSignalSpy changed(&drives, &Drives::changed);
        QVERIFY2(TestSupport::run(u"fuseiso"_qs, {image, mountPoint}, &output), qPrintable(output));
        const bool seen = changed.wait(5000);
        const Drive imageDrive = drives.drives().value(driveHolding(drives.drives(), mountPoint));
        const bool unmounted = TestSupport::unmountFuse(mountPoint);
        QVERIFY2(seen, "the mount table did not wake the watcher");
        QVERIFY(imageDrive.mountPoint == mountPoint && imageDrive.type == DriveType::CdRom);
        QCOMPARE(imageDrive.label + u' ' + imageDrive.medium, u"PCFUN75 file:"_qs + QFileInfo(image).canonicalFilePath());
        QVERIFY(unmounted && changed.wait(5000));
        QVERIFY(drives.drives().value(driveHolding(drives.drives(), mountPoint)).mountPoint != mountPoint);
    }
};

QTEST_GUILESS_MAIN(tst_LinuxDrives)
#include "tst_linuxdrives.moc"
