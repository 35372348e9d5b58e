#include "archivefile.h"
#include "datadirectory.h"
#include "fakeservices.h"
#include "searchform.h"
#include "tablefile.h"
#include "testsupport.h"

#include <QAbstractItemModel>
#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QListView>
#include <QListWidget>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

namespace {

struct Fixture
{
    Fixture()
    {
        TestSupport::copyProgramFiles(dir.path());
        data.startUp();
        const QString divers = data.folderPath(u"Divers"_qs);
        ArchiveFile::write(divers, u"PCFUN75"_qs, {"d:\\DOC\\README.TXT", "d:\\README", "d:\\JEUX", "d:\\JEUX\\.",
                                                   "d:\\JEUX\\..", "d:\\JEUX\\CASSE.EXE", "d:\\IMG\\ABABA.GIF"});
        ArchiveFile::write(divers, u"PCMAG13"_qs, {"d:\\ReadMe.txt", "d:\\SETUP.EXE", "d:\\X\\LOGO.GIF"});
        ArchiveFile::write(data.folderPath(u"Images"_qs), u"PHOTOS"_qs, {"e:\\README.GIF"});
        TableFile::write(data.file(u"extens.txt"_qs),
                         {u"GIF         &1D:\\OUTILS\\VIEW"_qs, u"TXT         &4C:\\WINDOWS\\NOTEPAD"_qs,
                          u"JPG         &1D:\\OUTILS\\VIEW"_qs, u"GI         &1D:\\X"_qs});
        form.show();
    }

    // By object name first, else by accessible name (result lists, buttons).
    template<typename T> T *child(const QString &name)
    {
        const QList<T *> widgets = form.findChildren<T *>();
        for (T *widget : widgets) {
            if (widget->objectName() == name)
                return widget;
        }
        for (T *widget : widgets) {
            if (widget->accessibleName() == name)
                return widget;
        }
        qFatal("no control named %s", qPrintable(name));
    }
    template<typename T> T *named(const QString &objectName)
    {
        T *widget = form.findChild<T *>(objectName);
        if (!widget)
            qFatal("no control %s", qPrintable(objectName));
        return widget;
    }
    QString label(const QString &name) { return child<QLabel>(name)->text(); }
    QStringList column(const QString &viewName)
    {
        QStringList rows;
        const QAbstractItemModel *model = child<QListView>(viewName)->model();
        for (int i = 0; i < model->rowCount(); ++i)
            rows.append(model->index(i, 0).data().toString());
        return rows;
    }
    void selectArchives(const QStringList &names)
    {
        QListWidget *archives = child<QListWidget>(u"archives"_qs);
        for (int i = 0; i < archives->count(); ++i)
            archives->item(i)->setSelected(names.contains(archives->item(i)->text()));
    }
    bool search(const QString &button, const QString &answer = {})
    {
        if (!answer.isNull())
            fakes.dialogs.inputs = {answer};
        QSignalSpy finished(&form, &SearchForm::searchFinished);
        QTest::mouseClick(child<QToolButton>(button), Qt::LeftButton);
        return finished.count() > 0 || finished.wait(5000);
    }

    QTemporaryDir dir;
    DataDirectory data{dir.path()};
    FakeServices fakes;
    SearchForm form{data,
                    {fakes.launcher, fakes.drives, fakes.dialogs, fakes.folderPicker, fakes.pictures, fakes.media},
                    fakes.printer, fakes.clock};
};

const QString kByName = u"Recherche d'un fichier par son nom, sans extension."_qs;
const QString kByString = u"Recherche d'un fichier à partir d'une chaîne d'au moins 3 caractères."_qs;
const QString kByExtension = u"Liste des fichiers ayant la même extension."_qs;

} // namespace

