#include "archivefile.h"
#include "datadirectory.h"
#include "fakeservices.h"
#include "tablefile.h"
#include "testsupport.h"
#include "themesearchform.h"

#include <QAbstractItemModel>
#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QListView>
#include <QListWidget>
#include <QScreen>
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
        ArchiveFile::write(data.folderPath(u"Divers"_qs), u"PCFUN75"_qs,
                           {"d:\\JEUX", "d:\\JEUX\\.", "d:\\JEUX\\CASSE.EXE", "d:\\LISEZMOI", "d:\\V1.0\\README",
                            "d:\\DOC\\Jeux.txt"});
        ArchiveFile::write(data.folderPath(u"Divers"_qs), u"PCMAG13"_qs, {"d:\\SETUP.EXE", "d:\\NOTES\\LISTE.TXT", "d:\\OUTILS\\TXT2HTML.EXE"});
        ArchiveFile::write(data.folderPath(u"Photos"_qs), u"VACANCES"_qs, {"e:\\JEUX DE PLAGE\\ALBUM.JPG"});
        // Written as the themes window writes it, read under the other spelling; a comma splits a line.
        TableFile::write(data.file(u"themes.txt"_qs), {u"jeux"_qs, u"lis"_qs, u"read, txt"_qs, QString()});
        TableFile::write(data.file(u"extens.txt"_qs), {u"TXT         &4C:\\WINDOWS\\NOTEPAD"_qs, u"EXE         &7"_qs});
        form.show();
    }

    template<typename T> T *named(const QString &objectName)
    {
        T *widget = form.findChild<T *>(objectName);
        if (!widget)
            qFatal("no control %s", qPrintable(objectName));
        return widget;
    }
    QString text(const QString &label) { return named<QLabel>(label)->text(); }
    QStringList column(const QString &view)
    {
        QStringList rows;
        const QAbstractItemModel *model = named<QListView>(view)->model();
        for (int i = 0; i < model->rowCount(); ++i)
            rows.append(model->index(i, 0).data().toString());
        return rows;
    }
    void chooseTheme(const QString &theme)
    {
        QListWidget *themes = named<QListWidget>(u"themes"_qs);
        const QList<QListWidgetItem *> items = themes->findItems(theme, Qt::MatchExactly);
        QVERIFY(!items.isEmpty());
        QTest::mouseClick(themes->viewport(), Qt::LeftButton, {}, themes->visualItemRect(items.first()).center());
    }
    bool search()
    {
        QSignalSpy finished(&form, &ThemeSearchForm::searchFinished);
        QTest::mouseClick(named<QToolButton>(u"search"_qs), Qt::LeftButton);
        return finished.count() > 0 || finished.wait(5000);
    }
    void press(const QString &view, int row, Qt::MouseButton button)
    {
        QListView *list = named<QListView>(view);
        const QModelIndex index = list->model()->index(row, 0);
        QTRY_VERIFY(list->visualRect(index).isValid()); // rows are laid out in batches
        const QRect rect = list->visualRect(index);
        QTest::mouseClick(list->viewport(), button, {}, rect.center());
    }
    void searchEveryFolder()
    {
        QCheckBox *allFolders = named<QCheckBox>(u"allFolders"_qs);
        if (!allFolders->isChecked())
            QTest::mouseClick(allFolders, Qt::LeftButton);
    }

    QTemporaryDir dir;
    DataDirectory data{dir.path()};
    FakeServices fakes;
    ThemeSearchForm form{data,
                         {fakes.launcher, fakes.drives, fakes.dialogs, fakes.folderPicker, fakes.pictures, fakes.media},
                         fakes.printer, fakes.clock};
};

const QString kBlanks(60, u' ');

} // namespace

