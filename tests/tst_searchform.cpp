#include "samplepictures.h"
#include "searchform.h"
#include "searchwindowfixture.h"
#include "searchrequests.h"

#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

namespace {

const QString kByName = u"Recherche d'un fichier par son nom, sans extension."_qs;
const QString kByString = u"Recherche d'un fichier à partir d'une chaîne d'au moins 3 caractères."_qs;
const QString kByExtension = u"Liste des fichiers ayant la même extension."_qs;

// PCFUN75's disc is in d: (it holds all of its archive, which is checked).
struct Fixture : SearchWindowFixture<SearchForm>
{
    Fixture(const QList<Archive> &more = {})
        : SearchWindowFixture(QList<Archive>{{u"Divers"_qs, u"PCFUN75"_qs, {"d:\\DOC\\README.TXT", "d:\\README", "d:\\JEUX\\.",
                                                                        "d:\\IMG\\ABABA.GIF", "d:\\ICONES\\LOGO.ICO", "d:\\IMG\\ANE.GIF"}},
                                             {u"Divers"_qs, u"PCMAG13"_qs, {"d:\\ReadMe.txt", "d:\\X\\LOGO.GIF"}},
                                             {u"Images"_qs, u"PHOTOS"_qs, {"e:\\README.GIF"}}} + more,
                              {u"GIF         &1D:\\OUTILS\\VIEW"_qs, u"TXT         &4/usr/bin/editor"_qs,
                               u"JPG         &1D:\\OUTILS\\VIEW"_qs, u"GI         &1D:\\X"_qs})
    {
        for (const QString &directory : {u"doc"_qs, u"icones"_qs, u"img"_qs})
            QDir(disc.path()).mkpath(directory);
        TestSupport::writeFile(disc.filePath(u"doc/readme.txt"_qs), "lisez-moi");
        TestSupport::writeFile(disc.filePath(u"README"_qs), "sans extension");
        TestSupport::writeFile(disc.filePath(u"img/ababa.gif"_qs), "GIF89a");
        TestSupport::writeFile(disc.filePath(u"img/ane.gif"_qs), "GIF89a");
        TestSupport::writeFile(disc.filePath(u"icones/logo.ico"_qs),
                               SamplePictures::icon(SamplePictures::bands(32, 32, {Qt::red, Qt::green}), 24, QImage()));
    }
    void ask(const QString &button, const QString &answer = {})
    {
        fakes.dialogs.inputs = {answer};
        QTest::mouseClick(child<QToolButton>(button), Qt::LeftButton);
    }
    bool click(const QString &button, const QString &answer = {})
    {
        return search([&] { ask(button, answer); });
    }
    QString label(const QString &name) { return child<QLabel>(name)->text(); }
};

} // namespace

class tst_SearchForm : public QObject
{
    Q_OBJECT

private slots:
    void opensThenSearchesIntoTheParallelLists()
    {
        Fixture f;
        QCOMPARE(f.form.windowTitle(), u"Kalvex2 Recherches"_qs);
        const QList<std::pair<QString, QString>> texts = {
            {u"archiveCount"_qs, u"Nbre de CD ou disquettes répertoriés :  2"_qs},
            {u"selectAll"_qs, u"La Sélection de tous les fichiers d'archives est desactivèe"_qs},
            {u"allFolders"_qs, u"Rechercher dan tous les dossiers"_qs}};
        for (const auto &[name, text] : texts)
            QCOMPARE(f.child<QWidget>(name)->property("text").toString(), text);
        QCOMPARE(f.child<QListWidget>(u"folders"_qs)->currentItem()->text(), u"Divers"_qs);
        QCOMPARE(f.column(u"extensions"_qs).size(), 4);
        QVERIFY(f.fakes.pictures.icons.contains(f.data.file(u"MAGNI001.ico"_qs))
                && f.fakes.pictures.icons.contains(f.data.file(u"keys03.ico"_qs)));

        // The refusals, then a search that fills the parallel lists.
        f.ask(kByName, u""_qs);
        f.ask(kByString, u"ab"_qs);
        f.ask(kByExtension);
        QCOMPARE(f.fakes.dialogs.shown[0].text, u"Nom du fichier, sans extension ? "_qs);
        QCOMPARE(f.fakes.dialogs.shown[2].text, u"Chaîne de 3 caractères au minimum... ? "_qs);
        QCOMPARE(f.fakes.dialogs.messages(),
                 (QStringList{u"Vous devez saisir un nom !"_qs, u"Chaîne de caractères trop courtes ! "_qs,
                              u"Vous devez sélectionner une extension pour commencer la recherche !"_qs}));

        // Every result list's model keeps Qt's model rules while rows come in batches.
        std::vector<std::unique_ptr<QAbstractItemModelTester>> testers;
        for (QListView *view : f.form.findChildren<QListView *>())
            testers.push_back(std::make_unique<QAbstractItemModelTester>(view->model()));
        f.selectArchives({u"PCFUN75.lst"_qs, u"PCMAG13.lst"_qs});
        QVERIFY(f.click(kByName, u"readme"_qs));
        QCOMPARE(f.column(u"result1"_qs), (QStringList{u"PCFUN75"_qs, u"PCFUN75"_qs, u"PCMAG13"_qs}));
        QCOMPARE(f.column(u"result3"_qs).last(), u"D:\\README.TXT"_qs);
        QCOMPARE(f.column(u"result4"_qs).first(), u"README"_qs + QString(60, u' ') + u" 1"_qs);
        QCOMPARE(f.label(u"Nombre de fichiers trouvés"_qs), u"Nombre de fichiers trouvés:  3"_qs);
        QCOMPARE(f.label(u"Terme recherché"_qs), u"README"_qs);
        QCOMPARE(f.form.searchKindMarker(), u"0"_qs);
        QVERIFY(f.child<QLabel>(u"Chargement"_qs)->isHidden());
        // A choice in the alphabetical view makes its row current in every list.
        QListView *sorted = f.child<QListView>(u"result4"_qs);
        sorted->setCurrentIndex(sorted->model()->index(2, 0));
        QCOMPARE(f.form.currentArchive(), u"PCMAG13"_qs);
        QCOMPARE(f.child<QListView>(u"result3"_qs)->currentIndex().row(), 2);
    }

