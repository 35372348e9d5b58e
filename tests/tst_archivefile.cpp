#include "archivefile.h"
#include "testsupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using TestSupport::readFile;
using TestSupport::writeFile;

class tst_ArchiveFile : public QObject
{
    Q_OBJECT

private slots:
    // Written whole or not at all: quoted lines with CR LF, bytes as they are, an old archive
    // replaced with its permissions kept, and kept as it is when the new list is empty; large
    // archives whole across the writer's buffers.
    void writesQuotedLinesWithCrLfReplacingWhole()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"PCFUN75.lst"_qs);
        QVERIFY(ArchiveFile::write(dir.path(), u"PCFUN75"_qs, {"d:\\A", "d:\\B", "d:\\C"}));
        QVERIFY(QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner));
        QVERIFY(ArchiveFile::write(dir.path(), u"PCFUN75"_qs, {"d:\\JEUX", "d:\\JEUX\\.", "d:\\CAF\xC9"}));
        QCOMPARE(readFile(path), QByteArray("\"d:\\JEUX\"\r\n\"d:\\JEUX\\.\"\r\n\"d:\\CAF\xC9\"\r\n"));
        QVERIFY(!QFileInfo(path).permissions().testFlag(QFileDevice::ReadOther));
        QVERIFY(!ArchiveFile::write(dir.path(), u"PCFUN75"_qs, {}));
        QVERIFY(!ArchiveFile::write(dir.path(), u"VIDE"_qs, {}));
        QVERIFY(!ArchiveFile::write(dir.filePath(u"absent/deeper"_qs), u"X"_qs, {"d:\\A"}));
        QCOMPARE(readFile(path), QByteArray("\"d:\\JEUX\"\r\n\"d:\\JEUX\\.\"\r\n\"d:\\CAF\xC9\"\r\n"));

        // Lines that cross the writer's buffer, and one longer than the buffer itself.
        QList<QByteArray> entries;
        for (int i = 0; i < 5000; ++i)
            entries.append("d:\\DOSSIER " + QByteArray::number(i) + '\\' + QByteArray(i % 97, char('A' + i % 26)));
        entries.insert(2500, "d:\\" + QByteArray(200 * 1024, 'L'));
        QVERIFY(ArchiveFile::write(dir.path(), u"GROS"_qs, entries));
        QCOMPARE(readFile(dir.filePath(u"GROS.lst"_qs)), ArchiveFile::encode(entries));
        QCOMPARE(QDir(dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 (QStringList{u"GROS.lst"_qs, u"PCFUN75.lst"_qs}));
    }

    // A typed name is a name, never a path: nothing is written outside the folder, nor in it.
    void namesThatAreNoPlainNamesWriteNothing_data()
    {
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("atCommit");
        QTest::newRow("up two folders") << u"../../AB"_qs << u"../../AB"_qs;
        QTest::newRow("absolute") << u"/TMPX"_qs << u"/TMPX"_qs;
        QTest::newRow("backslash") << u"A\\B"_qs << u"A\\B"_qs;
        QTest::newRow("NUL") << QString(u"A"_qs + QChar(0) + u"B"_qs) << u"AB"_qs;
        QTest::newRow("renamed during the walk") << u"GOOD"_qs << u"../AB"_qs;
        QTest::newRow("plain") << u"A.B C"_qs << u"A.B C"_qs;
    }

    void namesThatAreNoPlainNamesWriteNothing()
    {
        QFETCH(QString, first);
        QFETCH(QString, atCommit);
        QTemporaryDir dir;
        const QString folder = dir.filePath(u"a/b"_qs);
        QVERIFY(QDir().mkpath(folder));
        ArchiveWriter writer(folder, first);
        writer.add("d:\\X");
        writer.setArchiveName(atCommit);
        const bool plain = QTest::currentDataTag() == QByteArray("plain");
        QCOMPARE(writer.commit(), plain);
        QCOMPARE(QDir(folder).entryList(QDir::Files).size(), plain ? 1 : 0);
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList());
        QCOMPARE(QDir(dir.filePath(u"a"_qs)).entryList(QDir::Files), QStringList());
    }

    void listsArchivesAlphabeticallyIgnoringCase()
    {
        QTemporaryDir dir;
        // Names alike but for case: capitals first, as their bytes sort.
        for (const char *name : {"pcmag13.lst", "zeta.lst", "PCFUN75.lst", "Zeta.LST", "notes.txt", "B.lst.bak"})
            QVERIFY(writeFile(dir.filePath(QLatin1String(name)), "x"));
        QVERIFY(QDir(dir.path()).mkdir(u"DIR.lst"_qs));
        QCOMPARE(ArchiveFile::list(dir.path()),
                 (QStringList{u"PCFUN75.lst"_qs, u"pcmag13.lst"_qs, u"Zeta.LST"_qs, u"zeta.lst"_qs}));
    }

    void readerTakesLinesWhole_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QList<QByteArray>>("lines");
        QTest::newRow("no last line end") << QByteArray("a\r\nb") << QList<QByteArray>{"a", "b"};
        QTest::newRow("truncated in a line end") << QByteArray("a\r") << QList<QByteArray>{"a"};
        QTest::newRow("empty lines kept") << QByteArray("\r\n\r\nx\r\n") << QList<QByteArray>{"", "", "x"};
        QTest::newRow("nul and binary bytes") << QByteArray("a\0b\r\n\xFF\xFE\x01\n", 9)
                                              << QList<QByteArray>{QByteArray("a\0b", 3), "\xFF\xFE\x01"};
        QTest::newRow("lone cr inside a line") << QByteArray("a\rb\r\n") << QList<QByteArray>{"a\rb"};
        QTest::newRow("nothing") << QByteArray() << QList<QByteArray>{};
    }

    void readerTakesLinesWhole()
    {
        QFETCH(QByteArray, data);
        QFETCH(QList<QByteArray>, lines);
        QCOMPARE(ArchiveReader::lines(data), lines);
    }

    void readerCopesWithAHugeSingleLineAndUnquotes()
    {
        QByteArray huge(50 * 1024 * 1024, 'x');
        huge.prepend('"');
        ArchiveReader reader(huge);
        QByteArrayView line;
        QVERIFY(reader.next(line));
        QCOMPARE(line.size(), huge.size());
        QVERIFY(!reader.next(line));
        // Quotes are dropped only from lines longer than them.
        QCOMPARE(unquotedArchiveLine("\"d:\\A\""), QByteArrayView("d:\\A"));
        QCOMPARE(unquotedArchiveLine("\"\""), QByteArrayView("\"\""));
        QCOMPARE(unquotedArchiveLine("abc"), QByteArrayView("b"));
    }
};

QTEST_GUILESS_MAIN(tst_ArchiveFile)
#include "tst_archivefile.moc"