class tst_ThemeSearchForm : public QObject
{
    Q_OBJECT

private slots:
    void opensAtTheTopLeftWithItsListsAndCaptions()
    {
        Fixture f;
        QVERIFY(QTest::qWaitForWindowExposed(&f.form));
        QCOMPARE(f.form.windowTitle(), u"Kalvex : Recherche à partir d'un thème sélectionné."_qs);
        QCOMPARE(f.form.frameGeometry().topLeft(), f.form.screen()->availableGeometry().topLeft());
        QCOMPARE(f.column(u"themes"_qs), (QStringList{u"jeux"_qs, u"lis"_qs, u"read"_qs, u"txt"_qs, QString()}));
        QCOMPARE(f.column(u"extensions"_qs).size(), 2);
        QCOMPARE(f.named<QCheckBox>(u"selectAll"_qs)->text(), u"Désélection de tous les fichiers d'archives"_qs);
        QCOMPARE(f.named<QCheckBox>(u"allFolders"_qs)->text(), u"Rechercher dans tous les dossiers"_qs);
        QCOMPARE(f.text(u"archiveCount"_qs), u"Nbre de CD ou disquettes répertoriés :  2"_qs);
        QCOMPARE(f.text(u"chosenTheme"_qs), QString());
        QVERIFY(f.fakes.pictures.icons.contains(f.data.file(u"card002.ico"_qs)));
        QCOMPARE(f.named<QToolButton>(u"Imprimer"_qs)->text(), u"Imprimer"_qs);
        QCOMPARE(f.named<QToolButton>(u"Copier"_qs)->text(), u"Copier"_qs);
        QVERIFY(f.named<QLabel>(u"loading"_qs)->isHidden());

        // The switch's caption tells its state once toggled.
        QTest::mouseClick(f.named<QCheckBox>(u"selectAll"_qs), Qt::LeftButton);
        QCOMPARE(f.named<QCheckBox>(u"selectAll"_qs)->text(), u"La Sélection de tous les fichiers d'archives est activèe"_qs);
    }

    void searchesEveryFolderAndFillsTheParallelLists()
    {
        Fixture f;
        f.chooseTheme(u"jeux"_qs);
        QCOMPARE(f.text(u"chosenTheme"_qs), u"jeux"_qs);
        f.searchEveryFolder();
        QVERIFY(f.search());
        // D:\JEUX ends with the theme and is not found; D:\JEUX\. is. Names, archives with their
        // ".lst", the extension rule of this window (a dot anywhere), paths upper-cased.
        QCOMPARE(f.column(u"foundNames"_qs), (QStringList{u"."_qs, u"CASSE.EXE"_qs, u"JEUX.TXT"_qs, u"ALBUM.JPG"_qs}));
        QCOMPARE(f.column(u"foundArchives"_qs),
                 (QStringList{u"PCFUN75.lst"_qs, u"PCFUN75.lst"_qs, u"PCFUN75.lst"_qs, u"VACANCES.lst"_qs}));
        QCOMPARE(f.column(u"foundExtensions"_qs), (QStringList{u"X\\."_qs, u"EXE"_qs, u"TXT"_qs, u"JPG"_qs}));
        QCOMPARE(f.column(u"foundPaths"_qs).last(), u"E:\\JEUX DE PLAGE\\ALBUM.JPG"_qs);
        QCOMPARE(f.column(u"sortedNames"_qs),
                 (QStringList{u"."_qs + kBlanks + u" 0"_qs, u"ALBUM.JPG"_qs + kBlanks + u" 3"_qs,
                              u"CASSE.EXE"_qs + kBlanks + u" 1"_qs, u"JEUX.TXT"_qs + kBlanks + u" 2"_qs}));
        QCOMPARE(f.text(u"foundCount"_qs), u"Nombre de fichiers trouvés:  4"_qs);
        // The theme as searched; the first row is the chosen one; the last folder stays current.
        QCOMPARE(f.text(u"chosenTheme"_qs), u"JEUX"_qs);
        QCOMPARE(f.form.currentRow(), 0);
        QCOMPARE(f.text(u"currentExtension"_qs), u"JEUX"_qs); // one field with the chosen theme
        QCOMPARE(f.text(u"medium"_qs), u"PCFUN75.lst .lst"_qs);
        QCOMPARE(f.named<QListWidget>(u"folders"_qs)->currentItem()->text(), f.data.archiveFolders().last());
        QVERIFY(f.named<QLabel>(u"loading"_qs)->isHidden());

        // Without the switch, only the selected archives of the current folder.
        QTest::mouseClick(f.named<QCheckBox>(u"allFolders"_qs), Qt::LeftButton);
        f.named<QListWidget>(u"folders"_qs)->setCurrentRow(f.data.archiveFolders().indexOf(u"Divers"_qs));
        QListWidget *archives = f.named<QListWidget>(u"archives"_qs);
        archives->clearSelection();
        archives->item(1)->setSelected(true);
        f.chooseTheme(u"lis"_qs);
        QVERIFY(f.search());
        QCOMPARE(f.column(u"foundPaths"_qs), QStringList{u"D:\\NOTES\\LISTE.TXT"_qs});
        archives->item(0)->setSelected(true);
        QVERIFY(f.search());
        QCOMPARE(f.column(u"foundPaths"_qs), (QStringList{u"D:\\LISEZMOI"_qs, u"D:\\NOTES\\LISTE.TXT"_qs}));
        QCOMPARE(f.column(u"foundExtensions"_qs), (QStringList{u"    "_qs, u"TXT"_qs}));
        // A press on a path without a dot leaves the chosen theme as it was.
        f.press(u"foundNames"_qs, 0, Qt::LeftButton);
        QCOMPARE(f.form.currentRow(), 0);
        QCOMPARE(f.text(u"chosenTheme"_qs), u"LIS"_qs);
        f.chooseTheme(u"read"_qs);
        QVERIFY(f.search());
        QCOMPARE(f.column(u"foundExtensions"_qs), QStringList{u"DME"_qs});
    }

