// The walk of a medium (its order, limits, stops and failures) and the archive name's rules.
#include "archivename.h"
#include "fakedirectorylister.h"
#include "fakedrives.h"
#include "filefinder.h"
#include "gate.h"
#include "testsupport.h"
#include "walkthread.h"

#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>

namespace {

using Item = FakeDirectoryLister::Item;

QList<QByteArray> results(const FileFinder &finder)
{
    QList<QByteArray> out;
    for (int i = 1; i <= finder.count(); ++i)
        out.append(finder.Lire_Fichiers(i));
    return out;
}

// A whole walk of drive d: (a CD-ROM at `mountPoint`), as the creation window asks for it.
struct Walk
{
    explicit Walk(const QString &mountPoint = u"/cd"_qs)
        : drives({{u"c:"_qs, DriveType::Fixed, u"/"_qs}, {u"d:"_qs, DriveType::CdRom, mountPoint}})
        , finder(drives, lister)
    {
        finder.setChemin(u"d:"_qs);
        finder.setCriteres(u"*.*"_qs);
    }
    QList<QByteArray> run()
    {
        finder.Rechercher();
        return results(finder);
    }

    FakeDrives drives;
    FakeDirectoryLister lister;
    FileFinder finder;
};

QList<Item> files(const QByteArray &prefix, int count)
{
    QList<Item> items;
    for (int i = 0; i < count; ++i)
        items.append({prefix + QByteArray::number(i)});
    return items;
}

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
        Walk w;
        w.lister.set("/cd/", {{"A.TXT"}, {".cache", true}, {"BAD", true}, {"SUB", true}, {"Z.TXT"}});
        w.lister.set("/cd/.cache/", {{"SECRET"}});
        w.lister.outcomes.insert("/cd/BAD/", DirectoryLister::Result::Denied);
        w.lister.set("/cd/SUB/", {{"B.TXT"}, {"DEEP", true}});
        w.lister.set("/cd/SUB/DEEP/", {{"C.TXT"}});
        w.finder.setChemin(u"d:\\"_qs);
        QCOMPARE(w.run(), (QList<QByteArray>{"d:\\A.TXT", "d:\\.cache", "d:\\BAD", "d:\\SUB", "d:\\Z.TXT", "d:\\SUB\\.",
                                             "d:\\SUB\\..", "d:\\SUB\\B.TXT", "d:\\SUB\\DEEP", "d:\\SUB\\DEEP\\.",
                                             "d:\\SUB\\DEEP\\..", "d:\\SUB\\DEEP\\C.TXT"}));
        QVERIFY(w.finder.Chemin() == u"d:\\"_qs && w.finder.NbFichiers() == u"12"_qs && !w.finder.failed());
        QCOMPARE(w.lister.listed, (QList<QByteArray>{"/cd/", "/cd/BAD/", "/cd/SUB/", "/cd/SUB/DEEP/"}));