    void everyFolderSearchedWithTheSwitch()
    {
        Fixture f;
        QCheckBox *selectAll = f.child<QCheckBox>(u"selectAll"_qs);
        QTest::mouseClick(selectAll, Qt::LeftButton);
        QCOMPARE(selectAll->text(), u"La Sélection de tous les fichiers d'archives est activèe"_qs);
        QCOMPARE(f.form.selectedArchiveCount(), 2);
        QTest::mouseClick(selectAll, Qt::LeftButton);
        QCOMPARE(f.form.selectedArchiveCount(), 0);
        QTest::mouseClick(f.child<QCheckBox>(u"allFolders"_qs), Qt::LeftButton);
        QVERIFY(selectAll->isChecked());
        QVERIFY(f.click(kByName, u"readme"_qs));
        QCOMPARE(f.column(u"result1"_qs), (QStringList{u"PCFUN75"_qs, u"PCFUN75"_qs, u"PCMAG13"_qs, u"PHOTOS"_qs}));
        QCOMPARE(f.child<QListWidget>(u"folders"_qs)->currentItem()->text(), f.data.archiveFolders().last());
    }

    void classFilterThenExtensionSearchStoppedAt30000()
    {
        QList<QByteArray> entries;
        for (int i = 0; i < 15001; ++i)
            entries.append("d:\\P\\F" + QByteArray::number(i) + ".GIF");
        Fixture f({{u"Divers"_qs, u"BIG1"_qs, entries}, {u"Divers"_qs, u"BIG2"_qs, entries}});
        QTest::mouseClick(f.child<QToolButton>(u"Images"_qs), Qt::LeftButton);
        QCOMPARE(f.column(u"extensions"_qs).size(), 2); // the shifted two-letter entry is of no class
        QCOMPARE(f.label(u"Extension"_qs), u"GIF"_qs);
        QTest::mouseClick(f.child<QCheckBox>(u"selectAll"_qs), Qt::LeftButton);
        QVERIFY(f.click(kByExtension));
        QCOMPARE(f.column(u"result4"_qs).size(), 30000);
        QCOMPARE(f.label(u"Programme associé"_qs), u"D:\\OUTILS\\VIEW"_qs);
        QCOMPARE(f.label(u"Extension"_qs), QString());
        QCOMPARE(f.form.searchKindMarker(), u"1"_qs);
        QCOMPARE(f.fakes.dialogs.messages(), QStringList{SearchRequests::rowLimitMessage("GIF")});
    }

    // Escape ends a search but not the window; closing the window while a search runs ends it at once.
    void escapeOrClosingEndsASearch()
    {
        Fixture f;
        QTest::mouseClick(f.child<QCheckBox>(u"selectAll"_qs), Qt::LeftButton);
        QSignalSpy finished(&f.form, &SearchForm::searchFinished);
        f.ask(kByName, u"readme"_qs);
        QVERIFY(f.form.isSearching()); // its end is told through the event loop, not yet run
        QTest::keyClick(&f.form, Qt::Key_Escape);
        QVERIFY(finished.count() > 0 || finished.wait(5000));
        QVERIFY(f.form.isVisible());
        QCOMPARE(f.column(u"result4"_qs).size(), f.form.foundCount());
        f.ask(kByName, u"setup"_qs);
        f.form.close();
        QVERIFY(!f.form.isSearching());
    }

