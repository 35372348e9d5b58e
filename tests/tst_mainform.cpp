#include "archivefile.h"
#include "datadirectory.h"
#include "fakeservices.h"
#include "imageviewerform.h"
#include "mainform.h"
#include "searchform.h"
#include "tablefile.h"
#include "testsupport.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QListWidget>
#include <QMenuBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QWindow>

using TestSupport::child;

namespace {

// A click as the window system delivers it, so that window modality applies to it.
void clickThroughWindowSystem(QWidget *topLevel, QWidget *button)
{
    QTest::mouseClick(topLevel->windowHandle(), Qt::LeftButton, {}, button->mapTo(topLevel, button->rect().center()));
    QCoreApplication::processEvents();
}

// A main window started on a fresh data directory, with or without the program's pictures.
struct Started
{
    explicit Started(bool withPictures) : pictures(withPictures && (TestSupport::copyProgramFiles(dir.path()), true)) {}
    QToolButton *button(const QString &icon) { return child<QToolButton>(&window, icon); }

    QTemporaryDir dir;
    bool pictures; // copied before the window below loads them
    FakeServices fakes;
    DataDirectory data{dir.path()};
    MainForm window{data, fakes.services()};
};

} // namespace

class tst_MainForm : public QObject
{
    Q_OBJECT

private slots:
    // Each command's picture button (named by its icon, with its hint) and menu entry: a window
    // opens from both as one application-modal window, created once; help and display settings
    // go to the launcher.
    void commands_data()
    {
        QTest::addColumn<QString>("icon");
        QTest::addColumn<QString>("hint");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("opens"); // a window's class, a document, or the display settings
        QTest::newRow("create") << u"file005.ico"_qs << u"Créer un fichier d'archives"_qs << u"Créer un fichier d'archives"_qs << u"CreateArchiveForm"_qs;
        QTest::newRow("archive list") << u"cross003.ico"_qs << u"Supprimer un fichier d'archives"_qs << u"Supprimer un fichier d'archives"_qs << u"ArchiveListForm"_qs;
        QTest::newRow("search") << u"binoculr.ico"_qs << u"Rechercher un fichier"_qs << u"Recherche d'un fichier"_qs << u"SearchForm"_qs;
        QTest::newRow("theme search") << u"crdfle10.ico"_qs << u"Rechercher par thème"_qs << u"Recherche par thème"_qs << u"ThemeSearchForm"_qs;
        QTest::newRow("folders") << u"foldrs01.ico"_qs << u"Ajouter/supprimer un dossier d'archivage"_qs << u"Dossiers d'archivage"_qs << u"FoldersForm"_qs;
        QTest::newRow("extensions") << u"words003.ico"_qs << u"Ajouter/supprimer une extension"_qs << u"      Extensions "_qs << u"ExtensionsForm"_qs;
        QTest::newRow("themes") << u"note14.ico"_qs << u"Ajouter/supprimer un thème"_qs << u"Thèmes"_qs << u"ThemesForm"_qs;
        QTest::newRow("help") << u"hlp.ico"_qs << u"Rechercher une aide"_qs << u"            Aide"_qs << u"kalvex2.htm"_qs;
        QTest::newRow("display") << u"Gtico000.ico"_qs << QString() << u"Affichage"_qs << u"display"_qs;
    }
    void commands()
    {
        QFETCH(QString, icon);
        QFETCH(QString, hint);
        QFETCH(QString, caption);
        QFETCH(QString, opens);
        Started started(true);
        MainForm &window = started.window;
        QToolButton *button = started.button(icon);
        QCOMPARE(button->toolTip(), hint);
        QCOMPARE(button->accessibleName(), hint.isEmpty() ? u"Affichage"_qs : hint);
        QVERIFY(started.fakes.pictures.icons.contains(started.dir.filePath(icon)) && !button->icon().isNull());
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        TestSupport::menuAction(window.menuBar(), caption)->trigger();
        if (!opens.endsWith(u"Form")) {
            clickThroughWindowSystem(&window, button);
            const QStringList launched = started.fakes.launcher.documents + QStringList(started.fakes.launcher.displaySettings, u"display"_qs);
            QCOMPARE(launched, QStringList(2, opens == u"display"_qs ? opens : started.dir.filePath(opens)));
            return;
        }
        QWidget *first = QApplication::activeModalWidget();
        QVERIFY(first && QLatin1String(first->metaObject()->className()) == opens);
        QVERIFY(QTest::qWaitForWindowExposed(first));
        clickThroughWindowSystem(&window, started.button(u"hlp.ico"_qs)); // blocked by the modal window
        QVERIFY(started.fakes.launcher.documents.isEmpty());
        first->close();
        QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(QApplication::activeModalWidget() == first && first->isVisible()); // created once, reused
        first->close();
    }

