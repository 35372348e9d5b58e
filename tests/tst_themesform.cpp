#include "datadirectory.h"
#include "fakeservices.h"
#include "testsupport.h"
#include "themesform.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

using TestSupport::child;

namespace {

class Driver
{
public:
    Driver(const DataDirectory &data, FakeServices &fakes, Printer &printer)
        : window(data, fakes.dialogs, printer, fakes.pictures, fakes.clock)
    {
        open();
    }

    void open()
    {
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
    }

    QString label(const QString &name) { return child<QLabel>(&window, name)->text(); }
    QListWidget *list() { return child<QListWidget>(&window, u"lines"_qs); }
    QStringList themes()
    {
        QStringList texts;
        for (int i = 0; i < list()->count(); ++i)
            texts.append(list()->item(i)->text());
        return texts;
    }
    void click(const QString &button)
    {
        QTest::mouseClick(child<QAbstractButton>(&window, button), Qt::LeftButton);
    }
    QLineEdit *box() { return child<QLineEdit>(&window, u"newTheme"_qs); }
    void type(const QString &typed)
    {
        // Key by key, with the text each key gives (keyClicks takes only ASCII).
        for (const QChar character : typed)
            QTest::sendKeyEvent(QTest::Click, box(), Qt::Key_unknown, QString(character), {});
    }
    void add(const QString &typed)
    {
        type(typed);
        click(u"add"_qs);
    }
    void chooseTheme(int row)
    {
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, list()->visualItemRect(list()->item(row)).center());
    }

    ThemesForm window;
};

} // namespace

class tst_ThemesForm : public QObject
{
    Q_OBJECT

private slots:
    void addsAsTypedLowerCasedWithoutChecks()
    {
        QTemporaryDir dir;
        FakeServices fakes;
        const DataDirectory data(dir.path());
        {
            Driver driver(data, fakes, fakes.printer);
            QCOMPARE(driver.window.windowTitle(), u"Kalvex2 Thèmes"_qs);
            QCOMPARE(driver.box()->accessibleName(), u"Nouveau thème"_qs);
            QCOMPARE(driver.label(u"newThemeCaption"_qs), u"Nouveau thème --->"_qs);
            driver.add(u"Jeux"_qs);
            QCOMPARE(driver.box()->text(), QString());
            QCOMPARE(QApplication::focusWidget(), driver.box());
            driver.type(u"JEUX"_qs);
            QTest::keyClick(driver.box(), Qt::Key_Return); // Enter in the box adds too
            driver.add(QString());
            driver.add(u"Été, Hiver"_qs);
            QCOMPARE(driver.themes(), (QStringList{u"jeux"_qs, u"jeux"_qs, QString(), u"été, hiver"_qs}));
            QCOMPARE(driver.label(u"count"_qs), u" 4 thèmes"_qs);
            QVERIFY(fakes.dialogs.shown.isEmpty());
        }
        // Written under the lower-case name, Windows-1252 with CR LF.
        QCOMPARE(TestSupport::readFile(dir.filePath(u"themes.txt"_qs)), QByteArray("jeux\r\njeux\r\n\r\n\xE9t\xE9, hiver\r\n"));
        Driver reopened(data, fakes, fakes.printer); // read back as comma-separated fields
        QCOMPARE(reopened.themes(), (QStringList{u"jeux"_qs, u"jeux"_qs, QString(), u"été"_qs, u"hiver"_qs}));
    }

    void opensCentredRemovesOnlyOnYesAndPrints()
    {
        QTemporaryDir dir;
        TestSupport::copyProgramFiles(dir.path());
        FakeServices fakes;
        const DataDirectory data(dir.path());
        // Another spelling of the file on disk: read and rewritten as one file.
        const QString path = dir.filePath(u"THEMES.txt"_qs);
        TestSupport::writeFile(path, "jeux\r\nmusique\r\nphotos\r\n");
        Driver driver(data, fakes, fakes.printer);
        const QRect frame = driver.window.frameGeometry();
        // Centred on an assumed 12500 x 9000 twips screen, 15 twips a pixel.
        QCOMPARE(frame.topLeft(), QPoint((12500 - frame.width() * 15) / 2 / 15, (9000 - frame.height() * 15) / 2 / 15));
        QVERIFY(!child<QToolButton>(&driver.window, u"print"_qs)->icon().isNull());
        QCOMPARE(driver.label(u"count"_qs), u" 3 thèmes"_qs);
        driver.click(u"print"_qs);
        QCOMPARE(fakes.printer.printedLines(), (QStringList{u"03-21-2001"_qs, QString(), u"jeux"_qs, u"musique"_qs,
                                                            u"photos"_qs}));
        QCOMPARE(fakes.printer.fontFlags, 3);

        driver.chooseTheme(1);
        QCOMPARE(driver.label(u"selected"_qs), u"musique"_qs);
        driver.click(u"remove"_qs); // the fake answers No
        QCOMPARE(fakes.dialogs.shown.last().text, u"Souhaitez-vous SUPPRIMER ce thème musique"_qs);
        QCOMPARE(fakes.dialogs.shown.last().title, u"Suppression de fichier "_qs);
        QCOMPARE(fakes.dialogs.shown.last().help.context, 1000);
        QCOMPARE(driver.themes().size(), 3);
        fakes.dialogs.answers = {Answer::Yes, Answer::Yes};
        driver.click(u"remove"_qs);
        QCOMPARE(TestSupport::readFile(path), QByteArray("jeux\r\nphotos\r\n"));
        QCOMPARE(driver.label(u"count"_qs), u" 2 thèmes"_qs);
        QCOMPARE(driver.label(u"selected"_qs), QString());
        QCOMPARE(QDir(dir.path()).entryList({u"*.txt"_qs}, QDir::Files), QStringList{u"THEMES.txt"_qs});
        driver.click(u"remove"_qs); // nothing selected: nothing removed
        QCOMPARE(TestSupport::readFile(path), QByteArray("jeux\r\nphotos\r\n"));
    }
};

QTEST_MAIN(tst_ThemesForm)
#include "tst_themesform.moc"
