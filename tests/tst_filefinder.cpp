#include "fakedirectorylister.h"
#include "fakedrives.h"
#include "gate.h"
#include "archivename.h"
#include "filefinder.h"
#include "linuxdirectorylister.h"
#include "walkthread.h"
#include "testsupport.h"

#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>


#include <sys/stat.h>

namespace {

using Item = FakeDirectoryLister::Item;

QList<QByteArray> results(const FileFinder &finder)
{
    QList<QByteArray> out;
    for (int i = 1; i <= finder.count(); ++i)
        out.append(finder.Lire_Fichiers(i));
    return out;
}

// A whole walk of drive d:, as the creation window asks for it.
void search(FileFinder &finder)
{
    finder.setChemin(u"d:"_qs);
    finder.setCriteres(u"*.*"_qs);
    finder.Rechercher();
}

QList<Drive> cdAt(const QString &mountPoint)
{
    return {{u"c:"_qs, DriveType::Fixed, u"/"_qs}, {u"d:"_qs, DriveType::CdRom, mountPoint}};
}

// Asks the real lister, and removes a directory once the root has been listed.
class RemovingLister final : public DirectoryLister
{
public:
    Result open(const QByteArray &path, bool isRoot, DirectoryListing &entries) override
    {
        const Result result = real.open(path, isRoot, entries);
        QDir(QFile::decodeName(toRemove)).removeRecursively();
        return result;
    }
    Result enter(QByteArrayView name, DirectoryListing &entries) override { return real.enter(name, entries); }
    void leave() override { real.leave(); }
    void close() override { real.close(); }
    LinuxDirectoryLister real;
    QByteArray toRemove;
};

} // namespace

