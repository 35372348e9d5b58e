#include "archivefolders.h"
#include "datadirectory.h"
#include "fakeservices.h"
#include "foldersform.h"
#include "testsupport.h"

#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

namespace {

struct Fixture
{
    Fixture()
        : data(dir.path())
    {
        data.startUp();
        TestSupport::writeFile(data.folderPath(u"Divers"_qs) + u"/PCFUN75.lst"_qs, "\"d:\\SETUP.EXE\"\r\n");
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
    }

    QString count() const { return window.findChild<QLabel *>(u"count"_qs)->text(); }
    QString selected() const { return window.findChild<QLabel *>(u"selectedFolder"_qs)->text(); }
    QLineEdit *name() const { return window.findChild<QLineEdit *>(u"name"_qs); }
    QListWidget *list() const { return window.findChild<QListWidget *>(u"folders"_qs); }
    void click(const QString &text)
    {
        const QList<QListWidgetItem *> found = list()->findItems(text, Qt::MatchExactly);
        QCOMPARE(found.size(), 1);
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, list()->visualItemRect(found.first()).center());
    }
    void press(const char *button) { window.findChild<QAbstractButton *>(QLatin1String(button))->click(); }

    QTemporaryDir dir;
    DataDirectory data;
    FakeServices fakes;
    FoldersForm window{data, fakes.dialogs, fakes.printer, fakes.pictures, fakes.clock};
};

} // namespace

class tst_FoldersForm : public QObject
{
    Q_OBJECT

private slots:
    void addsInLowerCaseAndCountsWithTheChangedCapital()
    {
        Fixture f;
        QCOMPARE(f.window.windowTitle(), u"Kalvex Dossiers"_qs);
        QCOMPARE(f.count(), u" 5 Dossiers"_qs);

        f.name()->setFocus();
        QTest::keyClicks(f.name(), u"Jeux"_qs);
        QTest::keyClick(f.name(), Qt::Key_Return); // the add button is the default one
        QVERIFY(QFileInfo(f.dir.filePath(u"jeux"_qs)).isDir());
        QVERIFY(!QFileInfo::exists(f.dir.filePath(u"Jeux"_qs)));
        QVERIFY(f.list()->findItems(u"jeux"_qs, Qt::MatchExactly).size() == 1);
        QCOMPARE(f.count(), u" 6 dossiers"_qs);
        QVERIFY(f.name()->text().isEmpty());

        // Existing names, even spelt otherwise, an empty name and a path add nothing and say nothing.
        for (const QString &typed : {u"JEUX"_qs, u"divers"_qs, QString(), u"a/b"_qs}) {
            f.name()->setText(typed);
            f.press("add");
            QCOMPARE(f.count(), u" 6 dossiers"_qs);
        }
        QCOMPARE(QDir(f.dir.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 6);
        QVERIFY(f.fakes.dialogs.shown.isEmpty());
    }

    void removesOnlyAnEmptyFolderAfterTheQuestion()
    {
        Fixture f;
        f.click(u"Photos"_qs);
        QCOMPARE(f.selected(), u"Photos"_qs);
        f.press("remove"); // answered No
        QCOMPARE(f.fakes.dialogs.shown.size(), 1);
        QCOMPARE(f.fakes.dialogs.shown[0].text,
                 u"Souhaitez-vous SUPPRIMER le dossier Photos"_qs + QString(45, u' ')
                     + u"(Attention! Vous ne pourrez supprimer un dossier contenant des fichiers.)"_qs);
        QCOMPARE(f.fakes.dialogs.shown[0].title, u"Suppression de fichier "_qs);
        QCOMPARE(f.fakes.dialogs.shown[0].help.context, 1000);
        QVERIFY(QDir(f.dir.path()).exists(u"Photos"_qs));
        QCOMPARE(f.count(), u" 5 Dossiers"_qs);

        f.fakes.dialogs.answers = {Answer::Yes};
        f.press("remove");
        QVERIFY(!QDir(f.dir.path()).exists(u"Photos"_qs));
        QCOMPARE(f.count(), u" 4 dossiers"_qs);
        QVERIFY(f.selected().isEmpty());

        // A folder holding an archive stays, archive and all, without a message.
        f.click(u"Divers"_qs);
        f.fakes.dialogs.answers = {Answer::Yes};
        f.press("remove");
        QVERIFY(QFile::exists(f.data.folderPath(u"Divers"_qs) + u"/PCFUN75.lst"_qs));
        QCOMPARE(f.count(), u" 4 dossiers"_qs);

        // Nothing selected: the question names no folder and Yes removes nothing.
        f.fakes.dialogs.answers = {Answer::Yes};
        f.press("remove");
        QCOMPARE(f.fakes.dialogs.shown.last().text.left(37), u"Souhaitez-vous SUPPRIMER le dossier  "_qs);
        QVERIFY(QDir(f.dir.path()).exists());
        QCOMPARE(f.count(), u" 4 dossiers"_qs);
        QVERIFY(f.fakes.dialogs.messages().isEmpty());
        for (const QString &name : {u"."_qs, u".."_qs, u"Divers/.."_qs})
            QVERIFY(!ArchiveFolders::remove(f.data, name));
    }

    void printsTheFoldersIntoAPdf()
    {
        if (!TestSupport::haveProgram(u"pdftotext"_qs))
            QSKIP("pdftotext (poppler-utils) is not installed");
        QTemporaryDir out;
        const QString pdf = out.filePath(u"dossiers.pdf"_qs);
        {
            Fixture f;
            FakePrinter printer(pdf);
            FoldersForm window(f.data, f.fakes.dialogs, printer, f.fakes.pictures, f.fakes.clock);
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            window.findChild<QToolButton *>(u"print"_qs)->click();
        }
        QStringList words;
        for (const TestSupport::PdfWord &word : TestSupport::pdfWords(pdf))
            words.append(word.text);
        QCOMPARE(words, (QStringList{u"03-21-2001"_qs, u"Divers"_qs, u"Images"_qs, u"Internet"_qs,
                                     u"Musique"_qs, u"Photos"_qs}));
    }
};

QTEST_MAIN(tst_FoldersForm)
#include "tst_foldersform.moc"
