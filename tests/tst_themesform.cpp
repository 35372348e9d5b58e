#include "datadirectory.h"
#include "fakeservices.h"
#include "testsupport.h"
#include "themesform.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QTemporaryDir>
#include <QTest>

using TestSupport::child;

namespace {

struct Driver
{
    Driver(const DataDirectory &data, FakeServices &fakes)
        : window(data, fakes.dialogs, fakes.printer, fakes.pictures, fakes.clock)
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
    void click(const QString &button) { QTest::mouseClick(child<QAbstractButton>(&window, button), Qt::LeftButton); }
    QLineEdit *box() { return child<QLineEdit>(&window, u"newTheme"_qs); }
    // Key by key, with the text each key gives (keyClicks takes only ASCII).
    void type(const QString &typed)
    {
        for (const QChar character : typed)
            QTest::sendKeyEvent(QTest::Click, box(), Qt::Key_unknown, QString(character), {});
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
            Driver driver(data, fakes);
            QCOMPARE(driver.window.windowTitle(), u"Kalvex2 Thèmes"_qs);
            for (const QString &typed : {u"Jeux"_qs, u"JEUX"_qs, QString(), u"Été, Hiver"_qs}) {
                driver.type(typed);
                if (typed == u"JEUX"_qs)
                    QTest::keyClick(driver.box(), Qt::Key_Return); // Enter in the box adds too
                else
                    driver.click(u"add"_qs);
                QCOMPARE(driver.box()->text(), QString());
            }
            QCOMPARE(QApplication::focusWidget(), driver.box());
            QCOMPARE(driver.themes(), (QStringList{u"jeux"_qs, u"jeux"_qs, QString(), u"été, hiver"_qs}));
            QCOMPARE(driver.label(u"count"_qs), u" 4 thèmes"_qs);
            QVERIFY(fakes.dialogs.shown.isEmpty());
        }
        // Written under the lower-case name, Windows-1252 with CR LF, read back as fields.
        QCOMPARE(TestSupport::readFile(dir.filePath(u"themes.txt"_qs)), QByteArray("jeux\r\njeux\r\n\r\n\xE9t\xE9, hiver\r\n"));
        QCOMPARE(Driver(data, fakes).themes(), (QStringList{u"jeux"_qs, u"jeux"_qs, QString(), u"été"_qs, u"hiver"_qs}));
    }

    // Removing, printing and counting are the line table's, tested through the extensions window.
    void opensCentredAndRemovesFromTheFileOnDisk()
    {
        QTemporaryDir dir;
        FakeServices fakes;
        const DataDirectory data(dir.path());
        // Another spelling of the file on disk: read and rewritten as one file.
        const QString path = dir.filePath(u"THEMES.txt"_qs);
        TestSupport::writeFile(path, "jeux\r\nmusique\r\nphotos\r\n");
        Driver driver(data, fakes);
        const QRect frame = driver.window.frameGeometry();
        // Centred on an assumed 12500 x 9000 twips screen, 15 twips a pixel.
        QCOMPARE(frame.topLeft(), QPoint((12500 - frame.width() * 15) / 2 / 15, (9000 - frame.height() * 15) / 2 / 15));
        QTest::mouseClick(driver.list()->viewport(), Qt::LeftButton, {},
                          driver.list()->visualItemRect(driver.list()->item(1)).center());
        fakes.dialogs.answers = {Answer::Yes, Answer::Yes};
        driver.click(u"remove"_qs);
        QCOMPARE(fakes.dialogs.shown.last().text, u"Souhaitez-vous SUPPRIMER ce thème musique"_qs);
        QCOMPARE(TestSupport::readFile(path), QByteArray("jeux\r\nphotos\r\n"));
        QCOMPARE(QDir(dir.path()).entryList({u"*.txt"_qs}, QDir::Files), QStringList{u"THEMES.txt"_qs});
    }
};

QTEST_MAIN(tst_ThemesForm)
#include "tst_themesform.moc"