        w.finder.setCriteres(u"*.TXT"_qs);
        QCOMPARE(w.run(), (QList<QByteArray>{"d:\\A.TXT", "d:\\Z.TXT", "d:\\SUB\\B.TXT", "d:\\SUB\\DEEP\\C.TXT"}));
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
        Walk w(mountPoint);
        w.lister.set("/cd/", {});
        w.finder.setChemin(root);
        QCOMPARE(w.run(), QList<QByteArray>());
        QVERIFY(w.finder.Lire_Fichiers(1) == "-1" && !w.finder.State());
    }

    // Paths are kept in blocks reused by the next walk, a path longer than a block included.
    void laterWalksWriteOverTheFirstOnesPaths()
    {
        Walk w;
        const QList<Item> many = files(QByteArray(100, 'f'), 3000);
        const QHash<QByteArray, QList<Item>> large = {{"/cd/", many + QList<Item>{{"SUB", true}}}, {"/cd/SUB/", many}};
        w.lister.listings = large;
        const QList<QByteArray> first = w.run();
        QCOMPARE(first[3003], "d:\\SUB\\" + many[0].name);
        const QByteArray huge(300 * 1024, 'H');
        w.lister.listings = {{"/cd/", {{"A"}, {huge, true}, {"Z"}}}, {"/cd/" + huge + "/", {{"IN"}}}};
        QCOMPARE(w.run(), (QList<QByteArray>{"d:\\A", "d:\\" + huge, "d:\\Z", "d:\\" + huge + "\\.",
                                             "d:\\" + huge + "\\..", "d:\\" + huge + "\\IN"}));
        w.lister.listings = large;
        QCOMPARE(w.run(), first);
    }

    void theCountStopsCleanlyAt32767()
    {
        Walk w;
        const QList<Item> many = files("F", 20000);
        w.lister.set("/cd/", many + QList<Item>{{"SUB", true}});
        w.lister.set("/cd/SUB/", many);
        w.run();
        QVERIFY(w.finder.NbFichiers() == u"32767"_qs && !w.finder.State());
        // 32,767 = 20,001 root entries + "." and ".." + 12,764 files of SUB.
        QCOMPARE(w.finder.Lire_Fichiers(32767), QByteArray("d:\\SUB\\F12763"));
        QCOMPARE(w.finder.Lire_Fichiers(32768), QByteArray("-1"));
    }

    void runsOnAWorkerThreadWhileTheCountIsRead()
    {
        Walk w;
        w.lister.set("/cd/", files("FILE", 30000));
        WalkThread search(w.finder);
        QSignalSpy finished(&search, &WalkThread::finished);
        Gate first; // holds the walk until State() has been read
        w.lister.onList = [&](const QByteArray &) { first.pass(); };
        search.start();
        const auto releaseFirst = qScopeGuard([&] { first.open(); });
        QVERIFY(w.finder.State()); // at once, before the worker has run
        first.open();
        // Whatever the count read, every entry up to it is whole.
        while (w.finder.State()) {
            if (const int seen = w.finder.count(); seen > 0)
                QCOMPARE(w.finder.Lire_Fichiers(seen), "d:\\FILE" + QByteArray::number(seen - 1));
        }
        QVERIFY(finished.wait(5000));
        QVERIFY(w.finder.count() == 30000 && !search.isRunning());

        // The next walk, of a small medium: once start() returns, none of the last walk's
        // entries can be read as this one's, however late the worker wakes.
        w.lister.set("/cd/", {{"SMALL"}});
        Gate gate;
        w.lister.onList = [&](const QByteArray &) { gate.pass(); };
        search.start();
        const auto release = qScopeGuard([&] { gate.open(); }); // a failure must not hang the walk
        QCOMPARE(w.finder.Lire_Fichiers(1), QByteArray("-1"));
        gate.open();
        QVERIFY(finished.wait(5000));
        QCOMPARE(results(w.finder), QList<QByteArray>{"d:\\SMALL"});
    }

    // A stop while the walk is inside a directory: nothing after it is read or recorded.
    void aStopCutsTheWalkShort()
    {
        Walk w;
        w.lister.set("/cd/", {{"A", true}, {"B", true}});
        w.lister.set("/cd/A/", {{"X"}});
        w.lister.set("/cd/B/", {{"Y"}});
        Gate gate;
        w.lister.onList = [&](const QByteArray &path) {
            if (path == "/cd/A/")
                gate.pass();
        };
        WalkThread search(w.finder);
        QSignalSpy finished(&search, &WalkThread::finished);
        search.start();
        QVERIFY(gate.waitForArrivals(1));
        w.finder.Annuler();
        gate.open();
        QVERIFY(finished.wait(5000) && !w.finder.State());
        QCOMPARE(results(w.finder), (QList<QByteArray>{"d:\\A", "d:\\B"}));

        Gate again;
        {
            WalkThread doomed(w.finder);
            w.lister.onList = [&](const QByteArray &) { again.pass(); };
            doomed.start();
            QVERIFY(again.waitForArrivals(1));
            again.open();
        } // destroying a running walk cancels it and waits for it
        QVERIFY(!w.finder.State());
    }

    void aMediumGoneMidWalkFailsAndStopsThere()
    {
        Walk w;
        w.lister.set("/cd/", {{"A", true}, {"B", true}, {"C", true}});
        w.lister.set("/cd/A/", {{"X"}});
        w.lister.set("/cd/C/", {{"Z"}});
        w.lister.outcomes.insert("/cd/B/", DirectoryLister::Result::Failed); // ENOTCONN, EIO, ENOENT
        QCOMPARE(w.run(), (QList<QByteArray>{"d:\\A", "d:\\B", "d:\\C", "d:\\A\\.", "d:\\A\\..", "d:\\A\\X"}));
        QVERIFY(w.finder.failed() && !w.lister.listed.contains("/cd/C/") && !w.finder.State());
        QVERIFY(!w.lister.walking); // the medium is let go

        w.lister.outcomes.clear();
        w.run(); // a new walk forgets the last one's failure
        QVERIFY(!w.finder.failed() && w.lister.current.isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_FileFinder)
#include "tst_filefinder.moc"