class tst_FileFinder : public QObject
{
    Q_OBJECT

private slots:
    void archiveNamesAreRefusedInOrder_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("drive");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("refusal");
        const QString tooLong = u"Nom trop long (8 caractères maxi)"_qs;
        const QString noName = u"Vous devez indiquer un nom de fichier (PCFun75,PCMag13...)"_qs;
        const QString systemDisk = u"Ce logiciel est destiné uniquement à archiver des CD-Rom ou des disquettes, "
                                   u"vous ne pouvez pas archiver un disque dur. HINT"_qs;
        QTest::newRow("eight, upper-cased") << u"pcfun75x"_qs << u"e:"_qs << u"PCFUN75X"_qs << QString();
        QTest::newRow("code page upper case") << u"straße"_qs << u"d:"_qs << u"STRAßE"_qs << QString();
        QTest::newRow("blanks") << u"   "_qs << u"e:"_qs << u"   "_qs << QString();
        QTest::newRow("nine, even on c:") << u"ABCDEFGHI"_qs << u"c:"_qs << QString() << tooLong;
        QTest::newRow("empty, even on c:") << QString() << u"c:"_qs << QString() << noName;
        QTest::newRow("../../AB") << u"../../ab"_qs << u"c:"_qs << u"../../AB"_qs << noName;
        QTest::newRow("/TMPX") << u"/TMPX"_qs << u"e:"_qs << u"/TMPX"_qs << noName;
        QTest::newRow("backslash") << u"A\\B"_qs << u"e:"_qs << u"A\\B"_qs << noName;
        QTest::newRow("..") << u".."_qs << u"e:"_qs << u".."_qs << noName;
        QTest::newRow("system disk") << u"pcfun75"_qs << u"c:"_qs << u"PCFUN75"_qs << systemDisk;
    }

    void archiveNamesAreRefusedInOrder()
    {
        QFETCH(QString, typed);
        QFETCH(QString, drive);
        QFETCH(QString, name);
        QFETCH(QString, refusal);
        const ArchiveNameCheck checked = checkArchiveName(typed, drive, u"HINT"_qs);
        QCOMPARE(checked.name, name);
        QCOMPARE(checked.refusal, refusal);
    }

    void matchesWildcardIgnoringCaseByTheCodePage_data()
    {
        QTest::addColumn<QByteArray>("pattern");
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<bool>("matches");
        QTest::newRow("? one") << QByteArray("?.EXE") << QByteArray("c.exe") << true;
        QTest::newRow("? not two") << QByteArray("?.EXE") << QByteArray("cd.exe") << false;
        QTest::newRow("* twice") << QByteArray("*A*B") << QByteArray("xxAyyB") << true;
        QTest::newRow("* anchored") << QByteArray("*A*B") << QByteArray("xxAyyBz") << false;
        QTest::newRow("accents") << QByteArray("\xC9T\xC9*") << QByteArray("\xE9t\xE9.doc") << true;
    }

    void matchesWildcardIgnoringCaseByTheCodePage()
    {
        QFETCH(QByteArray, pattern);
        QFETCH(QByteArray, name);
        QFETCH(bool, matches);
        QCOMPARE(matchesWildcard(pattern, name), matches);
    }

    // Pre-order: a directory's entries, then each sub-directory's, which starts with "." and
    // ".."; dot directories are recorded but not entered, unreadable ones give nothing.
    void walksInPreOrderOneListingADirectory()
    {
        FakeDrives drives = cdAt(u"/cd"_qs);
        FakeDirectoryLister lister;
        lister.set("/cd/", {{"A.TXT"}, {".cache", true}, {"BAD", true}, {"SUB", true}, {"Z.TXT"}});
        lister.set("/cd/.cache/", {{"SECRET"}});
        lister.outcomes.insert("/cd/BAD/", DirectoryLister::Result::Denied);
        lister.set("/cd/SUB/", {{"B.TXT"}, {"DEEP", true}});
        lister.set("/cd/SUB/DEEP/", {{"C.TXT"}});
        FileFinder finder(drives, lister);
        finder.setChemin(u"d:\\"_qs);
        QCOMPARE(finder.Chemin(), u"d:\\"_qs);
        search(finder);
        QCOMPARE(finder.Chemin(), u"d:\\"_qs);
        QCOMPARE(results(finder),
                 (QList<QByteArray>{"d:\\A.TXT", "d:\\.cache", "d:\\BAD", "d:\\SUB", "d:\\Z.TXT", "d:\\SUB\\.",
                                    "d:\\SUB\\..", "d:\\SUB\\B.TXT", "d:\\SUB\\DEEP", "d:\\SUB\\DEEP\\.",
                                    "d:\\SUB\\DEEP\\..", "d:\\SUB\\DEEP\\C.TXT"}));
        QCOMPARE(finder.NbFichiers(), u"12"_qs);
        QVERIFY(!finder.failed());
        QCOMPARE(lister.listed, (QList<QByteArray>{"/cd/", "/cd/BAD/", "/cd/SUB/", "/cd/SUB/DEEP/"}));

        finder.setCriteres(u"*.TXT"_qs);
        finder.Rechercher();
        QCOMPARE(results(finder), (QList<QByteArray>{"d:\\A.TXT", "d:\\Z.TXT", "d:\\SUB\\B.TXT",
                                                     "d:\\SUB\\DEEP\\C.TXT"}));
    }

    void emptyUnknownOrUnreadyDrivesGiveNothing_data()
    {
        QTest::addColumn<QString>("root");
        QTest::addColumn<QString>("mountPoint");
        QTest::newRow("empty medium") << u"d:"_qs << u"/cd"_qs;
        QTest::newRow("no disc in the drive") << u"d:"_qs << QString();
        QTest::newRow("no such drive") << u"q:"_qs << u"/cd"_qs;
        QTest::newRow("unreadable root") << u"d:"_qs << u"/nowhere"_qs;
    }

    void emptyUnknownOrUnreadyDrivesGiveNothing()
    {
        QFETCH(QString, root);
        QFETCH(QString, mountPoint);
        FakeDrives drives = cdAt(mountPoint);
        FakeDirectoryLister lister;
        lister.set("/cd/", {});
        FileFinder finder(drives, lister);
        finder.setChemin(root);
        finder.setCriteres(u"*.*"_qs);
        finder.Rechercher();
        QCOMPARE(finder.NbFichiers(), u"0"_qs);
        QCOMPARE(finder.Lire_Fichiers(1), QByteArray("-1"));
        QVERIFY(!finder.State());
    }

    // Paths are kept in blocks reused by the next walk, a path longer than a block included.
    void laterWalksWriteOverTheFirstOnesPaths()
    {
        FakeDrives drives = cdAt(u"/cd"_qs);
        FakeDirectoryLister lister;
        QList<Item> files;
        for (int i = 0; i < 3000; ++i)
            files.append({QByteArray(100, 'f') + QByteArray::number(i)});
        const QHash<QByteArray, QList<Item>> large = {{"/cd/", files + QList<Item>{{"SUB", true}}}, {"/cd/SUB/", files}};
        lister.listings = large;
        FileFinder finder(drives, lister);
        search(finder);
        const QList<QByteArray> first = results(finder);
        QCOMPARE(first[3003], "d:\\SUB\\" + files[0].name);
        const QByteArray huge(300 * 1024, 'H');
        lister.listings = {{"/cd/", {{"A"}, {huge, true}, {"Z"}}}, {"/cd/" + huge + "/", {{"IN"}}}};
        finder.Rechercher();
        QCOMPARE(results(finder), (QList<QByteArray>{"d:\\A", "d:\\" + huge, "d:\\Z", "d:\\" + huge + "\\.",
                                                     "d:\\" + huge + "\\..", "d:\\" + huge + "\\IN"}));
        lister.listings = large;
        finder.Rechercher();
        QCOMPARE(results(finder), first);
    }

    void theCountStopsCleanlyAt32767()
    {
        FakeDrives drives = cdAt(u"/cd"_qs);
        FakeDirectoryLister lister;
        QList<Item> many;
        for (int i = 0; i < 20000; ++i)
            many.append({"F" + QByteArray::number(i)});
        lister.set("/cd/", many + QList<Item>{{"SUB", true}});
        lister.set("/cd/SUB/", many);
        FileFinder finder(drives, lister);
        search(finder);
        QCOMPARE(finder.NbFichiers(), u"32767"_qs);
        QVERIFY(!finder.State());
        // 32,767 = 20,001 root entries + "." and ".." + 12,764 files of SUB.
        QCOMPARE(finder.Lire_Fichiers(32767), QByteArray("d:\\SUB\\F12763"));
        QCOMPARE(finder.Lire_Fichiers(32768), QByteArray("-1"));
    }

    void runsOnAWorkerThreadWhileTheCountIsRead()
    {
        FakeDrives drives = cdAt(u"/cd"_qs);
        FakeDirectoryLister lister;
        QList<Item> many;
        for (int i = 0; i < 30000; ++i)
            many.append({"FILE" + QByteArray::number(i)});
        lister.set("/cd/", many);
        FileFinder finder(drives, lister);
        finder.setChemin(u"d:"_qs);
        finder.setCriteres(u"*.*"_qs);
        WalkThread search(finder);
        QSignalSpy finished(&search, &WalkThread::finished);
        Gate first; // holds the walk until State() has been read
        lister.onList = [&](const QByteArray &) { first.pass(); };
        search.start();
        const auto releaseFirst = qScopeGuard([&] { first.open(); });
        QVERIFY(finder.State()); // at once, before the worker has run
        first.open();
        // Whatever the count read, every entry up to it is whole.
        while (finder.State()) {
            const int seen = finder.count();
            if (seen > 0)
                QCOMPARE(finder.Lire_Fichiers(seen), "d:\\FILE" + QByteArray::number(seen - 1));
        }
        QVERIFY(finished.wait(5000));
        QCOMPARE(finder.count(), 30000);
        QVERIFY(!search.isRunning());

        // The next walk, of a small medium: once start() returns, none of the last walk's
        // entries can be read as this one's, however late the worker wakes.
        lister.set("/cd/", {{"SMALL"}});
        Gate gate;
        lister.onList = [&](const QByteArray &) { gate.pass(); };
        search.start();
        const auto release = qScopeGuard([&] { gate.open(); }); // a failure must not hang the walk
        QCOMPARE(finder.count(), 0);
        QCOMPARE(finder.Lire_Fichiers(1), QByteArray("-1"));
        gate.open();
        QVERIFY(finished.wait(5000));
        QCOMPARE(results(finder), QList<QByteArray>{"d:\\SMALL"});
    }

    // A stop while the walk is inside a directory: nothing after it is read or recorded.
    void aStopCutsTheWalkShort()
    {
        FakeDrives drives = cdAt(u"/cd"_qs);
        FakeDirectoryLister lister;
        lister.set("/cd/", {{"A", true}, {"B", true}});
        lister.set("/cd/A/", {{"X"}});
        lister.set("/cd/B/", {{"Y"}});
        Gate gate;
        lister.onList = [&](const QByteArray &path) {
            if (path == "/cd/A/")
                gate.pass();
        };
        FileFinder finder(drives, lister);
        finder.setChemin(u"d:"_qs);
        finder.setCriteres(u"*.*"_qs);
        WalkThread search(finder);
        QSignalSpy finished(&search, &WalkThread::finished);
        search.start();
        QVERIFY(gate.waitForArrivals(1));
        finder.Annuler();
        gate.open();
        QVERIFY(finished.wait(5000));
        QVERIFY(!finder.State());
        QCOMPARE(results(finder), (QList<QByteArray>{"d:\\A", "d:\\B"}));
        lister.onList = nullptr; // the same walk without a stop reads B
        search.start();
        QVERIFY(finished.wait(5000));
        QVERIFY(results(finder).contains("d:\\B\\Y"));

        Gate again;
        {
            WalkThread doomed(finder);
            lister.onList = [&](const QByteArray &) { again.pass(); };
            doomed.start();
            QVERIFY(again.waitForArrivals(1));
            again.open();
        } // destroying a running walk cancels it and waits for it
        QVERIFY(!finder.State());
    }

    void realTreeWithLinkLoopUnreadableAndRemovedDirectories()
    {
        QTemporaryDir dir;
        const QDir root(dir.path());
        QVERIFY(root.mkpath(u"JEUX/SUB"_qs));
        QVERIFY(root.mkpath(u"Locked/inner"_qs));
        QVERIFY(root.mkpath(u"Gone/x"_qs));
        QVERIFY(TestSupport::writeFile(root.filePath(u"JEUX/CASSE.EXE"_qs), "x"));
        QVERIFY(TestSupport::writeFile(root.filePath(u"été 2001.txt"_qs), "x"));
        QVERIFY(QFile::link(dir.path(), root.filePath(u"JEUX/SUB/loop"_qs)));
        QVERIFY(::chmod(QFile::encodeName(root.filePath(u"Locked"_qs)).constData(), 0) == 0);

        FakeDrives drives = cdAt(dir.path());
        LinuxDirectoryLister lister;
        FileFinder finder(drives, lister);
        search(finder);
        QList<QByteArray> expected = {"d:\\Gone", "d:\\JEUX", "d:\\Locked", "d:\\\xE9t\xE9 2001.txt",
                                      "d:\\Gone\\.", "d:\\Gone\\..", "d:\\Gone\\x", "d:\\Gone\\x\\.",
                                      "d:\\Gone\\x\\..", "d:\\JEUX\\.", "d:\\JEUX\\..", "d:\\JEUX\\CASSE.EXE",
                                      "d:\\JEUX\\SUB", "d:\\JEUX\\SUB\\.", "d:\\JEUX\\SUB\\..", "d:\\JEUX\\SUB\\loop"};
        if (::geteuid() == 0) // root reads what is locked
            expected += {"d:\\Locked\\.", "d:\\Locked\\..", "d:\\Locked\\inner", "d:\\Locked\\inner\\.",
                         "d:\\Locked\\inner\\.."};
        QCOMPARE(results(finder), expected);
        QVERIFY(!finder.failed());

        // A directory listed, then gone when the walk comes to it: the medium went away.
        RemovingLister removing;
        removing.toRemove = QFile::encodeName(root.filePath(u"Gone"_qs));
        FileFinder broken(drives, removing);
        search(broken);
        ::chmod(QFile::encodeName(root.filePath(u"Locked"_qs)).constData(), 0755);
        QVERIFY(broken.failed());
        QCOMPARE(results(broken), expected.first(4));
    }

    void aMediumGoneMidWalkFailsAndStopsThere()
    {
        FakeDrives drives = cdAt(u"/cd"_qs);
        FakeDirectoryLister lister;
        lister.set("/cd/", {{"A", true}, {"B", true}, {"C", true}});
        lister.set("/cd/A/", {{"X"}});
        lister.set("/cd/C/", {{"Z"}});
        lister.outcomes.insert("/cd/B/", DirectoryLister::Result::Failed); // ENOTCONN, EIO, ENOENT
        FileFinder finder(drives, lister);
        search(finder);
        QVERIFY(finder.failed());
        QCOMPARE(results(finder), (QList<QByteArray>{"d:\\A", "d:\\B", "d:\\C", "d:\\A\\.", "d:\\A\\..",
                                                     "d:\\A\\X"}));
        QVERIFY(!lister.listed.contains("/cd/C/"));
        QVERIFY(!finder.State());
        QVERIFY(!lister.walking); // the medium is let go

        lister.outcomes.clear();
        search(finder); // a new walk forgets the last one's failure
        QVERIFY(!finder.failed());
        QVERIFY(lister.current.isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_FileFinder)
#include "tst_filefinder.moc"