    // The actions on found files as the window wires them: presses on the result lists, the class
    // buttons, "Copier", "Imprimer" and the caption of the search by string.
    void leftPressChoosesRightPressActs()
    {
        Fixture f;
        f.selectArchives({u"PCFUN75.lst"_qs});
        QVERIFY(f.click(kByName, u"readme"_qs));
        f.press(u"result3"_qs, 0, Qt::RightButton); // before any left press: nothing
        QVERIFY(f.fakes.launcher.programs.isEmpty());
        QCOMPARE(f.form.currentRow(), -1);

        f.press(u"result0"_qs, 0, Qt::LeftButton);
        QCOMPARE(f.label(u"currentPath"_qs), u"D:\\DOC\\README.TXT"_qs);
        QVERIFY(f.fakes.launcher.programs.isEmpty());
        // The dot-less row keeps TXT, and the right press opens it by TXT without moving the row.
        f.press(u"result3"_qs, 1, Qt::LeftButton);
        f.press(u"result0"_qs, 0, Qt::RightButton);
        QCOMPARE(f.fakes.launcher.programs, (QList<QStringList>{{u"/usr/bin/editor"_qs, f.disc.filePath(u"README"_qs)}}));
        QCOMPARE(f.form.currentRow(), 1);
        // The alphabetical view: README (row 1) sorts before README.TXT (row 0); other buttons do nothing.
        f.press(u"result4"_qs, 1, Qt::LeftButton);
        QCOMPARE(f.form.currentRow(), 0);
        f.press(u"result4"_qs, 1, Qt::MiddleButton);
        QCOMPARE(f.fakes.launcher.programs.size(), 1);

        // An icon is previewed in its space.
        QVERIFY(f.click(kByName, u"logo"_qs));
        f.press(u"result0"_qs, 0, Qt::LeftButton);
        f.press(u"result0"_qs, 0, Qt::RightButton);
        const QImage preview = f.child<QLabel>(u"Espace ICO"_qs)->pixmap().toImage();
        QCOMPARE(preview.size(), QSize(32, 32));
        QCOMPARE(preview.pixelColor(0, 0), QColor(Qt::red));
    }

    void classButtonsCheckThenAskForTheirViewer()
    {
        Fixture f;
        f.selectArchives({u"PCFUN75.lst"_qs});
        QSignalSpy pictures(&f.form, &SearchForm::picturesViewerRequested);
        const auto click = [&f](const QString &button) {
            QTest::mouseClick(f.child<QPushButton>(button), Qt::LeftButton);
            return f.fakes.dialogs.messages().size();
        };
        QVERIFY(f.click(kByName, u"ane"_qs));
        QCOMPARE(click(u"Fichiers Images BMP, GIF, JPG ou WMF"_qs), 1); // not after a search by name
        auto *extensions = f.child<QListWidget>(u"extensions"_qs);
        extensions->setCurrentRow(0);
        QVERIFY(f.search([&f] { f.form.searchByExtension(); }));
        QCOMPARE(click(u"Fichiers Images BMP, GIF, JPG ou WMF"_qs), 1);
        QCOMPARE(pictures.count(), 1);
        QCOMPARE(click(u"Fichiers ICO, CUR ou EMF"_qs), 2);
    }

    void copyPrintAndTheStringCaption()
    {
        Fixture f;
        f.selectArchives({u"PCFUN75.lst"_qs});
        QVERIFY(f.click(kByName, u"readme"_qs));
        f.press(u"result0"_qs, 0, Qt::LeftButton);
        auto *copy = f.child<QToolButton>(u"Copier"_qs);
        QTest::mouseClick(copy, Qt::LeftButton); // the picker cancelled
        QCOMPARE(f.fakes.dialogs.messages(), QStringList{u"<Annuler> a été activé"_qs});
        QTemporaryDir target;
        f.fakes.folderPicker.answers = {target.path()};
        f.fakes.dialogs.answers = {Answer::Yes};
        QTest::mouseClick(copy, Qt::LeftButton);
        QCOMPARE(f.label(u"copyDirectory"_qs), target.path());
        QCOMPARE(f.label(u"copyTarget"_qs), target.filePath(u"README.TXT"_qs));

        // The paths as found, after the date and a blank line (the page's layout is the printout's).
        QTest::mouseClick(f.child<QToolButton>(u"Imprimer"_qs), Qt::LeftButton);
        QCOMPARE(f.fakes.printer.printedLines(),
                 (QStringList{u"03-21-2001"_qs, QString(), u"D:\\DOC\\README.TXT"_qs, u"D:\\README"_qs}));

        // The caption of the search by string only asks for a name.
        f.fakes.dialogs.clear();
        QTest::mouseClick(f.child<QLabel>(u"byStringCaption"_qs), Qt::LeftButton);
        QCOMPARE(f.fakes.dialogs.shown[0].text, u"Nom du fichier recherché...sans extension.. ?"_qs);
        QCOMPARE(f.fakes.dialogs.messages(), QStringList{u"Vous devez saisir un nom !"_qs});
        QVERIFY(!f.form.isSearching());
    }
};

QTEST_MAIN(tst_SearchForm)
#include "tst_searchform.moc"
