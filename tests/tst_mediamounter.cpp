// Media nobody mounted: which UDisks2 lists, mounted when an action needs its disc, and a mount
// through a real udisksd.
#include "disclocator.h"
#include "fakemediamounter.h"
#include "fakeservices.h"
#include "testsupport.h"
#include "udisksmounter.h"

#include <QDBusServiceWatcher>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

namespace {

const QString kBlock = u"org.freedesktop.UDisks2.Block"_qs;
const QString kFilesystem = u"org.freedesktop.UDisks2.Filesystem"_qs;
const QString kDrive = u"org.freedesktop.UDisks2.Drive"_qs;

using Interfaces = QMap<QString, QVariantMap>;

// A block object as GetManagedObjects gives it, with a file system unless `filesystem` is false.
Interfaces block(const QByteArray &device, const QString &drive, const QByteArrayList &mountPoints = {},
                 bool ignored = false, bool filesystem = true)
{
    Interfaces object{{kBlock, {{u"Device"_qs, QByteArray(device + '\0')}, {u"Drive"_qs, drive},
                                {u"HintIgnore"_qs, ignored}}}};
    if (filesystem)
        object.insert(kFilesystem, {{u"MountPoints"_qs, QVariant::fromValue(mountPoints)}});
    return object;
}

Interfaces drive(bool removable, bool mediaRemovable, bool optical)
{
    return {{kDrive, {{u"Removable"_qs, removable}, {u"MediaRemovable"_qs, mediaRemovable}, {u"Optical"_qs, optical}}}};
}

const QString kDrivePath = u"/org/freedesktop/UDisks2/drives/X"_qs;

} // namespace

class tst_MediaMounter : public QObject
{
    Q_OBJECT

private slots:
    void anActionMountsTheMediaToFindItsDisc_data()
    {
        QTest::addColumn<bool>("withMounter");
        QTest::addColumn<bool>("mountedAlready");
        QTest::addColumn<QString>("listedHolds"); // the disc on the medium the mounter lists
        QTest::addColumn<bool>("found");
        QTest::addColumn<QStringList>("mounted");
        const QStringList stick{u"/dev/sdb1"_qs};
        QTest::newRow("its disc nobody mounted") << true << false << u"PCFUN75"_qs << true << stick;
        QTest::newRow("another disc nobody mounted") << true << false << u"PCMAG13"_qs << false << stick;
        QTest::newRow("its disc mounted: nothing else is") << true << true << u"PCMAG13"_qs << true << QStringList();
        QTest::newRow("no UDisks2") << false << false << u"PCFUN75"_qs << false << QStringList();
    }

    void anActionMountsTheMediaToFindItsDisc()
    {
        QFETCH(bool, withMounter);
        QFETCH(bool, mountedAlready);
        QFETCH(QString, listedHolds);
        QFETCH(bool, found);
        QFETCH(QStringList, mounted);
        QTemporaryDir dir;
        for (const QString &file : {u"PCFUN75/PCFUN75.TXT"_qs, u"PCFUN75/FILE_ID.DIZ"_qs, u"PCMAG13/FILE_ID.DIZ"_qs})
            QVERIFY(TestSupport::writeFile(dir.filePath(file), "x"));
        const QString archive = dir.filePath(u"PCFUN75.lst"_qs);
        QVERIFY(TestSupport::writeFile(archive, "\"d:\\FILE_ID.DIZ\"\r\n\"d:\\PCFUN75.TXT\"\r\n"));
        FakeDrives drives({{u"c:"_qs, DriveType::Fixed, u"/"_qs}});
        if (mountedAlready)
            drives.list.append({u"d:"_qs, DriveType::CdRom, dir.filePath(u"PCFUN75"_qs), {}, u"/dev/sr0"_qs, u"fun"_qs});
        FakeMediaMounter mounter;
        mounter.media = {u"/dev/sdb1"_qs};
        mounter.mountPoints = {{u"/dev/sdb1"_qs, dir.filePath(listedHolds)}};
        mounter.onMount = [&](const QString &device, const QString &point) {
            drives.list.append({u"e:"_qs, DriveType::Fixed, point, {}, device, listedHolds});
        };
        if (withMounter)
            drives.setMounter(&mounter);

        DiscLocator locator(drives);
        const QString local = locator.localPath(u"D:\\FILE_ID.DIZ"_qs, archive);
        QCOMPARE(local, found ? dir.filePath(u"PCFUN75/FILE_ID.DIZ"_qs) : QString());
        QCOMPARE(mounter.mounted, mounted);
    }

