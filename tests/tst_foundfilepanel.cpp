#include "archivefile.h"
#include "datadirectory.h"
#include "fakeservices.h"
#include "foundfilepanel.h"
#include "samplepictures.h"
#include "searchform.h"
#include "tablefile.h"
#include "testsupport.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QListView>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

// The actions on found files as the search window offers them: presses on the result lists, the
// class buttons, "Copier", "Imprimer" and the caption of the search by string.
namespace {

struct Fixture
{
    Fixture()
    {
        data.startUp();
        const QString divers = data.folderPath(u"Divers"_qs);
        ArchiveFile::write(divers, u"PCFUN75"_qs,
                           {"d:\\DOC\\README.TXT", "d:\\README", "d:\\SETUP.EXE", "d:\\ICONES\\LOGO.ICO",
                            "d:\\IMG\\ZEBRE.GIF", "d:\\IMG\\ANE.GIF"});
        ArchiveFile::write(divers, u"PCMAG13"_qs, {"d:\\X\\LOGO.GIF"});
        TableFile::write(data.file(u"extens.txt"_qs),
                         {u"TXT         &4/usr/bin/editor"_qs, u"GIF         &1/usr/bin/viewer"_qs});
        QDir(disc.path()).mkpath(u"doc"_qs);
        QDir(disc.path()).mkpath(u"icones"_qs);
        TestSupport::writeFile(disc.filePath(u"doc/readme.txt"_qs), "lisez-moi");
        TestSupport::writeFile(disc.filePath(u"README"_qs), "sans extension");
        TestSupport::writeFile(disc.filePath(u"Setup.exe"_qs), "MZ");
        TestSupport::writeFile(disc.filePath(u"icones/logo.ico"_qs),
                               SamplePictures::icon(SamplePictures::bands(32, 32, {Qt::red, Qt::green}), 24, QImage()));
        fakes.drives.list = {{u"d:"_qs, DriveType::CdRom, disc.path()}};
        form.show();
    }

    template<typename T> T *child(const QString &name)
    {
        T *widget = form.findChild<T *>(name);
        if (!widget)
            qFatal("no control %s", qPrintable(name));
        return widget;
    }
    QString label(const QString &name) { return child<QLabel>(name)->text(); }
    void selectArchives(const QStringList &names)
    {
        auto *archives = child<QListWidget>(u"archives"_qs);
        for (int i = 0; i < archives->count(); ++i)
            archives->item(i)->setSelected(names.contains(archives->item(i)->text()));
    }
    bool search(void (SearchForm::*run)(), const QString &answer = {})
    {
        fakes.dialogs.inputs = {answer};
        QSignalSpy finished(&form, &SearchForm::searchFinished);
        (form.*run)();
        return finished.count() > 0 || finished.wait(5000);
    }
    bool searchExtension(const QString &extension, const QStringList &archives)
    {
        selectArchives(archives);
        auto *extensions = child<QListWidget>(u"extensions"_qs);
        extensions->setCurrentItem(extensions->findItems(extension, Qt::MatchStartsWith).value(0));
        return search(&SearchForm::searchByExtension);
    }
    // Presses `button` on row `row` of the result list `list` ("result0" names, "result3" paths,
    // "result4" alphabetical).
    void press(const QString &list, int row, Qt::MouseButton button)
    {
        auto *view = child<QListView>(list);
        const QRect rect = view->visualRect(view->model()->index(row, 0));
        QTest::mouseClick(view->viewport(), button, {}, rect.center());
    }

    QTemporaryDir dir;
    QTemporaryDir disc;
    DataDirectory data{dir.path()};
    QString pdf = dir.filePath(u"liste.pdf"_qs);
    FakeServices fakes;
    FakePrinter printer{pdf};
    SearchForm form{data,
                    {fakes.launcher, fakes.drives, fakes.dialogs, fakes.folderPicker, fakes.pictures, fakes.media},
                    printer, fakes.clock};
};

} // namespace

