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
    void writesQuotedLinesWithCrLf()
    {
        QTemporaryDir dir;
        const QList<QByteArray> entries = {"d:\\JEUX", "d:\\LISEZMOI.TXT", "d:\\SETUP.EXE", "d:\\JEUX\\.",
                                           "d:\\JEUX\\..", "d:\\JEUX\\CASSE.EXE"};
        QVERIFY(ArchiveFile::write(dir.path(), QStringLiteral("PCFUN75"), entries));
        QCOMPARE(readFile(dir.filePath(QStringLiteral("PCFUN75.lst"))),
                 QByteArray("\"d:\\JEUX\"\r\n\"d:\\LISEZMOI.TXT\"\r\n\"d:\\SETUP.EXE\"\r\n\"d:\\JEUX\\.\"\r\n"
                            "\"d:\\JEUX\\..\"\r\n\"d:\\JEUX\\CASSE.EXE\"\r\n"));
        // Bytes are written as they are: an accented name stays one Windows-1252 byte.
        QCOMPARE(ArchiveFile::encode({"d:\\CAF\xC9"}), QByteArray("\"d:\\CAF\xC9\"\r\n"));
    }

    void emptyListWritesNoFileAndKeepsTheOldOne()
    {
        QTemporaryDir dir;
        QVERIFY(!ArchiveFile::write(dir.path(), QStringLiteral("VIDE"), {}));
        QVERIFY(!QFile::exists(dir.filePath(QStringLiteral("VIDE.lst"))));

        QVERIFY(writeFile(dir.filePath(QStringLiteral("OLD.lst")), "\"d:\\A\"\r\n"));
        QVERIFY(!ArchiveFile::write(dir.path(), QStringLiteral("OLD"), {}));
        QCOMPARE(readFile(dir.filePath(QStringLiteral("OLD.lst"))), QByteArray("\"d:\\A\"\r\n"));
    }

    void largeArchivesAreWrittenWholeAcrossWriteBuffers()
    {
        // Lines that cross the writer's buffer, and one longer than the buffer itself.
        QList<QByteArray> entries;
        for (int i = 0; i < 5000; ++i)
            entries.append("d:\\DOSSIER " + QByteArray::number(i) + '\\' + QByteArray(i % 97, char('A' + i % 26)));
        entries.insert(2500, "d:\\" + QByteArray(200 * 1024, 'L'));
        QTemporaryDir dir;
        QVERIFY(ArchiveFile::write(dir.path(), QStringLiteral("GROS"), entries));
        QCOMPARE(readFile(dir.filePath(QStringLiteral("GROS.lst"))), ArchiveFile::encode(entries));

        // A writer given nothing leaves no file, even a temporary one.
        ArchiveWriter writer(dir.path(), QStringLiteral("RIEN"));
        QVERIFY(!writer.commit());
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{QStringLiteral("GROS.lst")});
    }

    void existingArchiveIsReplacedWhole()
    {
        QTemporaryDir dir;
        QVERIFY(ArchiveFile::write(dir.path(), QStringLiteral("PCMAG13"), {"d:\\A", "d:\\B", "d:\\C"}));
        QVERIFY(ArchiveFile::write(dir.path(), QStringLiteral("PCMAG13"), {"d:\\Z"}));
        QCOMPARE(readFile(dir.filePath(QStringLiteral("PCMAG13.lst"))), QByteArray("\"d:\\Z\"\r\n"));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{QStringLiteral("PCMAG13.lst")});
    }

    void replacedArchiveKeepsItsPermissions()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("PCFUN75.lst"));
        QVERIFY(ArchiveFile::write(dir.path(), QStringLiteral("PCFUN75"), {"d:\\A"}));
        QVERIFY(QFileInfo(path).permissions().testFlag(QFileDevice::ReadOther));
        QVERIFY(QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner));
        QVERIFY(ArchiveFile::write(dir.path(), QStringLiteral("PCFUN75"), {"d:\\B"}));
        QVERIFY(!QFileInfo(path).permissions().testFlag(QFileDevice::ReadOther));
        QCOMPARE(readFile(path), QByteArray("\"d:\\B\"\r\n"));
    }

    void unwritableFolderLeavesNothingHalfWritten()
    {
        QTemporaryDir dir;
        const QString missing = dir.filePath(QStringLiteral("absent/deeper"));
        QVERIFY(!ArchiveFile::write(missing, QStringLiteral("X"), {"d:\\A"}));
        QVERIFY(!QFile::exists(missing));
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
        for (const char *name : {"pcmag13.lst", "PCFUN75.lst", "Zeta.LST", "notes.txt", "B.lst.bak"})
            QVERIFY(writeFile(dir.filePath(QLatin1String(name)), "\"d:\\A\"\r\n"));
        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("DIR.lst")));
        QCOMPARE(ArchiveFile::list(dir.path()),
                 (QStringList{QStringLiteral("PCFUN75.lst"), QStringLiteral("pcmag13.lst"), QStringLiteral("Zeta.LST")}));
        QVERIFY(ArchiveFile::list(dir.filePath(QStringLiteral("absent"))).isEmpty());
    }

    void readerTakesLinesWhole_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QList<QByteArray>>("lines");
        QTest::newRow("crlf") << QByteArray("\"d:\\A\"\r\n\"d:\\B\"\r\n") << QList<QByteArray>{"\"d:\\A\"", "\"d:\\B\""};
        QTest::newRow("bare lf") << QByteArray("a\nb\n") << QList<QByteArray>{"a", "b"};
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

    void readerCopesWithAHugeSingleLine()
    {
        QByteArray huge(50 * 1024 * 1024, 'x');
        huge.prepend('"');
        ArchiveReader reader(huge);
        QByteArrayView line;
        QVERIFY(reader.next(line));
        QCOMPARE(line.size(), huge.size());
        QVERIFY(!reader.next(line));
    }

    void quotesAreDroppedOnlyFromLongerLines()
    {
        QCOMPARE(unquotedArchiveLine("\"d:\\A\""), QByteArrayView("d:\\A"));
        QCOMPARE(unquotedArchiveLine("\"\""), QByteArrayView("\"\""));
        QCOMPARE(unquotedArchiveLine("abc"), QByteArrayView("b"));
    }
};

QTEST_GUILESS_MAIN(tst_ArchiveFile)
#include "tst_archivefile.moc"