    void unmountedMediaAreFileSystemsOfRemovableDrives_data()
    {
        QTest::addColumn<Interfaces>("blockObject");
        QTest::addColumn<Interfaces>("driveObject");
        QTest::addColumn<QStringList>("media");
        const QStringList disc{u"/dev/sr0"_qs}, none;
        const Interfaces plain = block("/dev/sr0", kDrivePath);
        QTest::newRow("a disc in an optical drive") << plain << drive(false, false, true) << disc;
        QTest::newRow("a stick's partition") << plain << drive(true, false, false) << disc;
        QTest::newRow("a card in a reader") << plain << drive(false, true, false) << disc;
        QTest::newRow("a fixed disk") << plain << drive(false, false, false) << none;
        QTest::newRow("mounted") << block("/dev/sr0", kDrivePath, {"/media/u/CD\0"_qba}) << drive(false, true, true) << none;
        QTest::newRow("hidden") << block("/dev/sr0", kDrivePath, {}, true) << drive(true, true, false) << none;
        QTest::newRow("no file system (a blank disc)") << block("/dev/sr0", kDrivePath, {}, false, false)
                                                       << drive(false, true, true) << none;
        QTest::newRow("an image on a loop device: no drive") << block("/dev/sr0", u"/"_qs) << drive(true, true, true) << none;
    }

    void unmountedMediaAreFileSystemsOfRemovableDrives()
    {
        QFETCH(Interfaces, blockObject);
        QFETCH(Interfaces, driveObject);
        QFETCH(QStringList, media);
        const UDisksObjects objects{{u"/org/freedesktop/UDisks2/block_devices/sr0"_qs, blockObject},
                                    {kDrivePath, driveObject}};
        QCOMPARE(unmountedMediaIn(objects), media);
    }

    // A container has no system bus: every call answers nothing.
    void withoutABusNothingIsMounted()
    {
        UDisks2Mounter mounter(QDBusConnection::connectToBus(u"unix:path=/nonexistent/bus"_qs, u"none"_qs));
        QCOMPARE(mounter.unmountedMedia(), QStringList());
        QCOMPARE(mounter.mount(u"/dev/sr0"_qs), std::nullopt);
    }

    // A real udisksd on a bus of the test's own (as root: udev and loop devices), an ext4 image
    // attached as a loop device, mounted through the class.
    void mountsThroughARealUDisks2()
    {
        using TestSupport::run;
        if (::geteuid() != 0)
            QSKIP("udisksd, udev and loop devices need root");
        const QString udevd = u"/lib/systemd/systemd-udevd"_qs, udisksd = u"/usr/libexec/udisks2/udisksd"_qs;
        for (const QString &program : {u"dbus-daemon"_qs, udevd, u"udevadm"_qs, udisksd, u"udisksctl"_qs, u"mkfs.ext4"_qs})
            if (QStandardPaths::findExecutable(program).isEmpty())
                QSKIP(qPrintable(u"not installed: "_qs + program));
        QTemporaryDir dir;
        QVERIFY(TestSupport::writeFile(dir.filePath(u"bus.conf"_qs), "<busconfig><type>system</type><listen>unix:path="
            + QFile::encodeName(dir.filePath(u"bus"_qs)) + "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
            "<allow user=\"*\"/><allow own=\"*\"/><allow send_destination=\"*\"/><allow receive_sender=\"*\"/></policy></busconfig>"));
        QProcess bus, udisks;
        const auto stop = qScopeGuard([&] { // udisksd first, then its bus
            for (QProcess *daemon : {&udisks, &bus})
                daemon->kill(), daemon->waitForFinished(5000);
        });
        bus.start(u"dbus-daemon"_qs, {u"--config-file="_qs + dir.filePath(u"bus.conf"_qs), u"--nofork"_qs, u"--print-address=1"_qs});
        if (!bus.waitForReadyRead(10000))
            QSKIP("dbus-daemon did not start");
        const QByteArray address = bus.readLine().trimmed();
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address); // udisksd and udisksctl, started from here, talk on this bus
        const auto unset = qScopeGuard([] { qunsetenv("DBUS_SYSTEM_BUS_ADDRESS"); });
        const QDBusConnection connection = QDBusConnection::connectToBus(QString::fromLatin1(address), u"trial"_qs);
        const auto disconnect = qScopeGuard([] { QDBusConnection::disconnectFromBus(u"trial"_qs); });
        UDisks2Mounter mounter(connection);