    void extensionsAndRowPressesWriteTheChosenTheme()
    {
        Fixture f;
        f.searchEveryFolder();
        f.chooseTheme(u"jeux"_qs);
        // A choice in the extension list replaces the theme by its three first characters.
        QListWidget *extensions = f.named<QListWidget>(u"extensions"_qs);
        QTest::mouseClick(extensions->viewport(), Qt::LeftButton, {}, extensions->visualItemRect(extensions->item(0)).center());
        QCOMPARE(f.text(u"chosenTheme"_qs), u"TXT"_qs);
        QVERIFY(f.search());
        // Never as the path's last letters (JEUX.TXT, LISTE.TXT).
        QCOMPARE(f.column(u"foundPaths"_qs), QStringList{u"D:\\OUTILS\\TXT2HTML.EXE"_qs});

        f.chooseTheme(u"jeux"_qs);
        QVERIFY(f.search());
        // The first disc is in drive d:.
        QTemporaryDir disc;
        QVERIFY(QDir(disc.path()).mkpath(u"DOC"_qs));
        QVERIFY(TestSupport::writeFile(disc.filePath(u"DOC/Jeux.txt"_qs), "jeux\r\n"));
        f.fakes.drives.list = {{u"d:"_qs, DriveType::CdRom, disc.path()}};
        // A left press on CASSE.EXE writes its extension.
        f.press(u"foundNames"_qs, 1, Qt::LeftButton);
        QCOMPARE(f.form.currentRow(), 1);
        QCOMPARE(f.text(u"chosenTheme"_qs), u"EXE"_qs);
        QCOMPARE(f.text(u"extension"_qs), u"EXE"_qs);
        QCOMPARE(f.named<QListView>(u"foundPaths"_qs)->currentIndex().row(), 1);
        // The alphabetical view leads back to the row found: ALBUM.JPG is row 3.
        f.press(u"sortedNames"_qs, 1, Qt::LeftButton);
        QCOMPARE(f.form.currentRow(), 3);
        QCOMPARE(f.text(u"chosenTheme"_qs), u"JPG"_qs);
        QCOMPARE(f.text(u"medium"_qs), u"VACANCES.lst .lst"_qs);
        // A right press acts on the current row by the label's text, upper-cased, without moving it:
        // on JEUX.TXT, by the theme chosen since (no program), then by its own extension.
        f.press(u"foundNames"_qs, 2, Qt::LeftButton);
        QCOMPARE(f.text(u"chosenTheme"_qs), u"TXT"_qs);
        f.chooseTheme(u"lis"_qs);
        f.press(u"foundPaths"_qs, 0, Qt::RightButton);
        QCOMPARE(f.form.currentRow(), 2);
        QCOMPARE(f.text(u"chosenTheme"_qs), u"LIS"_qs);
        QVERIFY(f.fakes.launcher.programs.isEmpty());
        f.press(u"foundPaths"_qs, 2, Qt::LeftButton);
        f.press(u"sortedNames"_qs, 0, Qt::RightButton);
        QCOMPARE(f.fakes.launcher.programs,
                 (QList<QStringList>{{u"C:\\WINDOWS\\NOTEPAD"_qs, disc.filePath(u"DOC/Jeux.txt"_qs)}}));
        QCOMPARE(f.text(u"mediumPrompt"_qs), u"Mettez dans le lecteur \"PCFUN75.lst\" : D:\\DOC\\JEUX.TXT"_qs);
        // The archive and extension columns take no press.
        f.press(u"foundArchives"_qs, 2, Qt::RightButton);
        QCOMPARE(f.fakes.launcher.programs.size(), 1);

        // After a press the next search looks for the row's extension.
        f.press(u"foundPaths"_qs, 2, Qt::LeftButton);
        QVERIFY(f.search());
        QCOMPARE(f.column(u"foundPaths"_qs), (QStringList{u"D:\\OUTILS\\TXT2HTML.EXE"_qs}));
        // No theme at all (the empty line of the list): the message, after the lists are emptied.
        f.chooseTheme(QString());
        QTest::mouseClick(f.named<QToolButton>(u"search"_qs), Qt::LeftButton);
        QCOMPARE(f.fakes.dialogs.messages(), QStringList{u"Vous devez choisir un thème !"_qs});
        QCOMPARE(f.form.foundCount(), 0);
        QVERIFY(f.column(u"foundNames"_qs).isEmpty());
        QCOMPARE(f.text(u"foundCount"_qs), QString());
        QVERIFY(!f.form.isSearching());
    }

