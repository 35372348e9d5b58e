#include "fakeservices.h"
#include "listprintout.h"
#include "testsupport.h"
#include "textformat.h"

#include <QTemporaryDir>
#include <QTest>

class tst_ListPrintout : public QObject
{
    Q_OBJECT

private slots:
    void numbersAndDates()
    {
        QCOMPARE(formatSigned(5), u" 5"_qs);
        QCOMPARE(formatSigned(-12), u"-12"_qs);
        QCOMPARE(formatDate(QDate(1999, 12, 5)), u"12-05-1999"_qs);
    }

    // The dialogs, then the date, an empty line and the items; cancelled dialogs still print,
    // in the fallback font.
    void dialogsThenDateEmptyLineAndItems()
    {
        FakePrinter printer;
        FakeClock clock;
        printList(printer, clock, {u"PCFUN75.lst"_qs, u"PCMAG13.lst"_qs});
        QCOMPARE(printer.log, (QStringList{u"choosePrinter"_qs, u"chooseFont"_qs, u"font=DejaVu Sans,12"_qs, u"chooseColour"_qs,
                                           u"colour=#000000"_qs, u"x=2000"_qs, u"y=1000"_qs, u"print:03-21-2001"_qs, u"x=2000"_qs,
                                           u"print:"_qs, u"x=2000"_qs, u"print:PCFUN75.lst"_qs, u"x=2000"_qs,
                                           u"print:PCMAG13.lst"_qs, u"endDocument"_qs}));
        QCOMPARE(printer.fontFlags, 3);
        FakePrinter cancelled;
        cancelled.printerAnswer = false;
        cancelled.fontAnswer = {};
        printList(cancelled, clock, {u"Divers"_qs});
        QVERIFY(cancelled.log.contains(u"font=MS Sans Serif,0"_qs));
        QCOMPARE(cancelled.printedLines(), (QStringList{u"03-21-2001"_qs, QString(), u"Divers"_qs}));
    }

    // On a real page (a PDF): 2000 twips from the printable area's left, the date 1000 twips from
    // its top, the first item two lines below it, the 80th on the second page.
    void realPdfHasTheLinesAtTheirPlaces()
    {
        KALVEX_REQUIRE_PROGRAM(u"pdftotext"_qs);
        QTemporaryDir dir;
        const QString pdf = dir.filePath(u"liste.pdf"_qs);
        QStringList items;
        for (int i = 1; i <= 80; ++i)
            items.append(u"ARCHIVE%1.lst"_qs.arg(i));
        {
            FakePrinter printer(pdf);
            printList(printer, FakeClock(), items);
        }
        const QList<TestSupport::PdfWord> words = TestSupport::pdfWords(pdf);
        QCOMPARE(words.size(), 81);
        // 2000 twips (100 pt) from the paper's left edge, the date's line 1000 twips (50 pt) from
        // its top: a PDF page has margins, which positions ignore.
        QCOMPARE(words[0].text, u"03-21-2001"_qs);
        QVERIFY2(qAbs(words[0].box.left() - 100) < 2 && words[0].box.top() > 48 && words[0].box.top() < 56,
                 qPrintable(u"date at %1,%2"_qs.arg(words[0].box.left()).arg(words[0].box.top())));
        const double line = words[2].box.top() - words[1].box.top();
        QVERIFY(line > 5 && qAbs((words[1].box.top() - words[0].box.top()) - 2 * line) < 1.5);
        for (const TestSupport::PdfWord &word : words)
            QCOMPARE(qRound(word.box.left()), qRound(words[0].box.left()));
        QVERIFY(words[0].page == 1 && words.last().text == u"ARCHIVE80.lst"_qs && words.last().page == 2);
    }
};

QTEST_MAIN(tst_ListPrintout)
#include "tst_listprintout.moc"
