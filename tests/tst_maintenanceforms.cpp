#include "archivefolders.h"
#include "archivelist.h"
#include "archivelistform.h"
#include "datadirectory.h"
#include "fakeservices.h"
#include "foldersform.h"
#include "testsupport.h"

#include <QAbstractButton>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QByteArray kArchive = "\"d:\\SETUP.EXE\"\r\n";

// A real data directory (the five default folders, Divers holding PCFUN75.lst and PCMAG13.lst)
// and one window on it, shown.
template<class Window>
struct Fixture
{
    explicit Fixture(Printer *printer = nullptr)
        : data(dir.path())
        , window(data, fakes.dialogs, printer ? *printer : fakes.printer, fakes.pictures, fakes.clock)
    {
        data.startUp();
        TestSupport::writeFile(divers(u"PCMAG13.lst"_qs), kArchive);
        TestSupport::writeFile(divers(u"PCFUN75.lst"_qs), kArchive);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
    }

    QString divers(const QString &file) const { return data.folderPath(u"Divers"_qs) + u'/' + file; }
    QString label(const char *name) const { return window.template findChild<QLabel *>(QLatin1String(name))->text(); }
    QListWidget *list(const char *name) const { return window.template findChild<QListWidget *>(QLatin1String(name)); }
    QStringList items(const char *name) const
    {
        QStringList texts;
        for (int row = 0; row < list(name)->count(); ++row)
            texts.append(list(name)->item(row)->text());
        return texts;
    }
    void click(const char *listName, const QString &text)
    {
        QListWidget *view = list(listName);
        const QList<QListWidgetItem *> found = view->findItems(text, Qt::MatchExactly);
        QCOMPARE(found.size(), 1);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualItemRect(found.first()).center());
    }
    void press(const char *button) { window.template findChild<QAbstractButton *>(QLatin1String(button))->click(); }
    QList<FakeDialogs::Shown> &shown() { return fakes.dialogs.shown; }

    QTemporaryDir dir;
    DataDirectory data;
    FakeServices fakes;
    Window window;
};

using ListFixture = Fixture<ArchiveListForm>;
using FoldersFixture = Fixture<FoldersForm>;

const QString kOpening = u"Nombre de cd et disques répertoriés : "_qs;

// The words a window's print button puts into a real PDF.
template<class Window>
QStringList printedWords()
{
    QTemporaryDir out;
    const QString pdf = out.filePath(u"liste.pdf"_qs);
    {
        FakePrinter printer(pdf);
        Fixture<Window> f(&printer);
        f.press("print");
    }
    QStringList words;
    for (const TestSupport::PdfWord &word : TestSupport::pdfWords(pdf))
        words.append(word.text);
    return words;
}

} // namespace

class tst_MaintenanceForms : public QObject
{
    Q_OBJECT

private slots:
    void archiveListOpensOnTheFirstFolderAndEachActionShowsItsCountText()
    {
        ListFixture f;
        QCOMPARE(f.window.windowTitle(), u"Renommer ou supprimer un fichier d'archives"_qs);
        QCOMPARE(f.items("folders"), (QStringList{u"Divers"_qs, u"Images"_qs, u"Internet"_qs, u"Musique"_qs,
                                                  u"Photos"_qs}));
        QCOMPARE(f.label("currentFolder"), f.data.storedPath() + u"Divers"_qs);
        QCOMPARE(f.items("archives"), (QStringList{u"PCFUN75.lst"_qs, u"PCMAG13.lst"_qs}));
        QCOMPARE(f.label("count"), kOpening + u" 2"_qs);

        // A click on the folder already selected is a click all the same: the list is read again.
        QVERIFY(TestSupport::writeFile(f.divers(u"PCNEW.lst"_qs), "\"d:\\A\"\r\n"));
        f.click("folders", u"Divers"_qs);
        QCOMPARE(f.items("archives"), (QStringList{u"PCFUN75.lst"_qs, u"PCMAG13.lst"_qs, u"PCNEW.lst"_qs}));
        QCOMPARE(f.label("count"), u"Nbre de CD ou disquettes répertoriés :  3"_qs);
        QVERIFY(QFile::remove(f.divers(u"PCNEW.lst"_qs)));

        f.click("folders", u"Images"_qs);
        QVERIFY(f.items("archives").isEmpty());
        QCOMPARE(f.label("count"), u"Nbre de CD ou disquettes répertoriés :  0"_qs);

        f.click("folders", u"Divers"_qs);
        f.click("archives", u"PCMAG13.lst"_qs);
        QCOMPARE(f.label("selectedFile"), f.divers(u"PCMAG13.lst"_qs));
        QCOMPARE(f.label("index"), u"1"_qs);
        f.fakes.dialogs.answers = {Answer::Yes};
        f.fakes.dialogs.inputs = {u"pcfun76"_qs};
        f.press("rename");
        QCOMPARE(f.label("count"), u"Nombre de cd et disquettes répertoriés :  2"_qs);

        f.click("archives", u"PCFUN76.lst"_qs);
        f.fakes.dialogs.answers = {Answer::Yes};
        f.press("delete");
        QCOMPARE(f.label("count"), kOpening + u" 1"_qs);
        QCOMPARE(f.label("index"), u"0"_qs);
    }

