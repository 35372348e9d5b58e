#include "tablefile.h"
#include "testsupport.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>


#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Runs `read` in a child process that is killed after ten seconds or when it takes over 1 GB, so a
// reader that hangs or eats memory fails the test instead of taking the machine down with it.
// Returns the number of items read, or -1 when the child did not end by itself.
int itemsReadInBoundedChild(const QString &path)
{
    const pid_t child = ::fork();
    if (child == 0) {
#ifndef __SANITIZE_ADDRESS__ // its shadow memory alone is far beyond the limit
        const rlimit memory{rlim_t(1) << 30, rlim_t(1) << 30};
        ::setrlimit(RLIMIT_AS, &memory);
#endif
        ::alarm(10);
        ::_exit(std::min<int>(int(TableFile::read(path).size()), 100));
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}

} // namespace

class tst_TableFile : public QObject
{
    Q_OBJECT

private slots:
    void fieldsSplitAtCommasAndDropLeadingBlanks_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QStringList>("items");
        QTest::newRow("comma splits") << QByteArray("TXT         &4C:\\PROG, V2\\EDIT\r\n")
                                      << QStringList{u"TXT         &4C:\\PROG"_qs, u"V2\\EDIT"_qs};
        QTest::newRow("leading blanks only") << QByteArray("   a  ,  b \r\n") << QStringList{u"a  "_qs, u"b "_qs};
        QTest::newRow("leading tabs too") << QByteArray("\t a\t,\tb\r\n") << QStringList{u"a\t"_qs, u"b"_qs};
        QTest::newRow("empty line is an empty item") << QByteArray("a\r\n\r\nb\r\n")
                                                     << QStringList{u"a"_qs, QString(), u"b"_qs};
        QTest::newRow("bare lf, no last end") << QByteArray("a\nb") << QStringList{u"a"_qs, u"b"_qs};
        QTest::newRow("windows-1252") << QByteArray("th\xE8me\r\n") << QStringList{u"thème"_qs};
        QTest::newRow("nothing") << QByteArray() << QStringList{};
    }

    void fieldsSplitAtCommasAndDropLeadingBlanks()
    {
        QFETCH(QByteArray, data);
        QFETCH(QStringList, items);
        QCOMPARE(TableFile::fields(data), items);
    }

    void writesEveryLineWithCrLfAndReadsItBack()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"themes.txt"_qs);
        QVERIFY(TableFile::read(path).isEmpty()); // a missing file is an empty table
        const QStringList lines = {u"jeux"_qs, QString(), u"thème"_qs};
        QVERIFY(TableFile::write(path, lines));
        QCOMPARE(TestSupport::readFile(path), QByteArray("jeux\r\n\r\nth\xE8me\r\n"));
        QCOMPARE(TableFile::read(path), lines);
        QVERIFY(TableFile::write(path, {}));
        QCOMPARE(TestSupport::readFile(path), QByteArray());
    }

    void onlyRegularFilesAreReadAndNeverWithoutEnd()
    {
        QTemporaryDir dir;
        QVERIFY(TableFile::write(dir.filePath(u"real.txt"_qs), {u"jeux"_qs, u"musique"_qs}));
        QCOMPARE(::mkfifo(QFile::encodeName(dir.filePath(u"fifo"_qs)).constData(), 0600), 0);
        QVERIFY(QFile::link(dir.filePath(u"real.txt"_qs), dir.filePath(u"themes.txt"_qs)));
        QVERIFY(QFile::link(dir.filePath(u"fifo"_qs), dir.filePath(u"extens.txt"_qs)));
        QVERIFY(QFile::link(u"/dev/zero"_qs, dir.filePath(u"zero.txt"_qs)));
        QCOMPARE(itemsReadInBoundedChild(dir.filePath(u"themes.txt"_qs)), 2); // a link to a table is read
        QCOMPARE(itemsReadInBoundedChild(dir.filePath(u"extens.txt"_qs)), 0); // waited for a writer
        QCOMPARE(itemsReadInBoundedChild(dir.filePath(u"zero.txt"_qs)), 0);   // read until memory ran out
        QCOMPARE(itemsReadInBoundedChild(dir.path()), 0);
    }

    void aHugeTableKeepsItsWholeLinesWithinTheBound()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"themes.txt"_qs);
        const QByteArray line = QByteArray(99, 'x') + "\r\n"; // 101 bytes: no line ends on the bound
        QVERIFY(TestSupport::writeFile(path, line.repeated(int(TableFile::kMaxBytes / line.size()) + 50)));
        const QStringList items = TableFile::read(path);
        QCOMPARE(items.size(), int(TableFile::kMaxBytes / line.size()));
        QCOMPARE(items.last(), QString(99, u'x'));
    }
};

QTEST_GUILESS_MAIN(tst_TableFile)
#include "tst_tablefile.moc"
