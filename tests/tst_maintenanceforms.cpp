#include "archivefolders.h"
#include "archivelist.h"
#include "archivelistform.h"
#include "datadirectory.h"
#include "fakeservices.h"
#include "foldersform.h"
#include "searchwindowfixture.h"
#include "testsupport.h"

#include <QAbstractButton>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QTemporaryDir>
#include <QTest>

using TestSupport::child;

namespace {

const QByteArray kArchive = "\"d:\\SETUP.EXE\"\r\n";

// A data directory (the five default folders, Divers holding PCFUN75.lst and PCMAG13.lst) and
// one window on it, shown.
template<class Window>
struct Fixture
{
    Fixture()
        : data(dir.path())
        , window(data, fakes.dialogs, fakes.printer, fakes.pictures, fakes.clock)
    {
        data.startUp();
        TestSupport::writeFile(divers(u"PCMAG13.lst"_qs), kArchive);
        TestSupport::writeFile(divers(u"PCFUN75.lst"_qs), kArchive);
        window.show();
    }

    QString divers(const QString &file) const { return data.folderPath(u"Divers"_qs) + u'/' + file; }
    QString label(const QString &name) const { return child<QLabel>(&window, name)->text(); }
    QStringList items(const QString &name) const { return SearchWindowData::column(&window, name); }
    void click(const QString &listName, const QString &text)
    {
        QListWidget *view = child<QListWidget>(&window, listName);
        const QList<QListWidgetItem *> found = view->findItems(text, Qt::MatchExactly);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualItemRect(found.value(0)).center());
    }
    void press(const QString &button) { child<QAbstractButton>(&window, button)->click(); }
    QString lastQuestion() const { return fakes.dialogs.shown.last().text; }

    QTemporaryDir dir;
    DataDirectory data;
    FakeServices fakes;
    Window window;
};

} // namespace

class tst_MaintenanceForms : public QObject
{
    Q_OBJECT

private slots:
    // The double blank and the run of 45 are the questions' own.
    void questions()
    {
        QCOMPARE(ArchiveList::renameQuestion(u"/D/A.lst"_qs), u"Souhaitez-vous RENOMMER  LE FICHIER /D/A.lst"_qs);
        QCOMPARE(ArchiveFolders::removalQuestion(u"Photos"_qs),
                 u"Souhaitez-vous SUPPRIMER le dossier Photos"_qs + QString(45, u' ')
                     + u"(Attention! Vous ne pourrez supprimer un dossier contenant des fichiers.)"_qs);
    }

