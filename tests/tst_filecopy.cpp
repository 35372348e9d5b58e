#include "filecopy.h"
#include "testsupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

class tst_FileCopy : public QObject
{
    Q_OBJECT

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
    // Replaced whole; refused onto a read-only file or a directory, from a missing source, a FIFO
    // or /dev/zero, or into a missing folder; onto itself, directly or through a link, the content stays.
    void replacesWholeOrRefuses()
    {
        QTemporaryDir dir;
        const QString source = dir.filePath(u"CASSE.EXE"_qs);
        const QByteArray big(3 * 1024 * 1024 + 17, 'x');
        TestSupport::writeFile(source, big);
        TestSupport::writeFile(dir.filePath(u"copie.exe"_qs), "an older, shorter file");
        QVERIFY(copyFileInto(source, dir.path(), u"copie.exe"_qs));
        QCOMPARE(TestSupport::readFile(dir.filePath(u"copie.exe"_qs)), big);

        TestSupport::writeFile(dir.filePath(u"ro.txt"_qs), "kept");
        QFile::setPermissions(dir.filePath(u"ro.txt"_qs), QFileDevice::ReadOwner);
        QVERIFY(QDir(dir.path()).mkdir(u"sub"_qs));
        QVERIFY(!copyFileInto(source, dir.path(), u"ro.txt"_qs));
        QVERIFY(!copyFileInto(source, dir.path(), u"sub"_qs));
        QVERIFY(!copyFileInto(dir.filePath(u"missing"_qs), dir.path(), u"b.txt"_qs));
        QVERIFY(!copyFileInto(source, dir.filePath(u"no/such/dir"_qs), u"a.txt"_qs));
        // Neither may hang the copy nor feed it without end.
        QCOMPARE(::mkfifo(QFile::encodeName(dir.filePath(u"fifo"_qs)).constData(), 0600), 0);
        QVERIFY(QFile::link(u"/dev/zero"_qs, dir.filePath(u"zero"_qs)));
        QVERIFY(!copyFileInto(dir.filePath(u"fifo"_qs), dir.path(), u"f.txt"_qs));
        QVERIFY(!copyFileInto(dir.filePath(u"zero"_qs), dir.path(), u"z.txt"_qs));
        QCOMPARE(TestSupport::readFile(dir.filePath(u"ro.txt"_qs)), QByteArray("kept"));

        QVERIFY(QFile::link(source, dir.filePath(u"link"_qs)));
        QVERIFY(copyFileInto(source, dir.path(), u"CASSE.EXE"_qs));
        QVERIFY(copyFileInto(dir.filePath(u"link"_qs), dir.path(), u"CASSE.EXE"_qs));
        QCOMPARE(TestSupport::readFile(source), big);
        QCOMPARE(tree(dir.path()), (QStringList{source, dir.filePath(u"copie.exe"_qs), dir.filePath(u"fifo"_qs),
                                                dir.filePath(u"link"_qs), dir.filePath(u"ro.txt"_qs), dir.filePath(u"sub"_qs),
                                                dir.filePath(u"zero"_qs)})); // no temporary left
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
        const QString source = dir.filePath(u"GOOD.TXT"_qs);
        const QString victim = elsewhere.filePath(u"victim.txt"_qs);
        TestSupport::writeFile(source, "copy");
        if (victimExists)
            TestSupport::writeFile(victim, "victim");
        QVERIFY(QDir(dir.path()).mkdir(u"target"_qs));
        const QString link = dir.filePath(u"target/GOOD.TXT"_qs);
        QVERIFY(QFile::link(victim, link));

        QVERIFY(copyFileInto(source, dir.filePath(u"target"_qs), u"GOOD.TXT"_qs));
        QVERIFY(S_ISREG(modeOf(link)));
        QCOMPARE(TestSupport::readFile(link), QByteArray("copy"));
        QCOMPARE(tree(elsewhere.path()), victimExists ? QStringList{victim} : QStringList{});
        if (victimExists)
            QCOMPARE(TestSupport::readFile(victim), QByteArray("victim"));
    }

    void takesTheSourcePermissions_data()
    {
        QTest::addColumn<int>("sourceMode");
        QTest::addColumn<int>("oldTargetMode"); // 0: no file there yet
        QTest::addColumn<int>("expected");
        QTest::newRow("0640") << 0640 << 0 << 0640;
        QTest::newRow("set-uid dropped") << 04755 << 0 << 0755;
        QTest::newRow("not the old target's") << 0640 << 0666 << 0640;
    }

    void takesTheSourcePermissions()
    {
        QFETCH(int, sourceMode);
        QFETCH(int, oldTargetMode);
        QFETCH(int, expected);
        QTemporaryDir dir;
        const QString source = dir.filePath(u"a.txt"_qs);
        const QString target = dir.filePath(u"b.txt"_qs);
        TestSupport::writeFile(source, "secret");
        QCOMPARE(::chmod(QFile::encodeName(source).constData(), mode_t(sourceMode)), 0);
        if (oldTargetMode) {
            TestSupport::writeFile(target, "old");
            QCOMPARE(::chmod(QFile::encodeName(target).constData(), mode_t(oldTargetMode)), 0);
        }
        const mode_t oldMask = ::umask(0); // the mode must not depend on it
        QVERIFY(copyFileInto(source, dir.path(), u"b.txt"_qs));
        ::umask(oldMask);
        QCOMPARE(int(modeOf(target) & 07777), expected);
    }

    void namesOfCopies_data()
    {
        QTest::addColumn<QString>("storedPath");
        QTest::addColumn<QString>("expected"); // empty: nothing is copied
        QTest::newRow("path") << u"D:\\JEUX\\CASSE.EXE"_qs << u"CASSE.EXE"_qs;
        QTest::newRow("bare name") << u"CASSE.EXE"_qs << u"CASSE.EXE"_qs;
        QTest::newRow("empty") << u"D:\\JEUX\\"_qs << QString();
        QTest::newRow("dot") << u"D:\\."_qs << QString();
        QTest::newRow("dot dot") << u"D:\\.."_qs << QString();
        QTest::newRow("slash") << u"D:\\a/b"_qs << QString();
        QTest::newRow("nul") << u"D:\\x"_qs + QChar(0) + u"y"_qs << QString();
    }

    // The rule, and the copy that keeps it whatever name its caller passes.
    void namesOfCopies()
    {
        QFETCH(QString, storedPath);
        QFETCH(QString, expected);
        QCOMPARE(copiedFileName(storedPath), expected);

        QTemporaryDir dir;
        const QString source = dir.filePath(u"source"_qs);
        TestSupport::writeFile(source, "copy");
        QVERIFY(QDir(dir.path()).mkpath(u"target/a"_qs));
        const QStringList before = tree(dir.path());
        const QString name = storedPath.mid(storedPath.lastIndexOf(QLatin1Char('\\')) + 1);
        QCOMPARE(copyFileInto(source, dir.filePath(u"target"_qs), name), !expected.isEmpty());
        if (expected.isEmpty())
            QCOMPARE(tree(dir.path()), before);
        else
            QCOMPARE(TestSupport::readFile(dir.filePath(u"target/"_qs + expected)), QByteArray("copy"));
    }
};

QTEST_GUILESS_MAIN(tst_FileCopy)
#include "tst_filecopy.moc"
