#include "archivefile.h"
#include "datadirectory.h"
#include "testsupport.h"

#include <QDir>
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

        QVERIFY(QDir(dir.path()).mkpath(u"Jeux"_qs));
        QVERIFY(ArchiveFile::write(dir.filePath(u"Divers"_qs), u"PCFUN75"_qs, {"d:\\A"}));
        QVERIFY(QDir(dir.filePath(u"Photos"_qs)).removeRecursively());
        data.startUp();
        QCOMPARE(readFile(dir.filePath(u"Divers/PCFUN75.lst"_qs)), QByteArray("\"d:\\A\"\r\n"));
        QVERIFY(data.archiveFolders().size() == 6 && data.archiveFolders().contains(u"Photos"_qs));

        const DataDirectory missing(dir.filePath(u"gone/away"_qs)); // never created
        missing.startUp();
        QVERIFY(!QDir(dir.filePath(u"gone"_qs)).exists());
        QVERIFY(missing.archiveFolders().isEmpty());
    }

    // Nothing there yet: the name as given; an exact match wins; two inexact candidates give no
    // single answer.
    void bareNamesResolveIgnoringCase()
    {
        QTemporaryDir dir;
        const DataDirectory data(dir.path());
        QCOMPARE(data.file(u"themes.txt"_qs), dir.filePath(u"themes.txt"_qs));
        for (const char *name : {"themes.txt", "inkjet.ico"})
            QVERIFY(writeFile(dir.filePath(QLatin1String(name)), "x"));
        QVERIFY(data.file(u"THEMES.txt"_qs) == dir.filePath(u"themes.txt"_qs) && data.file(u"Inkjet.ico"_qs) == dir.filePath(u"inkjet.ico"_qs));
        QVERIFY(writeFile(dir.filePath(u"Inkjet.ico"_qs), "y"));
        QCOMPARE(data.file(u"Inkjet.ico"_qs), dir.filePath(u"Inkjet.ico"_qs));
        QCOMPARE(data.file(u"INKJET.ICO"_qs), dir.filePath(u"INKJET.ICO"_qs));
    }
};

QTEST_GUILESS_MAIN(tst_DataDirectory)
#include "tst_datadirectory.moc"
