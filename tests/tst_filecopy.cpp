#include "filecopy.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

class tst_FileCopy : public QObject
{
    Q_OBJECT

    static void write(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    static QByteArray read(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
    }

    static mode_t modeOf(const QString &path)
    {
        struct stat info{};
        return ::lstat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_mode : 0;
    }

    // Every entry under `path`, hidden ones too: what a refused copy must leave as it was.
    static QStringList tree(const QString &path)
    {
        QStringList entries;
        QDirIterator it(path, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (it.hasNext())
            entries << it.next();
        entries.sort();
        return entries;
    }

private slots:
    void copiesAndReplacesWhole()
    {
        QTemporaryDir dir;
        const QString source = dir.filePath(QStringLiteral("CASSE.EXE"));
        const QString target = dir.filePath(QStringLiteral("copie.exe"));
        QByteArray big(3 * 1024 * 1024 + 17, 'x');
        big[0] = 'M';
        write(source, big);
        write(target, "an older, shorter file");
        QVERIFY(copyFileInto(source, dir.path(), QStringLiteral("copie.exe")));
        QCOMPARE(read(target), big);
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 2); // no temporary left
    }

    void refusesWhatCannotBeReplaced()
    {
        QTemporaryDir dir;
        const QString source = dir.filePath(QStringLiteral("a.txt"));
        write(source, "new");
        const QString readOnly = dir.filePath(QStringLiteral("ro.txt"));
        write(readOnly, "kept");
        QFile::setPermissions(readOnly, QFileDevice::ReadOwner);
        QVERIFY(!copyFileInto(source, dir.path(), QStringLiteral("ro.txt")));
        QCOMPARE(read(readOnly), QByteArray("kept"));
        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("sub")));
        QVERIFY(!copyFileInto(source, dir.path(), QStringLiteral("sub")));
        QVERIFY(QFileInfo(dir.filePath(QStringLiteral("sub"))).isDir());

