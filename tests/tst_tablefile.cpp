#include "tablefile.h"
#include "testsupport.h"

#include <QTemporaryDir>
#include <QTest>

class tst_TableFile : public QObject
{
    Q_OBJECT

private slots:
    void fieldsSplitAtCommasAndDropLeadingBlanks_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QStringList>("items");
        QTest::newRow("one a line") << QByteArray("jeux\r\nmusique\r\n") << QStringList{u"jeux"_qs, u"musique"_qs};
        QTest::newRow("comma splits") << QByteArray("TXT         &4C:\\PROG, V2\\EDIT\r\n")
                                      << QStringList{u"TXT         &4C:\\PROG"_qs, u"V2\\EDIT"_qs};
        QTest::newRow("leading blanks only") << QByteArray("   a  ,  b \r\n") << QStringList{u"a  "_qs, u"b "_qs};
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
};

QTEST_GUILESS_MAIN(tst_TableFile)
#include "tst_tablefile.moc"