class tst_FoundFilePanel : public QObject
{
    Q_OBJECT

private slots:
    void leftPressChoosesRightPressActs()
    {
        Fixture f;
        f.selectArchives({u"PCFUN75.lst"_qs});
        // A right press before any left press: nothing.
        QVERIFY(f.search(&SearchForm::searchByName, u"readme"_qs));
        f.press(u"result3"_qs, 0, Qt::RightButton);
        QVERIFY(f.fakes.launcher.programs.isEmpty());
        QCOMPARE(f.form.currentRow(), -1);

        f.press(u"result0"_qs, 0, Qt::LeftButton);
        QCOMPARE(f.label(u"currentPath"_qs), u"D:\\DOC\\README.TXT"_qs);
        QCOMPARE(f.label(u"currentExtension"_qs), u"TXT"_qs);
        QCOMPARE(f.label(u"archiveLabel"_qs), u"PCFUN75 .lst"_qs);
        QCOMPARE(f.label(u"mediumPrompt"_qs), u"Mettez dans le lecteur \"PCFUN75\" : D:\\DOC\\README.TXT"_qs);
        QCOMPARE(f.child<QListView>(u"result3"_qs)->currentIndex().row(), 0);
        QVERIFY(f.fakes.launcher.programs.isEmpty()); // a left press starts nothing

        // The dot-less row keeps TXT, and the right press opens it by TXT.
        f.press(u"result3"_qs, 1, Qt::LeftButton);
        QCOMPARE(f.label(u"currentPath"_qs), u"D:\\README"_qs);
        QCOMPARE(f.label(u"currentExtension"_qs), u"TXT"_qs);
        f.press(u"result3"_qs, 1, Qt::RightButton);
        QCOMPARE(f.fakes.launcher.programs, (QList<QStringList>{{u"/usr/bin/editor"_qs, f.disc.filePath(u"README"_qs)}}));
        QCOMPARE(f.form.currentRow(), 1); // the right press chose nothing

        // The alphabetical view: README (row 1) sorts before README.TXT (row 0).
        f.press(u"result4"_qs, 1, Qt::LeftButton);
        QCOMPARE(f.form.currentRow(), 0);
        QCOMPARE(f.label(u"currentPath"_qs), u"D:\\DOC\\README.TXT"_qs);
        f.press(u"result4"_qs, 1, Qt::MiddleButton);
        QCOMPARE(f.fakes.launcher.programs.size(), 1);
    }

    void programsAndIconsFromTheDisc()
    {
        Fixture f;
        f.selectArchives({u"PCFUN75.lst"_qs});
        QVERIFY(f.search(&SearchForm::searchByName, u"setup"_qs)); // stored as d:\SETUP.EXE, on the disc as Setup.exe
        f.press(u"result0"_qs, 0, Qt::LeftButton);
        f.press(u"result0"_qs, 0, Qt::RightButton);
        QCOMPARE(f.fakes.launcher.dosPrograms, QStringList{f.disc.filePath(u"Setup.exe"_qs)});

        QVERIFY(f.search(&SearchForm::searchByName, u"logo"_qs));
        f.press(u"result0"_qs, 0, Qt::LeftButton);
        f.press(u"result0"_qs, 0, Qt::RightButton);
        const QPixmap preview = f.child<QLabel>(u"Espace ICO"_qs)->pixmap();
        QCOMPARE(preview.size(), QSize(32, 32));
        QCOMPARE(preview.toImage().pixelColor(0, 0), QColor(Qt::red));
        QCOMPARE(f.form.foundFiles().previewPath(), f.disc.filePath(u"icones/logo.ico"_qs));
    }

    void classButtonsCheckThenAskForTheirViewer()
    {
        Fixture f;
        QSignalSpy pictures(&f.form, &SearchForm::picturesViewerRequested);
        QSignalSpy texts(&f.form, &SearchForm::textsViewerRequested);
        QSignalSpy icons(&f.form, &SearchForm::iconsViewerRequested);
        const QStringList buttons{u"Fichiers Images BMP, GIF, JPG ou WMF"_qs, u"Fichiers DIZ et TXT"_qs,
                                  u"Fichiers ICO, CUR ou EMF"_qs};
        const auto clickAll = [&] {
            f.fakes.dialogs.clear();
            for (const QString &button : buttons)
                QTest::mouseClick(f.child<QPushButton>(button), Qt::LeftButton);
            return f.fakes.dialogs.messages();
        };
        // Pictures found, but two archives selected: every button refuses.
        QVERIFY(f.searchExtension(u"GIF"_qs, {u"PCFUN75.lst"_qs, u"PCMAG13.lst"_qs}));
        const QStringList refusals = clickAll();
        QCOMPARE(refusals.size(), 3);
        for (const QString &refusal : refusals)
            QVERIFY(refusal.startsWith(u"Pour utiliser une transaction automatisée"_qs));

        // A search by name, even one that found pictures: the first messages.
        f.selectArchives({u"PCFUN75.lst"_qs});
        QVERIFY(f.search(&SearchForm::searchByName, u"zebre"_qs));
        QCOMPARE(clickAll(), (QStringList{
            u"Vous devez au préalable rechercher les fichiers BMP,GIF,JPG ou WMF  dans  le CD-Rom ou la Disquette de votre choix !"_qs,
            u"Vous devez au préalable rechercher les fichiers DIZ,DOC ou TXT  dans  le CD-Rom ou la Disquette de votre choix !"_qs,
            u"Vous devez au préalable rechercher les fichiers ICO,CUR ou EMF  dans  le dans  le CD-Rom ou la Disquette de votre choix !"_qs}));

        // A search by extension for GIF: the pictures button asks for its viewer, the others refuse.
        QVERIFY(f.searchExtension(u"GIF"_qs, {u"PCFUN75.lst"_qs}));
        QCOMPARE(clickAll().size(), 2);
        QCOMPARE(pictures.count(), 1);
        QCOMPARE(texts.count() + icons.count(), 0);
    }

