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
    void freshDirectoryGainsExactlyTheFiveFolders()
    {
        QTemporaryDir dir;
        QVERIFY(writeFile(dir.filePath(QStringLiteral("kalvex2")), "program"));
        const DataDirectory data(dir.path());
        data.startUp();
        QCOMPARE(QDir::currentPath(), QDir(dir.path()).canonicalPath());
        QCOMPARE(QDir(dir.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Unsorted).size(), 5);
        for (const QString &folder : DataDirectory::defaultFolders())
            QVERIFY(QDir(dir.filePath(folder)).isEmpty());
        QCOMPARE(data.archiveFolders(), (QStringList{QStringLiteral("Divers"), QStringLiteral("Images"),
                                                     QStringLiteral("Internet"), QStringLiteral("Musique"),
                                                     QStringLiteral("Photos")}));
        QCOMPARE(data.storedPath(), dir.path() + QLatin1Char('/'));
        QCOMPARE(data.folderPath(QStringLiteral("Divers")), dir.path() + QStringLiteral("/Divers"));
    }

    void existingArchivesAndUserFoldersAreKept()
    {
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("Divers")));
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("Jeux")));
        QVERIFY(ArchiveFile::write(dir.filePath(QStringLiteral("Divers")), QStringLiteral("PCFUN75"), {"d:\\A"}));
        const DataDirectory data(dir.path());
        data.startUp();
        data.startUp(); // a second start changes nothing
        QCOMPARE(readFile(dir.filePath(QStringLiteral("Divers/PCFUN75.lst"))), QByteArray("\"d:\\A\"\r\n"));
        QVERIFY(data.archiveFolders().contains(QStringLiteral("Jeux")));
        QCOMPARE(data.archiveFolders().size(), 6);

        QVERIFY(QDir(dir.filePath(QStringLiteral("Photos"))).removeRecursively());
        data.startUp();
        QVERIFY(QDir(dir.filePath(QStringLiteral("Photos"))).exists());
    }

    void missingDataDirectoryIsNotCreated()
    {
        QTemporaryDir dir;
        const DataDirectory data(dir.filePath(QStringLiteral("gone/away")));
        data.startUp();
        QVERIFY(!QDir(dir.filePath(QStringLiteral("gone"))).exists());
        QVERIFY(data.archiveFolders().isEmpty());
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