    // The menus in their order; the picture shown; without pictures the start-up goes on; closing
    // the main window ends the program.
    void startUp()
    {
        Started with(true);
        QStringList captions;
        for (QAction *action : with.window.menuBar()->actions())
            captions.append(action->text() + (action->menu() ? QString::number(action->menu()->actions().size()) : QString()));
        QCOMPARE(captions, (QStringList{u"   Archiver2"_qs, u"              Rechercher2"_qs, u"      Extensions "_qs,
                                        u"Dossiers d'archivage"_qs, u"Thèmes"_qs, u"Affichage"_qs, u"            Aide"_qs}));
        QVERIFY(!child<QLabel>(&with.window, u"picture"_qs)->pixmap().isNull());
        Started without(false);
        QCOMPARE(without.data.archiveFolders().size(), 5);
        QCOMPARE(without.window.storedPath(), without.dir.path() + u"/"_qs);
        QCOMPARE(QDir::currentPath(), QDir(without.dir.path()).canonicalPath());
        without.window.show();
        QTimer::singleShot(0, &without.window, &QWidget::close);
        QTimer::singleShot(5000, &without.window, [] { QCoreApplication::exit(1); }); // fail-safe
        QCOMPARE(QApplication::exec(), 0);
    }

    void picturesButtonOpensTheViewerOnTheFoundFiles()
    {
        Started started(false);
        QTemporaryDir disc;
        TestSupport::writeFile(disc.filePath(u"img/zebre.gif"_qs), "GIF89a");
        started.fakes.drives.list = {{u"d:"_qs, DriveType::CdRom, disc.path()}};
        ArchiveFile::write(started.data.folderPath(u"Divers"_qs), u"PCFUN75"_qs, {"d:\\IMG\\ZEBRE.GIF"});
        TableFile::write(started.data.file(u"extens.txt"_qs), {u"GIF         &1/usr/bin/viewer"_qs});
        started.window.show();
        started.window.openSearch();
        auto *search = child<SearchForm>(&started.window, QString());
        child<QListWidget>(search, u"archives"_qs)->setCurrentRow(0);
        child<QListWidget>(search, u"extensions"_qs)->setCurrentRow(0);
        QSignalSpy finished(search, &SearchForm::searchFinished);
        search->searchByExtension();
        QVERIFY(finished.wait(5000));
        QTest::mouseClick(child<QPushButton>(search, u"Fichiers Images BMP, GIF, JPG ou WMF"_qs), Qt::LeftButton);
        auto *viewer = search->findChild<ImageViewerForm *>();
        QVERIFY(viewer && QTest::qWaitForWindowExposed(viewer));
        // Modal, and kept by the window manager over the search window, whatever boxes come and go.
        QVERIFY(QApplication::activeModalWidget() == viewer && viewer->windowHandle()->transientParent() == search->windowHandle()
                && started.fakes.dialogs.messages().isEmpty());
    }
};

QTEST_MAIN(tst_MainForm)
#include "tst_mainform.moc"