    void copyIntoAChosenFolder()
    {
        Fixture f;
        f.selectArchives({u"PCFUN75.lst"_qs});
        QVERIFY(f.search(&SearchForm::searchByName, u"readme"_qs));
        f.press(u"result0"_qs, 0, Qt::LeftButton);
        auto *copy = f.child<QToolButton>(u"Copier"_qs);

        QTest::mouseClick(copy, Qt::LeftButton); // the picker cancelled
        QCOMPARE(f.fakes.dialogs.messages(), QStringList{u"<Annuler> a été activé"_qs});

        QTemporaryDir target;
        f.fakes.folderPicker.answers = {target.path()};
        f.fakes.dialogs.answers = {Answer::Yes};
        QTest::mouseClick(copy, Qt::LeftButton);
        QCOMPARE(f.fakes.dialogs.shown.last().text,
                 u"Etes-vous sûr de vouloir copier  D:\\DOC\\README.TXT dans le répertoire "_qs + target.path() + u" ?"_qs);
        QCOMPARE(f.label(u"copyDirectory"_qs), target.path());
        const QString copied = target.filePath(u"README.TXT"_qs);
        QCOMPARE(f.label(u"copyTarget"_qs), copied);
        QCOMPARE(TestSupport::readFile(copied), QByteArray("lisez-moi"));

        // Onto a read-only file: refused, the file kept.
        TestSupport::writeFile(copied, "gardé");
        QFile::setPermissions(copied, QFile::ReadOwner);
        f.fakes.folderPicker.answers = {target.path()};
        f.fakes.dialogs.answers = {Answer::Yes};
        QTest::mouseClick(copy, Qt::LeftButton);
        QCOMPARE(TestSupport::readFile(copied), QByteArray("gardé"));

        // Onto itself, in the disc's own folder: the content stays whole.
        f.fakes.folderPicker.answers = {f.disc.filePath(u"doc"_qs)};
        f.fakes.dialogs.answers = {Answer::Yes};
        QTest::mouseClick(copy, Qt::LeftButton);
        QCOMPARE(TestSupport::readFile(f.disc.filePath(u"doc/readme.txt"_qs)), QByteArray("lisez-moi"));
    }

    void printsThePathList()
    {
        KALVEX_REQUIRE_PROGRAM(u"pdftotext"_qs);
        Fixture f;
        f.selectArchives({u"PCFUN75.lst"_qs});
        QVERIFY(f.search(&SearchForm::searchByName, u"readme"_qs));
        QTest::mouseClick(f.child<QToolButton>(u"Imprimer"_qs), Qt::LeftButton);
        QStringList words;
        qreal left = -1;
        for (const TestSupport::PdfWord &word : TestSupport::pdfWords(f.pdf)) {
            words.append(word.text);
            QVERIFY(left < 0 || qAbs(word.box.left() - left) < 1); // one column, 2000 twips in
            left = word.box.left();
        }
        QCOMPARE(words, (QStringList{u"03-21-2001"_qs, u"D:\\DOC\\README.TXT"_qs, u"D:\\README"_qs}));
    }

    void stringCaptionOnlyAsks()
    {
        Fixture f;
        auto *caption = f.child<QLabel>(u"byStringCaption"_qs);
        QTest::mouseClick(caption, Qt::LeftButton);
        f.fakes.dialogs.inputs = {u"casse"_qs};
        QTest::mouseClick(caption, Qt::LeftButton);
        QCOMPARE(f.fakes.dialogs.shown.size(), 3);
        QCOMPARE(f.fakes.dialogs.shown[0].text, u"Nom du fichier recherché...sans extension.. ?"_qs);
        QCOMPARE(f.fakes.dialogs.messages(), QStringList{u"Vous devez saisir un nom !"_qs});
        QVERIFY(!f.form.isSearching());
    }
};

QTEST_MAIN(tst_FoundFilePanel)
#include "tst_foundfilepanel.moc"