        QVERIFY(!copyFileInto(dir.filePath(QStringLiteral("missing")), dir.path(), QStringLiteral("b.txt")));
        QVERIFY(!QFile::exists(dir.filePath(QStringLiteral("b.txt"))));
        QVERIFY(!copyFileInto(source, dir.filePath(QStringLiteral("no/such/dir")), QStringLiteral("a.txt")));
    }

    void ontoItselfKeepsTheContent()
    {
        QTemporaryDir dir;
        const QString source = dir.filePath(QStringLiteral("a.txt"));
        write(source, "content");
        QVERIFY(copyFileInto(source, dir.path(), QStringLiteral("a.txt")));
        QCOMPARE(read(source), QByteArray("content"));
        QVERIFY(QFile::link(source, dir.filePath(QStringLiteral("link.txt"))));
        QVERIFY(copyFileInto(dir.filePath(QStringLiteral("link.txt")), dir.path(), QStringLiteral("a.txt")));
        QCOMPARE(read(source), QByteArray("content"));
    }

    void replacesALinkNotWhatItPointsTo_data()
    {
        QTest::addColumn<bool>("victimExists");
        QTest::newRow("link to a file") << true;
        QTest::newRow("dangling link") << false;
    }

    void replacesALinkNotWhatItPointsTo()
    {
        QFETCH(bool, victimExists);
        QTemporaryDir dir;
        QTemporaryDir elsewhere;
        const QString source = dir.filePath(QStringLiteral("GOOD.TXT"));
        const QString victim = elsewhere.filePath(QStringLiteral("victim.txt"));
        write(source, "copy");
        if (victimExists)
            write(victim, "victim");
        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("target")));
        const QString link = dir.filePath(QStringLiteral("target/GOOD.TXT"));
        QVERIFY(QFile::link(victim, link));

        QVERIFY(copyFileInto(source, dir.filePath(QStringLiteral("target")), QStringLiteral("GOOD.TXT")));
        QVERIFY(S_ISREG(modeOf(link)));
        QCOMPARE(read(link), QByteArray("copy"));
        QCOMPARE(tree(elsewhere.path()), victimExists ? QStringList{victim} : QStringList{});
        if (victimExists)
            QCOMPARE(read(victim), QByteArray("victim"));
    }

    void takesTheSourcePermissions_data()
    {
        QTest::addColumn<int>("sourceMode");
        QTest::addColumn<int>("oldTargetMode"); // 0: no file there yet
        QTest::addColumn<int>("expected");
        QTest::newRow("0640") << 0640 << 0 << 0640;
        QTest::newRow("0755") << 0755 << 0 << 0755;
        QTest::newRow("set-uid dropped") << 04755 << 0 << 0755;
        QTest::newRow("not the old target's") << 0640 << 0666 << 0640;
    }

    void takesTheSourcePermissions()
    {
        QFETCH(int, sourceMode);
        QFETCH(int, oldTargetMode);
        QFETCH(int, expected);
        QTemporaryDir dir;
        const QString source = dir.filePath(QStringLiteral("a.txt"));
        const QString target = dir.filePath(QStringLiteral("b.txt"));
        write(source, "secret");
        QCOMPARE(::chmod(QFile::encodeName(source).constData(), mode_t(sourceMode)), 0);
        if (oldTargetMode) {
            write(target, "old");
            QCOMPARE(::chmod(QFile::encodeName(target).constData(), mode_t(oldTargetMode)), 0);
        }
        const mode_t oldMask = ::umask(0); // the mode must not depend on it
        const bool copied = copyFileInto(source, dir.path(), QStringLiteral("b.txt"));
        ::umask(oldMask);
        QVERIFY(copied);
        QCOMPARE(int(modeOf(target) & 07777), expected);
    }

    void namesOfCopies_data()
    {
        QTest::addColumn<QString>("storedPath");
        QTest::addColumn<QString>("expected"); // empty: nothing is copied
        QTest::newRow("path") << QStringLiteral("D:\\JEUX\\CASSE.EXE") << QStringLiteral("CASSE.EXE");
        QTest::newRow("bare name") << QStringLiteral("CASSE.EXE") << QStringLiteral("CASSE.EXE");
        QTest::newRow("empty") << QStringLiteral("D:\\JEUX\\") << QString();
        QTest::newRow("dot") << QStringLiteral("D:\\.") << QString();
        QTest::newRow("dot dot") << QStringLiteral("D:\\..") << QString();
        QTest::newRow("slash") << QStringLiteral("D:\\a/b") << QString();
        QTest::newRow("up and out") << QStringLiteral("../x") << QString();
        QTest::newRow("nul") << QStringLiteral("D:\\x") + QChar(0) + QStringLiteral("y") << QString();
    }

    // The rule, and the copy that keeps it whatever name its caller passes.
    void namesOfCopies()
    {
        QFETCH(QString, storedPath);
        QFETCH(QString, expected);
        QCOMPARE(copiedFileName(storedPath), expected);

        QTemporaryDir dir;
        const QString source = dir.filePath(QStringLiteral("source"));
        write(source, "copy");
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("target/a")));
        const QStringList before = tree(dir.path());
        const QString name = storedPath.mid(storedPath.lastIndexOf(QLatin1Char('\\')) + 1);
        QCOMPARE(copyFileInto(source, dir.filePath(QStringLiteral("target")), name), !expected.isEmpty());
        if (expected.isEmpty())
            QCOMPARE(tree(dir.path()), before);
        else
            QCOMPARE(read(dir.filePath(QStringLiteral("target/") + expected)), QByteArray("copy"));
    }

    void readsOnlyARegularSource_data()
    {
        QTest::addColumn<bool>("fifo");
        QTest::newRow("FIFO") << true;
        QTest::newRow("link to /dev/zero") << false;
    }

    // Neither may hang the copy nor feed it without end; the test would never return.
    void readsOnlyARegularSource()
    {
        QFETCH(bool, fifo);
        QTemporaryDir dir;
        const QString source = dir.filePath(QStringLiteral("source"));
        if (fifo)
            QCOMPARE(::mkfifo(QFile::encodeName(source).constData(), 0600), 0);
        else
            QVERIFY(QFile::link(QStringLiteral("/dev/zero"), source));
        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("target")));
        QVERIFY(!copyFileInto(source, dir.filePath(QStringLiteral("target")), QStringLiteral("GOOD.TXT")));
        QCOMPARE(tree(dir.filePath(QStringLiteral("target"))), QStringList{});
    }

    void joinsWithoutDoublingTheSeparator()
    {
        QCOMPARE(pathInDirectory(QStringLiteral("/"), QStringLiteral("A.ICO")), QStringLiteral("/A.ICO"));
        QCOMPARE(pathInDirectory(QStringLiteral("/tmp/x"), QStringLiteral("A.ICO")), QStringLiteral("/tmp/x/A.ICO"));
        QCOMPARE(pathInDirectory(QStringLiteral("/tmp/x/"), QStringLiteral("A.ICO")), QStringLiteral("/tmp/x/A.ICO"));
    }
};

QTEST_GUILESS_MAIN(tst_FileCopy)
#include "tst_filecopy.moc"