    void deletesOnlyTheConfirmedArchive()
    {
        ListFixture f;
        f.fakes.dialogs.answers = {Answer::Yes}; // nothing selected yet: asks about "", deletes nothing
        f.press("delete");
        QCOMPARE(f.shown().last().text, u"Souhaitez-vous SUPPRIMER LE FICHIER "_qs);
        QCOMPARE(f.items("archives").size(), 2);

        f.click("folders", u"Images"_qs);
        f.click("folders", u"Divers"_qs); // the count now shows a click's text, which No leaves alone
        const QString countBefore = f.label("count");
        const QString target = f.divers(u"PCFUN75.lst"_qs);
        f.click("archives", u"PCFUN75.lst"_qs);
        f.press("delete"); // No
        QCOMPARE(f.shown().last().text, u"Souhaitez-vous SUPPRIMER LE FICHIER "_qs + target);
        QCOMPARE(f.shown().last().title, u"Supprimer un fichier d'archives"_qs);
        QCOMPARE(f.shown().last().help.context, 1000);
        QVERIFY(QFile::exists(target));
        QCOMPARE(f.label("count"), countBefore);

        f.fakes.dialogs.answers = {Answer::Yes, Answer::Yes};
        f.press("delete");
        QCOMPARE(f.items("archives"), QStringList{u"PCMAG13.lst"_qs});
        // The label keeps the deleted path: a second deletion asks about it again and does nothing.
        f.press("delete");
        QCOMPARE(f.shown().last().text, u"Souhaitez-vous SUPPRIMER LE FICHIER "_qs + target);
        QCOMPARE(QDir(f.data.folderPath(u"Divers"_qs)).entryList(QDir::Files), QStringList{u"PCMAG13.lst"_qs});
        QVERIFY(f.fakes.dialogs.messages().isEmpty());
        QVERIFY(!ArchiveList::remove(f.data.folderPath(u"Divers"_qs))); // never a directory
    }

