// A real disc image, end to end: an ISO 9660 image with Joliet and Rock Ridge, mounted with
// fuseiso, catalogued through the real drives and directory listing into an archive file.
#include "archivefile.h"
#include "filefinder.h"
#include "linuxdirectorylister.h"
#include "linuxdrives.h"
#include "testsupport.h"

#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

namespace {

void makeFile(const QDir &root, const QString &path)
{
    QVERIFY(root.mkpath(QFileInfo(root.filePath(path)).path()));
    QVERIFY(TestSupport::writeFile(root.filePath(path), "x"));
}

QList<QByteArray> walk(Drives &drives, const QString &letter)
{
    LinuxDirectoryLister lister;
    FileFinder finder(drives, lister);
    finder.setChemin(letter);
    finder.setCriteres(u"*.*"_qs);
    finder.Rechercher();
    QList<QByteArray> entries;
    for (int i = 1; i <= finder.count(); ++i)
        entries.append(finder.Lire_Fichiers(i));
    return entries;
}

} // namespace

class tst_CaptureIso : public QObject
{
    Q_OBJECT

private slots:
    void aMountedDiscGivesItsArchiveByteForByte()
    {
        QString why;
        if (!TestSupport::fuseUsable(&why))
            QSKIP(qPrintable(u"FUSE cannot be used here: "_qs + why));

        QTemporaryDir work;
        const QDir base(work.path());
        QVERIFY(base.mkdir(u"tree"_qs) && base.mkdir(u"mnt"_qs) && base.mkdir(u"Divers"_qs));
        const QDir tree(base.filePath(u"tree"_qs));
        makeFile(tree, u"A.TXT"_qs);
        makeFile(tree, u"SUB/B.TXT"_qs);
        makeFile(tree, u"JEUX/CASSE.EXE"_qs);
        QVERIFY(tree.mkpath(u"JEUX/SUB"_qs));
        QVERIFY(QFile::link(u".."_qs, tree.filePath(u"JEUX/SUB/loop"_qs)));
        makeFile(tree, u".cache/hidden.dat"_qs);
        makeFile(tree, u"Été 2001/Mes photos.jpg"_qs);
        makeFile(tree, u"Été 2001/Niveau1/Niveau2/Niveau3/fond.bmp"_qs);

        const QString image = base.filePath(u"disc.iso"_qs);
        QString output;
        QVERIFY2(TestSupport::run(u"genisoimage"_qs, {u"-quiet"_qs, u"-J"_qs, u"-R"_qs, u"-input-charset"_qs, u"utf-8"_qs,
                                         u"-V"_qs, u"KALVEX"_qs, u"-o"_qs, image, tree.path()},
                     &output),
                 qPrintable(output));

        const QString mountPoint = base.filePath(u"mnt"_qs);
        QVERIFY2(TestSupport::run(u"fuseiso"_qs, {u"-c"_qs, u"UTF-8"_qs, image, mountPoint}, &output), qPrintable(output));
        const auto unmount = qScopeGuard([&] { TestSupport::unmountFuse(mountPoint); });

        LinuxDrives drives;
        QString letter;
        for (const Drive &drive : drives.drives()) {
            if (drive.mountPoint == mountPoint) {
                QCOMPARE(drive.type, DriveType::CdRom);
                letter = drive.name;
            }
        }
        QVERIFY2(!letter.isEmpty(), "the mounted image is not a drive");

        const QList<QByteArray> entries = walk(drives, letter);
        QVERIFY(ArchiveFile::write(base.filePath(u"Divers"_qs), u"DISQUE"_qs, entries));

        QByteArray expected;
        const QByteArray d = letter.toLatin1() + '\\';
        for (const char *path : {".cache", "A.TXT", "JEUX", "SUB", "\xC9t\xE9 2001",
                                 "JEUX\\.", "JEUX\\..", "JEUX\\CASSE.EXE", "JEUX\\SUB",
                                 "JEUX\\SUB\\.", "JEUX\\SUB\\..", "JEUX\\SUB\\loop",
                                 "SUB\\.", "SUB\\..", "SUB\\B.TXT",
                                 "\xC9t\xE9 2001\\.", "\xC9t\xE9 2001\\..", "\xC9t\xE9 2001\\Mes photos.jpg",
                                 "\xC9t\xE9 2001\\Niveau1",
                                 "\xC9t\xE9 2001\\Niveau1\\.", "\xC9t\xE9 2001\\Niveau1\\..",
                                 "\xC9t\xE9 2001\\Niveau1\\Niveau2",
                                 "\xC9t\xE9 2001\\Niveau1\\Niveau2\\.", "\xC9t\xE9 2001\\Niveau1\\Niveau2\\..",
                                 "\xC9t\xE9 2001\\Niveau1\\Niveau2\\Niveau3",
                                 "\xC9t\xE9 2001\\Niveau1\\Niveau2\\Niveau3\\.",
                                 "\xC9t\xE9 2001\\Niveau1\\Niveau2\\Niveau3\\..",
                                 "\xC9t\xE9 2001\\Niveau1\\Niveau2\\Niveau3\\fond.bmp"})
            expected += '"' + d + path + "\"\r\n";
        QCOMPARE(TestSupport::readFile(base.filePath(u"Divers/DISQUE.lst"_qs)), expected);

        // The tree itself, on the file system of the temporary folder, gives the same lines.
        struct TreeDrive final : Drives
        {
            QList<Drive> drives() override { return {{u"d:"_qs, DriveType::Fixed, path}}; }
            QString path;
        } treeDrive;
        treeDrive.path = tree.path();
        QList<QByteArray> fromDisk = walk(treeDrive, u"d:"_qs), fromDisc = entries;
        for (QByteArray &entry : fromDisk)
            entry.remove(0, 2);
        for (QByteArray &entry : fromDisc)
            entry.remove(0, 2);
        QCOMPARE(fromDisk, fromDisc);
    }
};

QTEST_GUILESS_MAIN(tst_CaptureIso)
#include "tst_capture_iso.moc"
