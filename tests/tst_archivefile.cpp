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
