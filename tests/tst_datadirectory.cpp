#include "archivefile.h"
#include "datadirectory.h"
#include "testsupport.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

using TestSupport::readFile;
using TestSupport::writeFile;

class tst_DataDirectory : public QObject
{
    Q_OBJECT

private slots:
    void startUpAddsTheMissingDefaultFoldersAndKeepsTheRest()
    {
        QTemporaryDir dir;
        QVERIFY(writeFile(dir.filePath(u"kalvex2"_qs), "program"));
        const DataDirectory data(dir.path());
        data.startUp();
        QCOMPARE(QDir::currentPath(), QDir(dir.path()).canonicalPath());
        QCOMPARE(data.archiveFolders(), (QStringList{u"Divers"_qs, u"Images"_qs, u"Internet"_qs, u"Musique"_qs, u"Photos"_qs}));
        QCOMPARE(data.storedPath(), dir.path() + u'/');
        QCOMPARE(data.folderPath(u"Divers"_qs), dir.path() + u"/Divers"_qs);

        QVERIFY(QDir(dir.path()).mkpath(u"Jeux"_qs));
        QVERIFY(ArchiveFile::write(dir.filePath(u"Divers"_qs), u"PCFUN75"_qs, {"d:\\A"}));
        QVERIFY(QDir(dir.filePath(u"Photos"_qs)).removeRecursively());
        data.startUp();
        QCOMPARE(readFile(dir.filePath(u"Divers/PCFUN75.lst"_qs)), QByteArray("\"d:\\A\"\r\n"));
        QCOMPARE(data.archiveFolders().size(), 6);
        QVERIFY(data.archiveFolders().contains(u"Photos"_qs));

        const DataDirectory missing(dir.filePath(u"gone/away"_qs)); // never created
        missing.startUp();
        QVERIFY(!QDir(dir.filePath(u"gone"_qs)).exists());
        QVERIFY(missing.archiveFolders().isEmpty());
    }

    void readOnlyDataDirectoryStartsWithWhatItHas()
    {
        // A read-only file system even for root: an ISO 9660 image mounted through FUSE.
        QString why;
        if (!TestSupport::fuseUsable(&why))
            QSKIP(qPrintable(QStringLiteral("cannot mount a read-only image: ") + why));
        QTemporaryDir dir;
        const QString tree = dir.filePath(QStringLiteral("tree"));
        QVERIFY(QDir().mkpath(tree + QStringLiteral("/Divers")));
        QVERIFY(writeFile(tree + QStringLiteral("/Divers/PCMAG13.lst"), "\"d:\\A\"\r\n"));
        const QString image = dir.filePath(QStringLiteral("data.iso"));
        QCOMPARE(QProcess::execute(QStringLiteral("genisoimage"),
                                   {QStringLiteral("-quiet"), QStringLiteral("-R"), QStringLiteral("-J"),
                                    QStringLiteral("-o"), image, tree}), 0);
        const QString mountPoint = dir.filePath(QStringLiteral("mnt"));
        QVERIFY(QDir().mkpath(mountPoint));
        QCOMPARE(QProcess::execute(QStringLiteral("fuseiso"), {image, mountPoint}), 0);
        const auto unmount = qScopeGuard([&] {
            QDir::setCurrent(dir.path()); // a busy mount point cannot be unmounted
            TestSupport::unmountFuse(mountPoint);
        });
        const DataDirectory data(mountPoint);
        data.startUp();
        QCOMPARE(data.archiveFolders(), QStringList{QStringLiteral("Divers")});
    }

    void bareNamesResolveIgnoringCase()
    {
        QTemporaryDir dir;
        const DataDirectory data(dir.path());
        // Nothing there yet: the name as given, the one to create.
        QCOMPARE(data.file(QStringLiteral("themes.txt")), dir.filePath(QStringLiteral("themes.txt")));
        QVERIFY(writeFile(dir.filePath(QStringLiteral("themes.txt")), "jeux\r\n"));
        QCOMPARE(data.file(QStringLiteral("THEMES.txt")), dir.filePath(QStringLiteral("themes.txt")));
        QVERIFY(writeFile(dir.filePath(QStringLiteral("inkjet.ico")), "x"));
        QCOMPARE(data.file(QStringLiteral("Inkjet.ico")), dir.filePath(QStringLiteral("inkjet.ico")));
        // An exact match wins; two inexact candidates give no single answer.
        QVERIFY(writeFile(dir.filePath(QStringLiteral("Inkjet.ico")), "y"));
        QCOMPARE(data.file(QStringLiteral("Inkjet.ico")), dir.filePath(QStringLiteral("Inkjet.ico")));
        QCOMPARE(data.file(QStringLiteral("INKJET.ICO")), dir.filePath(QStringLiteral("INKJET.ICO")));
    }
};

QTEST_GUILESS_MAIN(tst_DataDirectory)
#include "tst_datadirectory.moc"
