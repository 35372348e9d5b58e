#include "foundfilepanel.h"
#include "samplepictures.h"
#include "searchform.h"
#include "searchwindowfixture.h"

#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

// The actions on found files as the search window wires them: presses on the result lists, the
// class buttons, "Copier", "Imprimer" and the caption of the search by string.
namespace {

struct Fixture : SearchWindowFixture<SearchForm>
{
    Fixture()
        : SearchWindowFixture({{u"Divers"_qs, u"PCFUN75"_qs, {"d:\\DOC\\README.TXT", "d:\\README", "d:\\ICONES\\LOGO.ICO", "d:\\IMG\\ANE.GIF"}},
                               {u"Divers"_qs, u"PCMAG13"_qs, {"d:\\X\\LOGO.GIF"}}},
                              {u"TXT         &4/usr/bin/editor"_qs, u"GIF         &1/usr/bin/viewer"_qs})
    {
        QDir(disc.path()).mkpath(u"doc"_qs);
        QDir(disc.path()).mkpath(u"icones"_qs);
        TestSupport::writeFile(disc.filePath(u"doc/readme.txt"_qs), "lisez-moi");
        TestSupport::writeFile(disc.filePath(u"README"_qs), "sans extension");
        QDir(disc.path()).mkpath(u"img"_qs); // the disc holds all of its archive: it is checked
        TestSupport::writeFile(disc.filePath(u"img/ane.gif"_qs), "GIF89a");
        TestSupport::writeFile(disc.filePath(u"icones/logo.ico"_qs),
                               SamplePictures::icon(SamplePictures::bands(32, 32, {Qt::red, Qt::green}), 24, QImage()));
        selectArchives({u"PCFUN75.lst"_qs});
    }
    bool searchName(const QString &name)
    {
        fakes.dialogs.inputs = {name};
        return search([this] { form.searchByName(); });
    }
    QString label(const QString &name) { return child<QLabel>(name)->text(); }
};

} // namespace

class tst_FoundFilePanel : public QObject
{
    Q_OBJECT

private slots:
    void leftPressChoosesRightPressActs()
    {
        Fixture f;
        QVERIFY(f.searchName(u"readme"_qs));
        f.press(u"result3"_qs, 0, Qt::RightButton); // before any left press: nothing
        QVERIFY(f.fakes.launcher.programs.isEmpty());
        QCOMPARE(f.form.currentRow(), -1);

        f.press(u"result0"_qs, 0, Qt::LeftButton);
        QCOMPARE(f.label(u"currentPath"_qs), u"D:\\DOC\\README.TXT"_qs);
        QCOMPARE(f.label(u"archiveLabel"_qs), u"PCFUN75 .lst"_qs);
        QCOMPARE(f.label(u"mediumPrompt"_qs), u"Mettez dans le lecteur \"PCFUN75\" : D:\\DOC\\README.TXT"_qs);
        QVERIFY(f.fakes.launcher.programs.isEmpty());
        // The dot-less row keeps TXT, and the right press opens it by TXT without moving the row.
        f.press(u"result3"_qs, 1, Qt::LeftButton);
        QCOMPARE(f.label(u"currentExtension"_qs), u"TXT"_qs);
        f.press(u"result0"_qs, 0, Qt::RightButton);
        QCOMPARE(f.fakes.launcher.programs, (QList<QStringList>{{u"/usr/bin/editor"_qs, f.disc.filePath(u"README"_qs)}}));
        QCOMPARE(f.form.currentRow(), 1);
        // The alphabetical view: README (row 1) sorts before README.TXT (row 0); other buttons do nothing.
        f.press(u"result4"_qs, 1, Qt::LeftButton);
        QCOMPARE(f.form.currentRow(), 0);
        f.press(u"result4"_qs, 1, Qt::MiddleButton);
        QCOMPARE(f.fakes.launcher.programs.size(), 1);

        // An icon is previewed in its space.
        QVERIFY(f.searchName(u"logo"_qs));
        f.press(u"result0"_qs, 0, Qt::LeftButton);
        f.press(u"result0"_qs, 0, Qt::RightButton);
        const QImage preview = f.child<QLabel>(u"Espace ICO"_qs)->pixmap().toImage();
        QCOMPARE(preview.size(), QSize(32, 32));
        QCOMPARE(preview.pixelColor(0, 0), QColor(Qt::red));
    }

    void classButtonsCheckThenAskForTheirViewer()
    {
        Fixture f;
        QSignalSpy pictures(&f.form, &SearchForm::picturesViewerRequested);
        const auto click = [&f](const QString &button) {
            QTest::mouseClick(f.child<QPushButton>(button), Qt::LeftButton);
            return f.fakes.dialogs.messages().size();
        };
        QVERIFY(f.searchName(u"ane"_qs));
        QCOMPARE(click(u"Fichiers Images BMP, GIF, JPG ou WMF"_qs), 1); // not after a search by name
        auto *extensions = f.child<QListWidget>(u"extensions"_qs);
        extensions->setCurrentRow(1);
        QVERIFY(f.search([&f] { f.form.searchByExtension(); }));
        QCOMPARE(click(u"Fichiers Images BMP, GIF, JPG ou WMF"_qs), 1);
        QCOMPARE(pictures.count(), 1);
        QCOMPARE(click(u"Fichiers DIZ et TXT"_qs), 2);
        QCOMPARE(click(u"Fichiers ICO, CUR ou EMF"_qs), 3);
    }

    void copyPrintAndTheStringCaption()
    {
        Fixture f;
        QVERIFY(f.searchName(u"readme"_qs));
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
        QCOMPARE(TestSupport::readFile(target.filePath(u"README.TXT"_qs)), QByteArray("lisez-moi"));

        // The paths at 2000 twips, after the date and a blank line.
        QTest::mouseClick(f.child<QToolButton>(u"Imprimer"_qs), Qt::LeftButton);
        const QStringList placed = f.fakes.printer.log.filter(QRegularExpression(u"^(x=|y=|print:)"_qs));
        QCOMPARE(placed, (QStringList{u"x=2000"_qs, u"y=1000"_qs, u"print:03-21-2001"_qs, u"x=2000"_qs, u"print:"_qs,
                                      u"x=2000"_qs, u"print:D:\\DOC\\README.TXT"_qs, u"x=2000"_qs, u"print:D:\\README"_qs}));

        // The caption of the search by string only asks for a name.
        f.fakes.dialogs.clear();
        QTest::mouseClick(f.child<QLabel>(u"byStringCaption"_qs), Qt::LeftButton);
        QCOMPARE(f.fakes.dialogs.shown[0].text, u"Nom du fichier recherché...sans extension.. ?"_qs);
        QCOMPARE(f.fakes.dialogs.messages(), QStringList{u"Vous devez saisir un nom !"_qs});
        QVERIFY(!f.form.isSearching());
    }
};

QTEST_MAIN(tst_FoundFilePanel)
#include "tst_foundfilepanel.moc"