        // One udev for the machine: started only when none runs, and ended then.
        const bool ownUdev = !run(u"udevadm"_qs, {u"control"_qs, u"--ping"_qs});
        if (ownUdev && !run(udevd, {u"--daemon"_qs}))
            QSKIP("systemd-udevd did not start");
        const auto stopUdev = qScopeGuard([&] { ownUdev && run(u"udevadm"_qs, {u"control"_qs, u"--exit"_qs}); });
        if (!run(u"udevadm"_qs, {u"trigger"_qs, u"--action=add"_qs, u"--subsystem-match=block"_qs})
            || !run(u"udevadm"_qs, {u"settle"_qs}))
            QSKIP("udev cannot see the block devices here");
        QDBusServiceWatcher watcher(u"org.freedesktop.UDisks2"_qs, connection, QDBusServiceWatcher::WatchForRegistration);
        QSignalSpy registered(&watcher, &QDBusServiceWatcher::serviceRegistered);
        udisks.start(udisksd, QStringList());
        if (!registered.wait(15000))
            QSKIP("udisksd did not start");

        const QString label = u"KX"_qs + QString::number(::getpid());
        const QString image = dir.filePath(u"disque.img"_qs);
        QVERIFY(TestSupport::writeFile(dir.filePath(u"content/LISEZMOI.TXT"_qs), "x"));
        QVERIFY(QFile(image).open(QIODevice::WriteOnly) && QFile(image).resize(8 << 20) && run(u"mkfs.ext4"_qs, {u"-q"_qs, u"-L"_qs, label, u"-d"_qs, dir.filePath(u"content"_qs), image}));
        QString said;
        if (!run(u"udisksctl"_qs, {u"loop-setup"_qs, u"--no-user-interaction"_qs, u"-f"_qs, image}, &said))
            QSKIP(qPrintable(u"no loop device: "_qs + said));
        const QString device = QRegularExpression(u"/dev/loop[0-9]+"_qs).match(said).captured();
        QVERIFY2(!device.isEmpty(), qPrintable(said));
        const auto detach = qScopeGuard([&] {
            for (const QString &command : {u"unmount"_qs, u"loop-delete"_qs})
                run(u"udisksctl"_qs, {command, u"--no-user-interaction"_qs, u"-b"_qs, device});
        });
        run(u"udevadm"_qs, {u"settle"_qs});

        // udisksd gives the file system once udev has probed it.
        std::optional<QString> point;
        QTRY_VERIFY_WITH_TIMEOUT((point = mounter.mount(device)).has_value(), 15000);
        QCOMPARE(*point, u"/media/root/"_qs + label);
        QVERIFY(QFileInfo(*point + u"/LISEZMOI.TXT"_qs).isFile());
        QCOMPARE(mounter.mount(device), point); // mounted already: where it is
        QVERIFY(!mounter.unmountedMedia().contains(device)); // an image the system attached is no removable medium
    }
};

QTEST_MAIN(tst_MediaMounter)
#include "tst_mediamounter.moc"
