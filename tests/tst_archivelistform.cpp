#include "archivelist.h"
#include "archivelistform.h"
#include "datadirectory.h"
#include "fakeservices.h"
#include "testsupport.h"

#include <QDir>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

namespace {

const QByteArray kArchive = "\"d:\\SETUP.EXE\"\r\n";

// A data directory with Divers (PCFUN75.lst, PCMAG13.lst) and Images (empty), and one window on it.
struct Fixture
{
    Fixture()
        : data(dir.path())
    {
        data.startUp();
        TestSupport::writeFile(folder(u"Divers"_qs) + u"/PCMAG13.lst"_qs, kArchive);
        TestSupport::writeFile(folder(u"Divers"_qs) + u"/PCFUN75.lst"_qs, kArchive);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
    }

    QString folder(const QString &name) const { return data.folderPath(name); }
    QString label(const char *name) const { return window.findChild<QLabel *>(QLatin1String(name))->text(); }
    QListWidget *list(const char *name) const { return window.findChild<QListWidget *>(QLatin1String(name)); }
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
    void press(const char *button) { window.findChild<QAbstractButton *>(QLatin1String(button))->click(); }

    QTemporaryDir dir;
    DataDirectory data;
    FakeServices fakes;
    ArchiveListForm window{data, fakes.dialogs, fakes.printer, fakes.pictures, fakes.clock};
};

const QString kOpening = u"Nombre de cd et disques répertoriés : "_qs;

} // namespace

class tst_ArchiveListForm : public QObject
{
    Q_OBJECT

private slots:
    void opensOnTheFirstFolderAndEachActionShowsItsCountText()
    {
        Fixture f;
        QCOMPARE(f.window.windowTitle(), u"Renommer ou supprimer un fichier d'archives"_qs);
        QCOMPARE(f.items("folders"),
                 (QStringList{u"Divers"_qs, u"Images"_qs, u"Internet"_qs, u"Musique"_qs, u"Photos"_qs}));
        QCOMPARE(f.label("currentFolder"), f.data.storedPath() + u"Divers"_qs);
        QCOMPARE(f.items("archives"), (QStringList{u"PCFUN75.lst"_qs, u"PCMAG13.lst"_qs}));
        QCOMPARE(f.label("count"), kOpening + u" 2"_qs);

        f.click("folders", u"Images"_qs);
        QCOMPARE(f.label("currentFolder"), f.folder(u"Images"_qs));
        QVERIFY(f.items("archives").isEmpty());
        QCOMPARE(f.label("count"), u"Nbre de CD ou disquettes répertoriés :  0"_qs);

        f.click("folders", u"Divers"_qs);
        f.click("archives", u"PCMAG13.lst"_qs);
        QCOMPARE(f.label("selectedFile"), f.folder(u"Divers"_qs) + u"/PCMAG13.lst"_qs);
        QCOMPARE(f.label("index"), u"1"_qs);

        f.fakes.dialogs.answers = {Answer::Yes};
        f.fakes.dialogs.inputs = {u"pcfun76"_qs};
        f.press("rename");
        QCOMPARE(f.label("count"), u"Nombre de cd et disquettes répertoriés :  2"_qs);

        f.fakes.dialogs.answers = {Answer::Yes};
        f.click("archives", u"PCFUN76.lst"_qs);
        f.press("delete");
        QCOMPARE(f.label("count"), kOpening + u" 1"_qs);
        QCOMPARE(f.label("index"), u"0"_qs);
    }

    void deleteAskedThenOnlyTheConfirmedFile()
    {
        Fixture f;
        const QString target = f.folder(u"Divers"_qs) + u"/PCFUN75.lst"_qs;
        f.click("folders", u"Divers"_qs); // count text of a click, which No must leave alone
        const QString countBefore = f.label("count");
        f.click("archives", u"PCFUN75.lst"_qs);

        f.press("delete"); // answered No
        QCOMPARE(f.fakes.dialogs.shown.size(), 1);
        const FakeDialogs::Shown question = f.fakes.dialogs.shown.first();
        QCOMPARE(question.kind, u"question"_qs);
        QCOMPARE(question.text, u"Souhaitez-vous SUPPRIMER LE FICHIER "_qs + target);
        QCOMPARE(question.title, u"Supprimer un fichier d'archives"_qs);
        QCOMPARE(question.help.file, u"DEMO.HLP"_qs);
        QCOMPARE(question.help.context, 1000);
        QVERIFY(QFile::exists(target));
        QCOMPARE(f.items("archives").size(), 2);
        QCOMPARE(f.label("count"), countBefore);

        f.fakes.dialogs.answers = {Answer::Yes, Answer::Yes};
        f.press("delete");
        QVERIFY(!QFile::exists(target));
        QCOMPARE(f.items("archives"), QStringList{u"PCMAG13.lst"_qs});
        // The label keeps the deleted path: a second deletion asks about it and does nothing.
        QCOMPARE(f.label("selectedFile"), target);
        f.press("delete");
        QCOMPARE(f.fakes.dialogs.shown.last().text, u"Souhaitez-vous SUPPRIMER LE FICHIER "_qs + target);
        QCOMPARE(f.items("archives"), QStringList{u"PCMAG13.lst"_qs});
        QVERIFY(f.fakes.dialogs.messages().isEmpty());
    }

