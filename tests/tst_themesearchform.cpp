#include "searchwindowfixture.h"
#include "themesearchform.h"

#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QScreen>
#include <QTest>
#include <QToolButton>

namespace {

struct Fixture : SearchWindowFixture<ThemeSearchForm>
{
    Fixture()
        : SearchWindowFixture({{u"Divers"_qs, u"PCFUN75"_qs, {"d:\\JEUX", "d:\\JEUX\\.", "d:\\JEUX\\CASSE.EXE", "d:\\LISEZMOI", "d:\\DOC\\Jeux.txt"}},
                               {u"Divers"_qs, u"PCMAG13"_qs, {"d:\\NOTES\\LISTE.TXT", "d:\\OUTILS\\TXT2HTML.EXE"}},
                               {u"Photos"_qs, u"VACANCES"_qs, {"e:\\JEUX DE PLAGE\\ALBUM.JPG"}}},
                              {u"TXT         &4C:\\WINDOWS\\NOTEPAD"_qs, u"EXE         &7"_qs},
                              // Written as the themes window writes it; a comma splits a line.
                              {u"jeux"_qs, u"lis"_qs, u"read, txt"_qs, QString()})
    {
        for (const QString &directory : {u"jeux"_qs, u"DOC"_qs}) // the disc holds its archive: it is checked
            QDir(disc.path()).mkpath(directory);
        TestSupport::writeFile(disc.filePath(u"jeux/casse.exe"_qs), "MZ");
        TestSupport::writeFile(disc.filePath(u"lisezmoi"_qs), "");
        TestSupport::writeFile(disc.filePath(u"DOC/Jeux.txt"_qs), "jeux\r\n");
    }
    QString text(const QString &label) { return child<QLabel>(label)->text(); }
    void choose(const QString &list, int row)
    {
        auto *widget = child<QListWidget>(list);
        QTest::mouseClick(widget->viewport(), Qt::LeftButton, {}, widget->visualItemRect(widget->item(row)).center());
    }
    bool runSearch() { return search([this] { QTest::mouseClick(child<QToolButton>(u"search"_qs), Qt::LeftButton); }); }
};

} // namespace

class tst_ThemeSearchForm : public QObject
{
    Q_OBJECT

private slots:
    void opensAtTheTopLeftWithItsControls()
    {
        Fixture f;
        QVERIFY(QTest::qWaitForWindowExposed(&f.form));
        QCOMPARE(f.form.windowTitle(), u"Kalvex : Recherche à partir d'un thème sélectionné."_qs);
        QCOMPARE(f.form.frameGeometry().topLeft(), f.form.screen()->availableGeometry().topLeft());
        const QList<std::pair<QString, QString>> texts = {
            {u"selectAll"_qs, u"Désélection de tous les fichiers d'archives"_qs},
            {u"allFolders"_qs, u"Rechercher dans tous les dossiers"_qs},
            {u"archiveCount"_qs, u"Nbre de CD ou disquettes répertoriés :  2"_qs}};
        for (const auto &[name, text] : texts)
            QCOMPARE(f.child<QWidget>(name)->property("text").toString(), text);
        QCOMPARE(f.column(u"themes"_qs), (QStringList{u"jeux"_qs, u"lis"_qs, u"read"_qs, u"txt"_qs, QString()}));
        QCOMPARE(f.column(u"extensions"_qs).size(), 2);
        QVERIFY(f.fakes.pictures.icons.contains(f.data.file(u"card002.ico"_qs)));
        QVERIFY(f.child<QLabel>(u"loading"_qs)->isHidden());
    }

    void searchesEveryFolderThenPrints()
    {
        Fixture f;
        f.choose(u"themes"_qs, 0);
        QTest::mouseClick(f.child<QCheckBox>(u"allFolders"_qs), Qt::LeftButton);
        QVERIFY(f.runSearch());
        QCOMPARE(f.column(u"foundArchives"_qs).last(), u"VACANCES.lst"_qs);
        QCOMPARE(f.column(u"sortedNames"_qs)[1], u"ALBUM.JPG"_qs + QString(60, u' ') + u" 3"_qs);
        QCOMPARE(f.text(u"foundCount"_qs), u"Nombre de fichiers trouvés:  4"_qs);
        // The theme as searched; the first row is the chosen one.
        QCOMPARE(f.text(u"chosenTheme"_qs), u"JEUX"_qs);
        QCOMPARE(f.form.currentRow(), 0);
        QCOMPARE(f.text(u"currentExtension"_qs), u"JEUX"_qs); // one field with the chosen theme
        QCOMPARE(f.text(u"medium"_qs), u"PCFUN75.lst .lst"_qs);
        QVERIFY(f.child<QLabel>(u"loading"_qs)->isHidden());
        // The paths as found, after the date and a blank line.
        QTest::mouseClick(f.child<QToolButton>(u"Imprimer"_qs), Qt::LeftButton);
        QCOMPARE(f.fakes.printer.printedLines(), QStringList({u"03-21-2001"_qs, QString()}) + f.column(u"foundPaths"_qs));
    }

    void extensionsAndRowPressesWriteTheChosenTheme()
    {
        Fixture f;
        QTest::mouseClick(f.child<QCheckBox>(u"allFolders"_qs), Qt::LeftButton);
        f.choose(u"extensions"_qs, 0); // the extension replaces the theme
        QCOMPARE(f.text(u"chosenTheme"_qs), u"TXT"_qs);
        QVERIFY(f.runSearch());
        QCOMPARE(f.column(u"foundPaths"_qs), QStringList{u"D:\\OUTILS\\TXT2HTML.EXE"_qs});

        f.choose(u"themes"_qs, 0);
        QVERIFY(f.runSearch());
        // A left press writes the row's extension.
        f.press(u"foundNames"_qs, 1, Qt::LeftButton);
        QCOMPARE(f.text(u"chosenTheme"_qs), u"EXE"_qs);
        QCOMPARE(f.text(u"extension"_qs), u"EXE"_qs);
        // A right press acts by the label's text without moving the row: by the theme chosen since
        // (no program), then by the row's own extension.
        f.press(u"foundNames"_qs, 2, Qt::LeftButton);
        f.choose(u"themes"_qs, 1);
        f.press(u"foundPaths"_qs, 0, Qt::RightButton);
        QCOMPARE(f.form.currentRow(), 2);
        QCOMPARE(f.text(u"chosenTheme"_qs), u"LIS"_qs);
        QVERIFY(f.fakes.launcher.programs.isEmpty());
        f.press(u"foundPaths"_qs, 2, Qt::LeftButton);
        f.press(u"sortedNames"_qs, 0, Qt::RightButton);
        f.press(u"foundArchives"_qs, 2, Qt::RightButton); // takes no press
        QCOMPARE(f.fakes.launcher.programs,
                 (QList<QStringList>{{u"C:\\WINDOWS\\NOTEPAD"_qs, f.disc.filePath(u"DOC/Jeux.txt"_qs)}}));

        // No theme at all (the empty line): the message, after the lists are emptied.
        f.choose(u"themes"_qs, 4);
        QTest::mouseClick(f.child<QToolButton>(u"search"_qs), Qt::LeftButton);
        QCOMPARE(f.fakes.dialogs.messages(), QStringList{u"Vous devez choisir un thème !"_qs});
        QVERIFY(f.column(u"foundNames"_qs).isEmpty());
        QCOMPARE(f.text(u"foundCount"_qs), QString());
    }
};

QTEST_MAIN(tst_ThemeSearchForm)
#include "tst_themesearchform.moc"