    // Renamed upper-cased without a length check; never over another file nor out of the folder.
    void renames_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("renamedTo");
        QTest::newRow("own name in another case") << u"pcfun75"_qs << u"PCFUN75.lst"_qs;
        QTest::newRow("accents") << u"été"_qs << u"ÉTÉ.lst"_qs;
        QTest::newRow("long") << u"magazine2001"_qs << u"MAGAZINE2001.lst"_qs;
        QTest::newRow("empty or cancelled") << QString() << u".lst"_qs;
        QTest::newRow("another archive, other case") << u"PcMag14"_qs << QString();
        QTest::newRow("out of the folder") << u"../pcfun"_qs << QString();
    }

    void renames()
    {
        QFETCH(QString, answer);
        QFETCH(QString, renamedTo);
        QTemporaryDir dir;
        for (const char *name : {"pcfun75.lst", "PCMAG13.lst", "pcmag14.lst"})
            QVERIFY(TestSupport::writeFile(dir.filePath(QLatin1String(name)), name));
        QCOMPARE(ArchiveList::rename(dir.filePath(u"pcfun75.lst"_qs), dir.path(), answer), !renamedTo.isEmpty());
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 3);
        QCOMPARE(TestSupport::readFile(dir.filePath(renamedTo.isEmpty() ? u"pcfun75.lst"_qs : renamedTo)),
                 QByteArray("pcfun75.lst"));
        QCOMPARE(TestSupport::readFile(dir.filePath(u"pcmag14.lst"_qs)), QByteArray("pcmag14.lst"));
    }

    void foldersAreAddedLowerCasedAndRemovedOnlyEmpty()
    {
        QTemporaryDir dir;
        const DataDirectory data(dir.path());
        data.startUp();
        QVERIFY(TestSupport::writeFile(data.folderPath(u"Divers"_qs) + u"/A.lst"_qs, "x"));
        for (const QString &name : {u"JEUX"_qs.toLower(), u"divers"_qs, QString(), u"a/b"_qs, u".."_qs})
            QCOMPARE(ArchiveFolders::add(data, name), name == u"jeux"_qs);
        for (const QString &name : {u"Divers"_qs, QString(), u"."_qs, u".."_qs, u"../Photos"_qs})
            QVERIFY2(!ArchiveFolders::remove(data, name), qPrintable(name));
        QVERIFY(ArchiveFolders::remove(data, u"Photos"_qs));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
                 (QStringList{u"Divers"_qs, u"Images"_qs, u"Internet"_qs, u"jeux"_qs, u"Musique"_qs}));
        QVERIFY(!ArchiveList::remove(data.folderPath(u"Divers"_qs))); // never a directory
    }

    // Each action of the archive list shows its own count text.
    void archiveListWiring()
    {
        Fixture<ArchiveListForm> f;
        QCOMPARE(f.window.windowTitle(), u"Renommer ou supprimer un fichier d'archives"_qs);
        QCOMPARE(f.items(u"folders"_qs), f.data.archiveFolders());
        QCOMPARE(f.label(u"currentFolder"_qs), f.data.storedPath() + u"Divers"_qs);
        QCOMPARE(f.items(u"archives"_qs), (QStringList{u"PCFUN75.lst"_qs, u"PCMAG13.lst"_qs}));
        QCOMPARE(f.label(u"count"_qs), u"Nombre de cd et disques répertoriés :  2"_qs);

        // A click on the folder already selected reads the list again.
        QVERIFY(TestSupport::writeFile(f.divers(u"PCNEW.lst"_qs), kArchive));
        f.click(u"folders"_qs, u"Divers"_qs);
        QCOMPARE(f.label(u"count"_qs), u"Nbre de CD ou disquettes répertoriés :  3"_qs);

        f.click(u"archives"_qs, u"PCMAG13.lst"_qs);
        QCOMPARE(f.label(u"selectedFile"_qs), f.divers(u"PCMAG13.lst"_qs));
        QCOMPARE(f.label(u"index"_qs), u"1"_qs);
        f.fakes.dialogs.answers = {Answer::Yes};
        f.fakes.dialogs.inputs = {u"pcmag14"_qs};
        f.press(u"rename"_qs);
        QCOMPARE(f.fakes.dialogs.shown[0].title, u"Renommer un fichier d'archives "_qs);
        QCOMPARE(f.lastQuestion(), u"Saisissez un nom de 8 caractères au maximum (sans extension) ?"_qs);
        QCOMPARE(f.label(u"count"_qs), u"Nombre de cd et disquettes répertoriés :  3"_qs);
        QVERIFY(QFile::exists(f.divers(u"PCMAG14.lst"_qs)));

        f.click(u"archives"_qs, u"PCFUN75.lst"_qs);
        f.press(u"delete"_qs); // No
        QCOMPARE(f.lastQuestion(), u"Souhaitez-vous SUPPRIMER LE FICHIER "_qs + f.divers(u"PCFUN75.lst"_qs));
        QCOMPARE(f.fakes.dialogs.shown.last().title, u"Supprimer un fichier d'archives"_qs);
        QCOMPARE(f.fakes.dialogs.shown.last().help.context, 1000);
        QVERIFY(QFile::exists(f.divers(u"PCFUN75.lst"_qs)));
        f.fakes.dialogs.answers = {Answer::Yes};
        f.press(u"delete"_qs);
        QCOMPARE(f.items(u"archives"_qs), (QStringList{u"PCMAG14.lst"_qs, u"PCNEW.lst"_qs}));
        QCOMPARE(f.label(u"count"_qs), u"Nombre de cd et disques répertoriés :  2"_qs);
        QCOMPARE(f.label(u"index"_qs), u"0"_qs);

        f.press(u"print"_qs);
        QCOMPARE(f.fakes.printer.printedLines(), (QStringList{u"03-21-2001"_qs, QString()} + f.items(u"archives"_qs)));
    }

    void foldersWiring()
    {
        Fixture<FoldersForm> f;
        QCOMPARE(f.window.windowTitle(), u"Kalvex Dossiers"_qs);
        QCOMPARE(f.label(u"count"_qs), u" 5 Dossiers"_qs);
        QLineEdit *name = child<QLineEdit>(&f.window, u"name"_qs);
        QTest::keyClicks(name, u"Jeux"_qs);
        QTest::keyClick(name, Qt::Key_Return); // the add button is the default one
        QVERIFY(f.items(u"folders"_qs).contains(u"jeux"_qs));
        QCOMPARE(f.label(u"count"_qs), u" 6 dossiers"_qs);
        QVERIFY(name->text().isEmpty());

        f.click(u"folders"_qs, u"Photos"_qs);
        QCOMPARE(f.label(u"selectedFolder"_qs), u"Photos"_qs);
        f.press(u"remove"_qs); // No
        QCOMPARE(f.fakes.dialogs.shown.last().title, u"Suppression de fichier "_qs);
        QVERIFY(QDir(f.dir.path()).exists(u"Photos"_qs));
        f.fakes.dialogs.answers = {Answer::Yes};
        f.press(u"remove"_qs);
        QVERIFY(!QDir(f.dir.path()).exists(u"Photos"_qs));
        QCOMPARE(f.label(u"count"_qs), u" 5 dossiers"_qs);
        QVERIFY(f.label(u"selectedFolder"_qs).isEmpty());
        QVERIFY(f.fakes.dialogs.messages().isEmpty());

        f.press(u"print"_qs);
        QCOMPARE(f.fakes.printer.printedLines(), (QStringList{u"03-21-2001"_qs, QString()} + f.items(u"folders"_qs)));
    }
};

QTEST_MAIN(tst_MaintenanceForms)
#include "tst_maintenanceforms.moc"