    void nothingSelectedAsksAboutAnEmptyPathAndChangesNothing()
    {
        Fixture f;
        f.fakes.dialogs.answers = {Answer::Yes, Answer::Yes};
        f.fakes.dialogs.inputs = {u"x"_qs};
        f.press("delete");
        f.press("rename");
        QCOMPARE(f.fakes.dialogs.shown[0].text, u"Souhaitez-vous SUPPRIMER LE FICHIER "_qs);
        QCOMPARE(f.items("archives"), (QStringList{u"PCFUN75.lst"_qs, u"PCMAG13.lst"_qs}));
        QVERIFY(f.fakes.dialogs.messages().isEmpty());
        QVERIFY(QDir(f.dir.path()).exists(u"Divers"_qs));
    }

    void renameUpperCasesWithoutChecks_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("expected");
        QTest::newRow("pcfun75") << u"pcfun75"_qs << u"PCFUN75.lst"_qs; // its own name in upper case
        QTest::newRow("new name") << u"cdrom été"_qs << u"CDROM ÉTÉ.lst"_qs;
        QTest::newRow("long") << u"magazine2001"_qs << u"MAGAZINE2001.lst"_qs;
        QTest::newRow("empty or cancelled") << QString() << u".lst"_qs;
    }

    void renameUpperCasesWithoutChecks()
    {
        QFETCH(QString, answer);
        QFETCH(QString, expected);
        Fixture f;
        TestSupport::writeFile(f.folder(u"Divers"_qs) + u"/pcfun75.lst"_qs, "lower");
        QFile::remove(f.folder(u"Divers"_qs) + u"/PCFUN75.lst"_qs);
        f.click("folders", u"Images"_qs); // back to Divers to see the file written since opening
        f.click("folders", u"Divers"_qs);
        f.click("archives", u"pcfun75.lst"_qs);
        f.fakes.dialogs.clear();
        f.fakes.dialogs.answers = {Answer::Yes};
        f.fakes.dialogs.inputs = {answer};
        f.press("rename");

        QCOMPARE(f.fakes.dialogs.shown.size(), 2);
        QCOMPARE(f.fakes.dialogs.shown[0].text,
                 u"Souhaitez-vous RENOMMER  LE FICHIER "_qs + f.folder(u"Divers"_qs) + u"/pcfun75.lst"_qs);
        QCOMPARE(f.fakes.dialogs.shown[0].title, u"Renommer un fichier d'archives "_qs);
        QCOMPARE(f.fakes.dialogs.shown[1].kind, u"input"_qs);
        QCOMPARE(f.fakes.dialogs.shown[1].text, u"Saisissez un nom de 8 caractères au maximum (sans extension) ?"_qs);
        QVERIFY(f.fakes.dialogs.shown[1].title.isEmpty());
        QCOMPARE(TestSupport::readFile(f.folder(u"Divers"_qs) + u"/"_qs + expected), QByteArray("lower"));
        QVERIFY(f.items("archives").contains(expected));
        QCOMPARE(f.items("archives").size(), 2);
    }

    void renameOntoAnExistingNameOrAPathChangesNothing()
    {
        Fixture f;
        const QString divers = f.folder(u"Divers"_qs);
        TestSupport::writeFile(divers + u"/pcmag14.lst"_qs, "other");
        for (const QString &answer : {u"pcmag13"_qs, u"PcMag14"_qs, u"../pcfun"_qs}) {
            QVERIFY2(!ArchiveList::rename(divers + u"/PCFUN75.lst"_qs, divers, answer), qPrintable(answer));
        }
        QCOMPARE(TestSupport::readFile(divers + u"/PCFUN75.lst"_qs), kArchive);
        QCOMPARE(TestSupport::readFile(divers + u"/pcmag14.lst"_qs), QByteArray("other"));
        QCOMPARE(QDir(divers).entryList(QDir::Files).size(), 3);
        QVERIFY(!QFile::exists(f.dir.filePath(u"PCFUN.lst"_qs)));
        QVERIFY(!ArchiveList::remove(divers)); // never a directory
        QVERIFY(QDir(divers).exists());
    }

    void printsTheArchiveNamesIntoAPdf()
    {
        if (!TestSupport::haveProgram(u"pdftotext"_qs))
            QSKIP("pdftotext (poppler-utils) is not installed");
        QTemporaryDir out;
        const QString pdf = out.filePath(u"archives.pdf"_qs);
        {
            Fixture f;
            FakePrinter printer(pdf);
            ArchiveListForm window(f.data, f.fakes.dialogs, printer, f.fakes.pictures, f.fakes.clock);
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            QCOMPARE(window.findChild<QToolButton *>(u"print"_qs)->accessibleName(), u"Imprimer"_qs);
            window.findChild<QToolButton *>(u"print"_qs)->click();
            QCOMPARE(printer.fontFlags, 3);
        }
        QStringList words;
        for (const TestSupport::PdfWord &word : TestSupport::pdfWords(pdf))
            words.append(word.text);
        QCOMPARE(words, (QStringList{u"03-21-2001"_qs, u"PCFUN75.lst"_qs, u"PCMAG13.lst"_qs}));
    }
};

QTEST_MAIN(tst_ArchiveListForm)
#include "tst_archivelistform.moc"
