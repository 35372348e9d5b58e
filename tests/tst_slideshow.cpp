#include "fakeservices.h"
#include "slideshow.h"
#include "testsupport.h"
#include "viewerrules.h"

#include <QTemporaryDir>
#include <QFile>
#include <QTest>
#include <QTimer>

#include <sys/stat.h>

using ViewerRules::Fit;

Q_DECLARE_METATYPE(Fit)

// The viewers' show and rules, with a fake clock: no test waits for real time.
class TestSlideShow : public QObject
{
    Q_OBJECT

private:
    // The seconds passed on `clock` since `start`.
    static double since(const QDateTime &start, const FakeClock &clock)
    {
        return start.msecsTo(clock.current) / 1000.0;
    }

private slots:
    void fittingRule_data()
    {
        QTest::addColumn<QSize>("picture");
        QTest::addColumn<QSize>("frame");
        QTest::addColumn<bool>("clear");
        QTest::addColumn<QRect>("drawn"); // empty: nothing visible drawn
        // Smaller both ways: centred at natural size.
        QTest::newRow("small") << QSize(100, 80) << QSize(400, 300) << true << QRect(150, 110, 100, 80);
        // Wider: k = round(0.67) = 1, the sides cut off by the frame.
        QTest::newRow("wide") << QSize(600, 100) << QSize(400, 300) << true << QRect(-100, 100, 600, 100);
        // Wider: k = 3 makes it too high, k2 = round(0.3) = 0: the frame is cleared and stays empty.
        QTest::newRow("k2 zero") << QSize(120, 100) << QSize(400, 90) << true << QRect();
        // Wider, too high at k = round(0.75) = 1 (H = 200 > 150): k2 = round(0.75) = 1.
        QTest::newRow("k2 one") << QSize(400, 200) << QSize(300, 150) << true << QRect(-50, -25, 400, 200);
        // Higher than wide: k = round(300 / 250) = 1, no second check.
        QTest::newRow("high") << QSize(50, 250) << QSize(40, 300) << true << QRect(-5, 25, 50, 250);
        // Square and not smaller than the frame: neither drawn nor cleared.
        QTest::newRow("square") << QSize(500, 500) << QSize(400, 300) << false << QRect();
        // As wide as the frame is not smaller: a square one is left alone.
        QTest::newRow("square, frame's width") << QSize(300, 300) << QSize(300, 400) << false << QRect();
        // Halves round to even: (401 - 100) / 2 = 150.5 gives 150, (301 - 80) / 2 = 110.5 gives 110.
        QTest::newRow("halves") << QSize(100, 80) << QSize(401, 301) << true << QRect(150, 110, 100, 80);
        // More than twice as wide as the frame: factor 0, cleared and empty.
        QTest::newRow("factor zero") << QSize(900, 100) << QSize(400, 300) << true << QRect();
    }
    void fittingRule()
    {
        QFETCH(QSize, picture);
        QFETCH(QSize, frame);
        QFETCH(bool, clear);
        QFETCH(QRect, drawn);
        const Fit fit = ViewerRules::fitPicture(picture, frame);
        QCOMPARE(fit.clear, clear);
        if (drawn.isEmpty())
            QVERIFY(!fit.draw || fit.target.isEmpty());
        else
            QCOMPARE(fit.target, drawn);
    }