class tst_SearchForm : public QObject
{
    Q_OBJECT

private slots:
    void opensOnTheFirstFolderWithItsArchivesAndTables()
    {
        Fixture f;
        QCOMPARE(f.form.windowTitle(), u"Kalvex2 Recherches"_qs);
        QCOMPARE(f.child<QListWidget>(u"Dossiers d'archivage"_qs)->currentItem()->text(), u"Divers"_qs);
        QCOMPARE(f.named<QLabel>(u"archiveCount"_qs)->text(), u"Nbre de CD ou disquettes répertoriés :  2"_qs);
        QCOMPARE(f.child<QListWidget>(u"extensions"_qs)->count(), 4);
        QVERIFY(f.fakes.pictures.icons.contains(f.data.file(u"MAGNI001.ico"_qs)));
        QVERIFY(f.fakes.pictures.icons.contains(f.data.file(u"keys03.ico"_qs)));
        // A folder without archives.
        f.child<QListWidget>(u"Dossiers d'archivage"_qs)->setCurrentRow(f.data.archiveFolders().indexOf(u"Musique"_qs));
        QCOMPARE(f.named<QLabel>(u"archiveCount"_qs)->text(), u"Nbre de CD ou disquettes répertoriés :  0"_qs);
    }

    void promptsRefuseEmptyAndShortAnswers()
    {
        Fixture f;
        const auto click = [&f](const QString &button, const QString &answer) {
            f.fakes.dialogs.inputs = {answer};
            QTest::mouseClick(f.child<QToolButton>(button), Qt::LeftButton);
        };
        click(kByName, u""_qs);
        QCOMPARE(f.fakes.dialogs.shown[0].text, u"Nom du fichier, sans extension ? "_qs);
        click(kByString, u""_qs);
        click(kByString, u"ab"_qs);
        click(kByExtension, {});
        QCOMPARE(f.fakes.dialogs.shown[2].text, u"Chaîne de 3 caractères au minimum... ? "_qs);
        QCOMPARE(f.fakes.dialogs.messages(),
                 (QStringList{u"Vous devez saisir un nom !"_qs, u"Vous devez saisir une chaîne de caractères !"_qs,
                              u"Chaîne de caractères trop courtes ! "_qs,
                              u"Vous devez sélectionner une extension pour commencer la recherche !"_qs}));
        QVERIFY(!f.form.isSearching());
        QCOMPARE(f.form.foundCount(), 0);
    }

    void searchByNameFillsTheParallelLists()
    {
        Fixture f;
        // Every result list's model keeps Qt's model rules while rows come in batches and are reset.
        std::vector<std::unique_ptr<QAbstractItemModelTester>> testers;
        for (QListView *view : f.form.findChildren<QListView *>())
            testers.push_back(std::make_unique<QAbstractItemModelTester>(view->model()));
        QVERIFY(testers.size() >= 5);
        f.selectArchives({u"PCFUN75.lst"_qs, u"PCMAG13.lst"_qs});
        QVERIFY(f.search(kByName, u"readme"_qs));
        QCOMPARE(f.column(u"Classement ordre du support"_qs), (QStringList{u"README.TXT"_qs, u"README"_qs, u"README.TXT"_qs}));
        QCOMPARE(f.column(u"Archives des fichiers trouvés"_qs), (QStringList{u"PCFUN75"_qs, u"PCFUN75"_qs, u"PCMAG13"_qs}));
        QCOMPARE(f.column(u"Extensions des fichiers trouvés"_qs), (QStringList{u"TXT"_qs, u"   "_qs, u"TXT"_qs}));
        QCOMPARE(f.column(u"Chemins des fichiers trouvés"_qs),
                 (QStringList{u"D:\\DOC\\README.TXT"_qs, u"D:\\README"_qs, u"D:\\README.TXT"_qs}));
        const QString blanks(60, u' ');
        QCOMPARE(f.column(u"Classement alphabétique"_qs),
                 (QStringList{u"README"_qs + blanks + u" 1"_qs, u"README.TXT"_qs + blanks + u" 0"_qs,
                              u"README.TXT"_qs + blanks + u" 2"_qs}));
        QCOMPARE(f.label(u"Nombre de fichiers trouvés"_qs), u"Nombre de fichiers trouvés:  3"_qs);
        QCOMPARE(f.label(u"Terme recherché"_qs), u"README"_qs);
        QCOMPARE(f.form.searchKindMarker(), u"0"_qs);
        QVERIFY(f.child<QLabel>(u"Chargement"_qs)->isHidden());

        // A choice in the alphabetical view makes its row current in every list.
        QListView *sorted = f.child<QListView>(u"Classement alphabétique"_qs);
        sorted->setCurrentIndex(sorted->model()->index(2, 0));
        QCOMPARE(f.form.currentRow(), 2);
        QCOMPARE(f.form.currentPath(), u"D:\\README.TXT"_qs);
        QCOMPARE(f.form.currentArchive(), u"PCMAG13"_qs);
        QCOMPARE(f.child<QListView>(u"Chemins des fichiers trouvés"_qs)->currentIndex().row(), 2);

        // Only selected archives are searched.
        f.selectArchives({u"PCMAG13.lst"_qs});
        QVERIFY(f.search(kByString, u"aba"_qs));
        QCOMPARE(f.form.foundCount(), 0);
        f.selectArchives({u"PCFUN75.lst"_qs});
        QVERIFY(f.search(kByString, u"aba"_qs));
        QCOMPARE(f.column(u"Chemins des fichiers trouvés"_qs), (QStringList{u"D:\\IMG\\ABABA.GIF"_qs, u"D:\\IMG\\ABABA.GIF"_qs}));
    }