    void renameUpperCasesWithoutChecks_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("expected");
        QTest::newRow("pcfun75") << u"pcfun75"_qs << u"PCFUN75.lst"_qs; // its own name, upper-cased
        QTest::newRow("accents") << u"été"_qs << u"ÉTÉ.lst"_qs;
        QTest::newRow("long") << u"magazine2001"_qs << u"MAGAZINE2001.lst"_qs;
        QTest::newRow("empty or cancelled") << QString() << u".lst"_qs;
    }

    void renameUpperCasesWithoutChecks()
    {
        QFETCH(QString, answer);
        QFETCH(QString, expected);
        ListFixture f;
        QVERIFY(QFile::rename(f.divers(u"PCFUN75.lst"_qs), f.divers(u"pcfun75.lst"_qs)));
        f.click("folders", u"Images"_qs); // back to Divers, to see the file renamed since opening
        f.click("folders", u"Divers"_qs);
        f.click("archives", u"pcfun75.lst"_qs);
        f.fakes.dialogs.answers = {Answer::Yes};
        f.fakes.dialogs.inputs = {answer};
        f.press("rename");

        QCOMPARE(f.shown().size(), 2);
        QCOMPARE(f.shown()[0].text, u"Souhaitez-vous RENOMMER  LE FICHIER "_qs + f.divers(u"pcfun75.lst"_qs));
        QCOMPARE(f.shown()[0].title, u"Renommer un fichier d'archives "_qs);
        QCOMPARE(f.shown()[1].text, u"Saisissez un nom de 8 caractères au maximum (sans extension) ?"_qs);
        QVERIFY(f.shown()[1].title.isEmpty());
        QCOMPARE(TestSupport::readFile(f.divers(expected)), kArchive);
        QCOMPARE(f.items("archives").size(), 2);
        QVERIFY(f.items("archives").contains(expected));
    }

    void renameNeverReplacesAFileNorLeavesTheFolder()
    {
        ListFixture f;
        TestSupport::writeFile(f.divers(u"pcmag14.lst"_qs), "other");
        for (const QString &answer : {u"pcmag13"_qs, u"PcMag14"_qs, u"../pcfun"_qs})
            QVERIFY2(!ArchiveList::rename(f.divers(u"PCFUN75.lst"_qs), f.data.folderPath(u"Divers"_qs), answer),
                     qPrintable(answer));
        QCOMPARE(TestSupport::readFile(f.divers(u"PCFUN75.lst"_qs)), kArchive);
        QCOMPARE(TestSupport::readFile(f.divers(u"pcmag14.lst"_qs)), QByteArray("other"));
        QCOMPARE(QDir(f.data.folderPath(u"Divers"_qs)).entryList(QDir::Files).size(), 3);
    }

    void foldersAddsInLowerCaseAndCountsWithTheChangedCapital()
    {
        FoldersFixture f;
        QCOMPARE(f.window.windowTitle(), u"Kalvex Dossiers"_qs);
        QCOMPARE(f.label("count"), u" 5 Dossiers"_qs);
        QLineEdit *name = f.window.findChild<QLineEdit *>(u"name"_qs);
        QTest::keyClicks(name, u"Jeux"_qs);
        QTest::keyClick(name, Qt::Key_Return); // the add button is the default one
        QVERIFY(QFileInfo(f.dir.filePath(u"jeux"_qs)).isDir());
        QVERIFY(f.items("folders").contains(u"jeux"_qs));
        QCOMPARE(f.label("count"), u" 6 dossiers"_qs);
        QVERIFY(name->text().isEmpty());

        // Existing names, spelt otherwise too, an empty name and a path add nothing and say nothing.
        for (const QString &typed : {u"JEUX"_qs, u"divers"_qs, QString(), u"a/b"_qs}) {
            name->setText(typed);
            f.press("add");
        }
        QCOMPARE(f.label("count"), u" 6 dossiers"_qs);
        QCOMPARE(QDir(f.dir.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 6);
        QVERIFY(f.shown().isEmpty());
    }

    void foldersRemovesOnlyAnEmptyFolderAfterTheQuestion()
    {
        FoldersFixture f;
        f.click("folders", u"Photos"_qs);
        QCOMPARE(f.label("selectedFolder"), u"Photos"_qs);
        f.press("remove"); // No
        QCOMPARE(f.shown().last().text, u"Souhaitez-vous SUPPRIMER le dossier Photos"_qs + QString(45, u' ')
                                            + u"(Attention! Vous ne pourrez supprimer un dossier contenant des fichiers.)"_qs);
        QCOMPARE(f.shown().last().title, u"Suppression de fichier "_qs);
        QVERIFY(QDir(f.dir.path()).exists(u"Photos"_qs));
        QCOMPARE(f.label("count"), u" 5 Dossiers"_qs);

        f.fakes.dialogs.answers = {Answer::Yes};
        f.press("remove");
        QVERIFY(!QDir(f.dir.path()).exists(u"Photos"_qs));
        QCOMPARE(f.label("count"), u" 4 dossiers"_qs);
        QVERIFY(f.label("selectedFolder").isEmpty());

        f.click("folders", u"Divers"_qs); // holds an archive: stays, archive and all, without a message
        f.fakes.dialogs.answers = {Answer::Yes, Answer::Yes};
        f.press("remove");
        QVERIFY(QFile::exists(f.divers(u"PCFUN75.lst"_qs)));
        f.press("remove"); // nothing selected: asks about "", and Yes removes nothing
        QVERIFY(f.shown().last().text.startsWith(u"Souhaitez-vous SUPPRIMER le dossier  "_qs));
        QCOMPARE(f.label("count"), u" 4 dossiers"_qs);
        QVERIFY(f.fakes.dialogs.messages().isEmpty());
        for (const QString &name : {u"."_qs, u".."_qs})
            QVERIFY(!ArchiveFolders::remove(f.data, name));
    }

    void bothWindowsPrintTheirListIntoAPdf()
    {
        KALVEX_REQUIRE_PROGRAM(u"pdftotext"_qs);
        QCOMPARE(printedWords<ArchiveListForm>(), (QStringList{u"03-21-2001"_qs, u"PCFUN75.lst"_qs, u"PCMAG13.lst"_qs}));
        QCOMPARE(printedWords<FoldersForm>(), (QStringList{u"03-21-2001"_qs, u"Divers"_qs, u"Images"_qs,
                                                           u"Internet"_qs, u"Musique"_qs, u"Photos"_qs}));
    }
};

QTEST_MAIN(tst_MaintenanceForms)
#include "tst_maintenanceforms.moc"