    void delayValue_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("seconds");
        QTest::newRow("digits") << QStringLiteral("2") << 2.0;
        QTest::newRow("fraction") << QStringLiteral("1.5") << 1.5;
        QTest::newRow("leading number") << QStringLiteral(" 3 s") << 3.0;
        QTest::newRow("empty") << QString() << 0.0;
        QTest::newRow("not a number") << QStringLiteral("abc") << 0.0;
    }
    void delayValue()
    {
        QFETCH(QString, text);
        QFETCH(double, seconds);
        QCOMPARE(SlideShow::numericValue(text), seconds);
    }

    void namesAndTargets()
    {
        QCOMPARE(ViewerRules::iconCaption(QStringLiteral("CASSE.ICO"), QStringLiteral("old")), QStringLiteral("CASSE"));
        QCOMPARE(ViewerRules::iconCaption(QStringLiteral("A.IC"), QStringLiteral("old")), QString());
        QCOMPARE(ViewerRules::iconCaption(QStringLiteral("ICO"), QStringLiteral("old")), QStringLiteral("old"));
        QCOMPARE(ViewerRules::targetFolder(QStringLiteral("/")), QStringLiteral("/"));
        QCOMPARE(ViewerRules::targetFolder(QStringLiteral("/tmp/copies")), QStringLiteral("/tmp/copies/"));
        QCOMPARE(ViewerRules::storedFileName(QStringLiteral("D:\\IMAGES\\PLAGE.JPG")), QStringLiteral("PLAGE.JPG"));
        QCOMPARE(ViewerRules::storedFileName(QStringLiteral("PLAGE.JPG")), QStringLiteral("PLAGE.JPG"));
        QCOMPARE(ViewerRules::copyOneQuestion(QStringLiteral("D:\\A.BMP"), QStringLiteral("/t/")),
                 QStringLiteral("Etes-vous sûr de vouloir copier  D:\\A.BMP dans le répertoire /t/ ?"));
        QCOMPARE(ViewerRules::textPrintX(11906, 15000), -1547);
        QCOMPARE(ViewerRules::textPrintX(11906, 6000), 2953);
    }

    void textFiles()
    {
        // Windows-1252, CR LF lines, and nothing from the DOS end-of-file mark on.
        QCOMPARE(ViewerRules::decodeText(QByteArray("\xc9t\xe9\r\n\xc0 lire\x1a\x1a junk")),
                 QStringLiteral("Été\nÀ lire"));
        QCOMPARE(ViewerRules::decodeText(QByteArray("\x1a junk")), QString()); // a mark first: nothing
        QTemporaryDir dir;
        const QString empty = dir.filePath(QStringLiteral("VIDE.TXT"));
        QVERIFY(TestSupport::writeFile(empty, {}));
        QCOMPARE(ViewerRules::readWholeText(empty), QString());
        QCOMPARE(ViewerRules::readWholeText(dir.filePath(QStringLiteral("ABSENT.DIZ"))), QString());
        QCOMPARE(ViewerRules::readWholeText(dir.path()), QString()); // a directory
        QCOMPARE(ViewerRules::readWholeText(QString()), QString());
    }

    // What a medium may hold under a text's name: each gives at once what the viewer can show.
    void hostileTextFiles_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("shown"); // the start of what is shown
        QTest::addColumn<qsizetype>("size");
        const qsizetype cut = ViewerRules::kShownTextBytes + ViewerRules::cutTextNotice().size();
        QTest::newRow("link to /dev/zero") << u"zero"_qs << QString() << qsizetype(0);
        QTest::newRow("FIFO") << u"fifo"_qs << QString() << qsizetype(0);
        QTest::newRow("20 MB of NUL bytes") << u"nul"_qs << QString(QChar(0)) << cut;
        QTest::newRow("20 MB line of A") << u"A"_qs << u"A"_qs << cut;
        QTest::newRow("end mark within the limit") << u"mark"_qs << u"A"_qs << qsizetype(10);
        QTest::newRow("exactly the limit, 1 MB") << u"limit"_qs << u"A"_qs << qsizetype(1 << 20);
    }

    void hostileTextFiles()
    {
        QFETCH(QString, kind);
        QFETCH(QString, shown);
        QFETCH(qsizetype, size);
        QTemporaryDir dir;
        const QString path = dir.filePath(u"LISEZMOI.TXT"_qs);
        if (kind == u"zero")
            QVERIFY(QFile::link(u"/dev/zero"_qs, path));
        else if (kind == u"fifo")
            QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        else if (kind == u"mark")
            QVERIFY(TestSupport::writeFile(path, QByteArray(10, 'A') + '\x1a' + QByteArray(3 << 20, 'B')));
        else if (kind == u"limit")
            QVERIFY(TestSupport::writeFile(path, QByteArray(1 << 20, 'A')));
        else
            QVERIFY(TestSupport::writeFile(path, QByteArray(20 << 20, kind == u"nul" ? '\0' : 'A')));
        const QString text = ViewerRules::readWholeText(path);
        QCOMPARE(text.size(), size);
        QVERIFY(text.startsWith(shown));
        QCOMPARE(text.endsWith(ViewerRules::cutTextNotice()), size > ViewerRules::kShownTextBytes);
    }

    // Each step is followed by the delay on the clock; a slider move while it runs takes effect.
    void showWaitsTheDelay()
    {
        FakeClock clock;
        SlideShow show(clock);
        show.setDelayText(QStringLiteral("9")); // discarded: every show starts at 2 seconds
        clock.onRead = [&clock] { clock.advanceSeconds(0.5); };
        const QDateTime start = clock.current;
        QList<double> times;
        show.run(3, [&](int step) {
            times.append(since(start, clock));
            if (step == 1)
                show.sliderMoved(5);
        });
        QCOMPARE(times.size(), 3);
        QVERIFY(times[1] - times[0] >= 2.0 && times[1] - times[0] < 3.0);
        QVERIFY(times[2] - times[1] >= 5.0 && times[2] - times[1] < 6.0);
        QCOMPARE(show.delayText(), QStringLiteral("5"));
    }

    // The stop box ticked during a wait ends the show after that wait; a dismissal during a wait
    // empties the delay, so the remaining steps follow at once.
    void stopAndDismissDuringTheWait()
    {
        FakeClock clock;
        SlideShow show(clock);
        int steps = 0;
        clock.onRead = [&] {
            clock.advanceSeconds(0.5);
            show.setStopped(true);
        };
        show.run(5, [&](int) { ++steps; });
        QCOMPARE(steps, 1);

        bool dismissed = false;
        connect(&show, &SlideShow::dismissed, this, [&dismissed] { dismissed = true; });
        const QDateTime start = clock.current;
        QList<double> times;
        clock.onRead = [&] {
            clock.advanceSeconds(0.25);
            if (times.size() == 1 && !dismissed && show.delayText() == QStringLiteral("2"))
                show.dismiss();
        };
        show.run(5, [&](int) { times.append(since(start, clock)); });
        QVERIFY(dismissed);
        QCOMPARE(show.delayText(), QString());
        QCOMPARE(times.size(), 5);
        QVERIFY2(times[4] - times[1] < 2.0, qPrintable(QString::number(times[4] - times[1]))); // no more waits
    }

    // While paused nothing moves on; unticking lets the show go on.
    void pauseHoldsTheShow()
    {
        FakeClock clock;
        SlideShow show(clock);
        int steps = 0;
        int stepsWhenResumed = -1;
        clock.onRead = [&] {
            clock.advanceSeconds(1);
            if (steps == 1 && !show.isPaused() && stepsWhenResumed < 0) {
                show.setPaused(true);
                QTimer::singleShot(0, &show, [&] {
                    stepsWhenResumed = steps;
                    show.setPaused(false);
                });
            }
        };
        show.run(3, [&](int) { ++steps; });
        QCOMPARE(stepsWhenResumed, 1);
        QCOMPARE(steps, 3);
    }

    // 75 files in pages of 70: cells 1 to 5 again for the last five, one wait only.
    void pages()
    {
        FakeClock clock;
        SlideShow show(clock);
        clock.onRead = [&clock] { clock.advanceSeconds(0.25); };
        const QDateTime start = clock.current;
        QList<int> cells;
        show.runPages(75, 70, [&](int index, int cell) {
            QCOMPARE(index, cells.size());
            cells.append(cell);
        });
        QCOMPARE(cells.size(), 75);
        QCOMPARE(cells[69], 70);
        QCOMPARE(cells.mid(70), (QList<int>{1, 2, 3, 4, 5}));
        QVERIFY(since(start, clock) >= 2.0 && since(start, clock) < 4.0);

        // Stopped during the wait after the full page: the next page never starts.
        clock.onRead = [&] {
            clock.advanceSeconds(0.5);
            show.setStopped(true);
        };
        cells.clear();
        show.runPages(75, 70, [&](int, int cell) { cells.append(cell); });
        QCOMPARE(cells.size(), 70);
    }
};

QTEST_GUILESS_MAIN(TestSlideShow)
#include "tst_slideshow.moc"
