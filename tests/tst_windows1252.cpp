#include "windows1252.h"

#include <QTest>

class tst_Windows1252 : public QObject
{
    Q_OBJECT

private slots:
    void encodingAndUpperCasing()
    {
        QByteArray all;
        for (int i = 0; i < 256; ++i)
            all.append(char(i));
        QCOMPARE(Windows1252::encode(Windows1252::decode(all)), all);
        QCOMPARE(Windows1252::decode("\x80\x92\xE9"), u"€’é"_qs);
        // Outside the code page: one '?' per character, a surrogate pair included.
        QCOMPARE(Windows1252::encode(u"Thèmes € œuvre 日本 \U0001F600"), QByteArray("Th\xE8mes \x80 \x9C" "uvre ?? ?"));
        // The division sign, the sharp s and micro have no capital here.
        QCOMPARE(Windows1252::toUpper("d:\\caf\xE9\\\x9A\x9C\x9E\xFF.txt\xF7\xDF\xB5"),
                 QByteArray("D:\\CAF\xC9\\\x8A\x8C\x8E\x9F.TXT\xF7\xDF\xB5"));
        // Text keeps what the code page cannot hold, one for one, so a name keeps its length
        // (QString::toUpper turns "ß" into "SS", and "ǆ" has a capital outside the code page).
        QCOMPARE(Windows1252::toUpper(u"straße été œuvre šž ÿ ? ǆ日😀x"), u"STRAßE ÉTÉ ŒUVRE ŠŽ Ÿ ? ǆ日😀X"_qs);
    }

    void nativeNamesBecomeOneCatalogueLine_data()
    {
        QTest::addColumn<QByteArray>("native");
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("ascii") << QByteArray("SETUP.EXE") << QByteArray("SETUP.EXE");
        QTest::newRow("accents in utf-8") << QByteArray("Caf\xC3\xA9 cr\xC3\xA8me") << QByteArray("Caf\xE9 cr\xE8me");
        QTest::newRow("line ends and quote") << QByteArray("a\r\nb\"c") << QByteArray("a??b?c");
        QTest::newRow("outside the code page") << QByteArray("\xE6\x97\xA5.txt") << QByteArray("?.txt");
        QTest::newRow("not utf-8") << QByteArray("bad\xFF.txt") << QByteArray("bad?.txt");
        QTest::newRow("cut sequence") << QByteArray("a\xC3") << QByteArray("a?");
        QTest::newRow("overlong slash") << QByteArray("\xC0\xAF") << QByteArray("??");
        QTest::newRow("encoded surrogate") << QByteArray("\xED\xA0\x80x") << QByteArray("???x");
        QTest::newRow("four bytes") << QByteArray("\xF0\x9F\x98\x80!") << QByteArray("?!");
        QTest::newRow("lead bytes that never begin a sequence")
            << QByteArray("\xF5\x80\x80|\xF8\x88\x80\x80\x80|\xFF\xBF\xBF|\xC1\xBF") << QByteArray("???|?????|???|??");
        QTest::newRow("lone continuation bytes") << QByteArray("\x80\xBFok") << QByteArray("??ok");
        QTest::newRow("euro and oe") << QByteArray("\xE2\x82\xAC\xC5\x93") << QByteArray("\x80\x9C");
        // Eight ASCII bytes are looked at as one word: each line breaker at each place of one (the
        // accent before each begins a new word).
        QByteArray runs, lines, all;
        for (const char breaker : {'"', '\r', '\n'}) {
            for (int place = 0; place < 8; ++place) {
                QByteArray run(9, 'a');
                run[place] = breaker;
                runs += "\xC3\xA9" + run;
                lines += "\xE9" + run.replace(breaker, '?');
            }
        }
        QTest::newRow("line breakers at each place of a word") << runs << lines;
        for (int i = 0; i < 256; ++i)
            all.append(char(i));
        QTest::newRow("the whole code page") << Windows1252::decode(all).toUtf8()
                                             << all.replace('"', '?').replace('\r', '?').replace('\n', '?');
    }

    void nativeNamesBecomeOneCatalogueLine()
    {
        QFETCH(QByteArray, native);
        QFETCH(QByteArray, line);
        QCOMPARE(Windows1252::fromNativeFileName(native), line);
    }
};

QTEST_GUILESS_MAIN(tst_Windows1252)
#include "tst_windows1252.moc"