    void switchesSelectAllAndEveryFolder()
    {
        Fixture f;
        QCheckBox *selectAll = f.named<QCheckBox>(u"selectAll"_qs);
        QCOMPARE(selectAll->text(), u"La Sélection de tous les fichiers d'archives est desactivèe"_qs);
        QTest::mouseClick(selectAll, Qt::LeftButton);
        QCOMPARE(selectAll->text(), u"La Sélection de tous les fichiers d'archives est activèe"_qs);
        QCOMPARE(f.form.selectedArchiveCount(), 2);
        QTest::mouseClick(selectAll, Qt::LeftButton);
        QCOMPARE(f.form.selectedArchiveCount(), 0);

        QCheckBox *allFolders = f.named<QCheckBox>(u"allFolders"_qs);
        QTest::mouseClick(allFolders, Qt::LeftButton);
        QVERIFY(selectAll->isChecked());
        QVERIFY(f.search(kByName, u"readme"_qs));
        QCOMPARE(f.column(u"Archives des fichiers trouvés"_qs),
                 (QStringList{u"PCFUN75"_qs, u"PCFUN75"_qs, u"PCMAG13"_qs, u"PHOTOS"_qs}));
        // The last folder searched is left current.
        QCOMPARE(f.child<QListWidget>(u"Dossiers d'archivage"_qs)->currentItem()->text(), f.data.archiveFolders().last());
        // Clearing it leaves the selection switch set.
        QTest::mouseClick(allFolders, Qt::LeftButton);
        QVERIFY(selectAll->isChecked());
    }

    void classFilterAndSearchByExtension()
    {
        Fixture f;
        QTest::mouseClick(f.child<QToolButton>(u"Images"_qs), Qt::LeftButton);
        QListWidget *extensions = f.child<QListWidget>(u"extensions"_qs);
        // The two-letter entry is shifted and belongs to no class.
        QCOMPARE(extensions->count(), 2);
        QCOMPARE(f.label(u"Extension"_qs), u"GIF"_qs);
        f.selectArchives({u"PCFUN75.lst"_qs, u"PCMAG13.lst"_qs});
        QVERIFY(f.search(kByExtension));
        QCOMPARE(f.column(u"Chemins des fichiers trouvés"_qs), (QStringList{u"D:\\IMG\\ABABA.GIF"_qs, u"D:\\X\\LOGO.GIF"_qs}));
        QCOMPARE(f.label(u"Programme associé"_qs), u"D:\\OUTILS\\VIEW"_qs);
        QCOMPARE(f.label(u"Extension"_qs), QString());
        QCOMPARE(f.form.searchKindMarker(), u"1"_qs);
        QTest::mouseClick(f.child<QToolButton>(u"Textes"_qs), Qt::LeftButton);
        QCOMPARE(extensions->count(), 1);
        QCOMPARE(extensions->currentItem()->text(), u"TXT         &4C:\\WINDOWS\\NOTEPAD"_qs);
    }