    void stopsAfter20000RowsAndPrintsThePaths()
    {
        Fixture f;
        QList<QByteArray> entries;
        for (int i = 0; i < 15000; ++i)
            entries.append("d:\\JEUX\\F" + QByteArray::number(i) + ".EXE");
        ArchiveFile::write(f.data.folderPath(u"Divers"_qs), u"BIG1"_qs, entries);
        ArchiveFile::write(f.data.folderPath(u"Divers"_qs), u"BIG2"_qs, entries);
        f.form.hide();
        f.form.show(); // reopening lists the new archives
        QTest::mouseClick(f.named<QCheckBox>(u"selectAll"_qs), Qt::LeftButton);
        f.chooseTheme(u"jeux"_qs);
        QVERIFY(f.search());
        QCOMPARE(f.form.foundCount(), 20001);
        QCOMPARE(f.column(u"sortedNames"_qs).size(), 20001);
        QCOMPARE(f.text(u"foundCount"_qs), u"Nombre de fichiers trouvés:  20001"_qs);
        QVERIFY(f.fakes.dialogs.messages().isEmpty());

        f.chooseTheme(u"lis"_qs);
        QVERIFY(f.search());
        QTest::mouseClick(f.named<QToolButton>(u"Imprimer"_qs), Qt::LeftButton);
        QCOMPARE(f.fakes.printer.printedLines(),
                 (QStringList{u"03-21-2001"_qs, QString(), u"D:\\LISEZMOI"_qs, u"D:\\NOTES\\LISTE.TXT"_qs}));
    }
};

QTEST_MAIN(tst_ThemeSearchForm)
#include "tst_themesearchform.moc"
