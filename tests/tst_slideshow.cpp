#include "fakeservices.h"
#include "slideshow.h"
#include "testsupport.h"
#include "viewerrules.h"

#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <sys/stat.h>

using ViewerRules::Fit;

// The viewers' show and rules, with a fake clock: no test waits for real time.
class TestSlideShow : public QObject
{
    Q_OBJECT

private slots:
    void fittingRule_data()
    {
        QTest::addColumn<QSize>("picture");
        QTest::addColumn<QSize>("frame");
        QTest::addColumn<bool>("clear");
        QTest::addColumn<QRect>("drawn"); // empty: nothing visible drawn
        QTest::newRow("smaller: centred") << QSize(100, 80) << QSize(400, 300) << true << QRect(150, 110, 100, 80);
        QTest::newRow("halves to even") << QSize(100, 80) << QSize(401, 301) << true << QRect(150, 110, 100, 80);
        QTest::newRow("wider, k = round(0.67)") << QSize(600, 100) << QSize(400, 300) << true << QRect(-100, 100, 600, 100);
        QTest::newRow("wider, too high, k2 = 0") << QSize(120, 100) << QSize(400, 90) << true << QRect();
        QTest::newRow("wider, too high, k2 = 1") << QSize(400, 200) << QSize(300, 150) << true << QRect(-50, -25, 400, 200);
        QTest::newRow("higher, k = round(1.2)") << QSize(50, 250) << QSize(40, 300) << true << QRect(-5, 25, 50, 250);
        QTest::newRow("square: left alone") << QSize(500, 500) << QSize(400, 300) << false << QRect();
        QTest::newRow("square, frame's width") << QSize(300, 300) << QSize(300, 400) << false << QRect();
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
        QCOMPARE(fit.draw && !fit.target.isEmpty() ? fit.target : QRect(), drawn);
    }

    void namesAndValues()
    {
        QCOMPARE(SlideShow::numericValue(u"1.5"_qs), 1.5);
        QCOMPARE(SlideShow::numericValue(u" 3 s"_qs), 3.0); // the leading number
        QVERIFY(SlideShow::numericValue(QString()) == 0.0 && SlideShow::numericValue(u"abc"_qs) == 0.0);
        QCOMPARE(ViewerRules::iconCaption(u"CASSE.ICO"_qs, u"old"_qs), u"CASSE"_qs);
        QVERIFY(ViewerRules::iconCaption(u"A.IC"_qs, u"old"_qs).isEmpty() && ViewerRules::iconCaption(u"ICO"_qs, u"old"_qs) == u"old"_qs);
        QVERIFY(ViewerRules::targetFolder(u"/"_qs) == u"/"_qs && ViewerRules::targetFolder(u"/tmp/copies"_qs) == u"/tmp/copies/"_qs);
        QVERIFY(ViewerRules::storedFileName(u"D:\\IMAGES\\PLAGE.JPG"_qs) == u"PLAGE.JPG"_qs && ViewerRules::storedFileName(u"PLAGE.JPG"_qs) == u"PLAGE.JPG"_qs);
        QVERIFY(ViewerRules::textPrintX(11906, 15000) == -1547 && ViewerRules::textPrintX(11906, 6000) == 2953);
    }

    // What a medium may hold under a text's name: each gives at once what the viewer can show,
    // Windows-1252 decoded, CR LF as LF, nothing from the DOS end-of-file mark on.
    void texts_data()
    {
        QTest::addColumn<QString>("kind"); // empty: a file of `bytes`
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("shown"); // the start of what is shown
        QTest::addColumn<qsizetype>("size");
        const qsizetype cut = ViewerRules::kShownTextBytes + ViewerRules::cutTextNotice().size();
        QTest::newRow("decoded") << QString() << QByteArray("\xc9t\xe9\r\n\xc0 lire\x1a\x1a junk") << u"Été\nÀ lire"_qs << qsizetype(10);
        QTest::newRow("a mark first") << QString() << QByteArray("\x1a junk") << QString() << qsizetype(0);
        QTest::newRow("FIFO") << u"fifo"_qs << QByteArray() << QString() << qsizetype(0);
        QTest::newRow("20 MB of NUL bytes") << QString() << QByteArray(20 << 20, '\0') << QString(QChar(0)) << cut;
        QTest::newRow("20 MB line of A") << QString() << QByteArray(20 << 20, 'A') << u"A"_qs << cut;
        QTest::newRow("mark within the limit") << QString() << QByteArray(10, 'A') + '\x1a' + QByteArray(3 << 20, 'B') << u"A"_qs << qsizetype(10);
        QTest::newRow("exactly the limit, 1 MB") << QString() << QByteArray(1 << 20, 'A') << u"A"_qs << qsizetype(1 << 20);
    }
    void texts()
    {
        QFETCH(QString, kind);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, shown);
        QFETCH(qsizetype, size);
        QTemporaryDir dir;
        const QString path = dir.filePath(u"LISEZMOI.TXT"_qs);
        if (kind == u"fifo") // refused at once, as any file but a regular one
            QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        else
            QVERIFY(TestSupport::writeFile(path, bytes));
        const QString text = ViewerRules::readWholeText(path);
        QCOMPARE(text.size(), size);
        QVERIFY(text.startsWith(shown));
        QCOMPARE(text.endsWith(ViewerRules::cutTextNotice()), size > ViewerRules::kShownTextBytes);
    }

    // Each step is followed by the delay, which every show starts at 2 seconds; a slider move
    // while it runs takes effect (a stop is the pages' test's). A dismissal during a wait empties
    // the delay, so the remaining steps follow at once.
    void delayAndDismiss()
    {
        FakeClock clock;
        SlideShow show(clock);
        show.setDelayText(u"9"_qs);
        const QDateTime start = clock.current;
        QList<double> times;
        const auto record = [&](int) { times.append(start.msecsTo(clock.current) / 1000.0); };
        clock.onRead = [&clock] { clock.advanceSeconds(0.5); };
        show.run(3, [&](int step) {
            record(step);
            if (step == 1)
                show.sliderMoved(5);
        });
        QVERIFY(times.size() == 3 && times[1] - times[0] >= 2.0 && times[1] - times[0] < 3.0);
        QVERIFY(times[2] - times[1] >= 5.0 && times[2] - times[1] < 6.0);
        QCOMPARE(show.delayText(), u"5"_qs);

        bool dismissed = false;
        connect(&show, &SlideShow::dismissed, this, [&dismissed] { dismissed = true; });
        times.clear();
        clock.onRead = [&] {
            clock.advanceSeconds(0.25);
            if (times.size() == 1 && !dismissed && show.delayText() == u"2"_qs)
                show.dismiss();
        };
        show.run(5, record);
        QVERIFY(dismissed && show.delayText().isEmpty());
        QVERIFY2(times.size() == 5 && times[4] - times[1] < 2.0, qPrintable(QString::number(times[4] - times[1])));
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
        QVERIFY(stepsWhenResumed == 1 && steps == 3);
    }

    // 75 files in pages of 70: cells 1 to 5 again for the last five, one wait only; stopped
    // during the wait after the full page, the next page never starts.
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
        QVERIFY(cells.size() == 75 && cells[69] == 70);
        QCOMPARE(cells.mid(70), (QList<int>{1, 2, 3, 4, 5}));
        QVERIFY(start.secsTo(clock.current) >= 2 && start.secsTo(clock.current) < 4);

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