    void extensionSearchStopsAt30000KeepingItsRows()
    {
        Fixture f;
        QList<QByteArray> entries;
        for (int i = 0; i < 25000; ++i)
            entries.append("d:\\P\\F" + QByteArray::number(i) + ".GIF");
        const QString jeux = f.data.folderPath(u"Divers"_qs);
        ArchiveFile::write(jeux, u"BIG1"_qs, entries);
        ArchiveFile::write(jeux, u"BIG2"_qs, entries);
        f.form.hide();
        f.form.show(); // reopening lists the new archives
        QTest::mouseClick(f.named<QCheckBox>(u"selectAll"_qs), Qt::LeftButton);
        f.child<QListWidget>(u"extensions"_qs)->setCurrentRow(0);
        QVERIFY(f.search(kByExtension));
        QCOMPARE(f.form.foundCount(), 30000);
        QCOMPARE(f.column(u"Classement alphabétique"_qs).size(), 30000);
        QCOMPARE(f.label(u"Nombre de fichiers trouvés"_qs), u"Nombre de fichiers trouvés:  30000"_qs);
        QCOMPARE(f.fakes.dialogs.messages(),
                 QStringList{u"Le nombre de fichiers recherchés comportant l'extension GIF est trop élevé : la recherche est stoppée ! "_qs});
    }

    void escapeEndsASearchButNotTheWindow()
    {
        Fixture f;
        QList<QByteArray> entries;
        for (int i = 0; i < 50000; ++i)
            entries.append("d:\\DOSSIER\\SOUS\\FICHIER" + QByteArray::number(i) + ".TXT");
        for (int i = 0; i < 4; ++i)
            ArchiveFile::write(f.data.folderPath(u"Photos"_qs), u"CD"_qs + QString::number(i), entries);
        f.child<QListWidget>(u"Dossiers d'archivage"_qs)->setCurrentRow(f.data.archiveFolders().indexOf(u"Photos"_qs));
        QTest::mouseClick(f.named<QCheckBox>(u"selectAll"_qs), Qt::LeftButton);
        QSignalSpy finished(&f.form, &SearchForm::searchFinished);
        f.fakes.dialogs.inputs = {u"fichier1"_qs};
        QTest::mouseClick(f.child<QToolButton>(kByString), Qt::LeftButton);
        QVERIFY(f.form.isSearching());
        QTest::keyClick(&f.form, Qt::Key_Escape);
        QVERIFY(finished.wait(5000));
        QVERIFY(f.form.isVisible());
        QCOMPARE(f.column(u"Classement alphabétique"_qs).size(), f.form.foundCount());
    }

    void anArchiveThatIsAFifoNeverFreezesTheWindow()
    {
        // Outlives the window, so that a worker stuck opening the FIFO is let go and the test ends.
        QTemporaryDir fifoDir;
        TestSupport::FifoWatchdog fifo(fifoDir.filePath(u"fifo"_qs), 8);
        QVERIFY(fifo.made());
        Fixture f;
        QVERIFY(QFile::link(fifoDir.filePath(u"fifo"_qs), f.data.folderPath(u"Divers"_qs) + u"/AAFIFO.lst"_qs));
        f.form.hide();
        f.form.show();
        QTest::mouseClick(f.child<QCheckBox>(u"selectAll"_qs), Qt::LeftButton);
        QCOMPARE(f.form.selectedArchiveCount(), 3);
        QVERIFY(f.search(kByName, u"readme"_qs));
        QCOMPARE(f.form.foundCount(), 3);
        // A new search, then closing the window while it runs, answer at once.
        f.fakes.dialogs.inputs = {u"setup"_qs};
        QTest::mouseClick(f.child<QToolButton>(kByName), Qt::LeftButton);
        f.form.close();
        QVERIFY(!f.form.isSearching());
        QVERIFY(!fifo.fired());
    }
};

QTEST_MAIN(tst_SearchForm)
#include "tst_searchform.moc"
