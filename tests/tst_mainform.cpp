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
    const QPoint centre = button->mapTo(topLevel, button->rect().center());
    QTest::mouseClick(topLevel->windowHandle(), Qt::LeftButton, {}, centre);
    QCoreApplication::processEvents();
}

// A main window started on a fresh data directory, with or without the program's pictures.
struct Started
{
    explicit Started(bool withPictures)
        : pictures(withPictures && copyPictures(dir.path()))
    {
    }
    static bool copyPictures(const QString &directory)
    {
        TestSupport::copyProgramFiles(directory);
        return true;
    }
    bool shown()
    {
        window.show();
        return QTest::qWaitForWindowExposed(&window);
    }
    QToolButton *button(const char *icon) { return child<QToolButton>(&window, QLatin1String(icon)); }

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
    // The picture buttons (named by their icon) with their hints; the menus in their order.
    void controls_data()
    {
        QTest::addColumn<QString>("icon");
        QTest::addColumn<QString>("hint");
        QTest::newRow("create") << u"file005.ico"_qs << u"Créer un fichier d'archives"_qs;
        QTest::newRow("delete") << u"cross003.ico"_qs << u"Supprimer un fichier d'archives"_qs;
        QTest::newRow("search") << u"binoculr.ico"_qs << u"Rechercher un fichier"_qs;
        QTest::newRow("theme search") << u"crdfle10.ico"_qs << u"Rechercher par thème"_qs;
        QTest::newRow("folders") << u"foldrs01.ico"_qs << u"Ajouter/supprimer un dossier d'archivage"_qs;
        QTest::newRow("extensions") << u"words003.ico"_qs << u"Ajouter/supprimer une extension"_qs;
        QTest::newRow("themes") << u"note14.ico"_qs << u"Ajouter/supprimer un thème"_qs;
        QTest::newRow("help") << u"hlp.ico"_qs << u"Rechercher une aide"_qs;
        QTest::newRow("display") << u"Gtico000.ico"_qs << QString();
    }
    void controls()
    {
        QFETCH(QString, icon);
        QFETCH(QString, hint);
        Started started(true);
        auto *button = child<QToolButton>(&started.window, icon);
        QCOMPARE(button->toolTip(), hint);
        QCOMPARE(button->accessibleName(), hint.isEmpty() ? u"Affichage"_qs : hint);
        QVERIFY(started.fakes.pictures.icons.contains(started.dir.filePath(icon)));
        QVERIFY(!button->icon().isNull());
        QVERIFY(!child<QLabel>(&started.window, u"picture"_qs)->pixmap().isNull());

        QStringList captions;
        for (QAction *action : started.window.menuBar()->actions())
            captions.append(action->text() + (action->menu() ? QString::number(action->menu()->actions().size()) : QString()));
        QCOMPARE(captions, (QStringList{u"   Archiver2"_qs, u"              Rechercher2"_qs, u"      Extensions "_qs,
                                        u"Dossiers d'archivage"_qs, u"Thèmes"_qs, u"Affichage"_qs, u"            Aide"_qs}));
    }

    void startUpWithoutPicturesStillCreatesTheFolders()
    {
        Started started(false);
        QCOMPARE(started.data.archiveFolders().size(), 5);
        QCOMPARE(started.window.storedPath(), started.dir.path() + u"/"_qs);
        QCOMPARE(QDir::currentPath(), QDir(started.dir.path()).canonicalPath());
        QVERIFY(started.button("hlp.ico")->icon().isNull());
    }

    void helpAndDisplaySettingsFromMenuAndButtons()
    {
        Started started(true);
        QVERIFY(started.shown());
        clickThroughWindowSystem(&started.window, started.button("hlp.ico"));
        TestSupport::menuAction(started.window.menuBar(), u"            Aide"_qs)->trigger();
        QCOMPARE(started.fakes.launcher.documents, QStringList(2, started.dir.filePath(u"kalvex2.htm"_qs)));
        QTest::mouseClick(started.button("Gtico000.ico"), Qt::LeftButton);
        TestSupport::menuAction(started.window.menuBar(), u"Affichage"_qs)->trigger();
        QCOMPARE(started.fakes.launcher.displaySettings, 2);
        QVERIFY(started.fakes.dialogs.shown.isEmpty());
    }

    void everyWindowOpensFromMenuAndButtonAsOneModalWindow_data()
    {
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("icon");
        QTest::addColumn<QString>("form");
        QTest::newRow("create") << u"Créer un fichier d'archives"_qs << u"file005.ico"_qs << u"CreateArchiveForm"_qs;
        QTest::newRow("archive list") << u"Supprimer un fichier d'archives"_qs << u"cross003.ico"_qs << u"ArchiveListForm"_qs;
        QTest::newRow("search") << u"Recherche d'un fichier"_qs << u"binoculr.ico"_qs << u"SearchForm"_qs;
        QTest::newRow("theme search") << u"Recherche par thème"_qs << u"crdfle10.ico"_qs << u"ThemeSearchForm"_qs;
        QTest::newRow("folders") << u"Dossiers d'archivage"_qs << u"foldrs01.ico"_qs << u"FoldersForm"_qs;
        QTest::newRow("extensions") << u"      Extensions "_qs << u"words003.ico"_qs << u"ExtensionsForm"_qs;
        QTest::newRow("themes") << u"Thèmes"_qs << u"note14.ico"_qs << u"ThemesForm"_qs;
    }
    void everyWindowOpensFromMenuAndButtonAsOneModalWindow()
    {
        QFETCH(QString, caption);
        QFETCH(QString, icon);
        QFETCH(QString, form);
        Started started(false);
        QVERIFY(started.shown());
        MainForm &window = started.window;
        const auto opened = [&]() -> QWidget * {
            for (QWidget *widget : window.findChildren<QWidget *>()) {
                if (widget->isWindow() && QLatin1String(widget->metaObject()->className()) == form)
                    return widget;
            }
            return nullptr;
        };
        TestSupport::menuAction(window.menuBar(), caption)->trigger();
        QWidget *first = opened();
        QVERIFY(first && first->isVisible());
        QVERIFY(QTest::qWaitForWindowExposed(first));
        QCOMPARE(QApplication::activeModalWidget(), first);
        // The main window does not react while the other one is open.
        clickThroughWindowSystem(&window, started.button("hlp.ico"));
        QVERIFY(started.fakes.launcher.documents.isEmpty());
        first->close();
        QTest::mouseClick(child<QToolButton>(&window, icon), Qt::LeftButton);
        QCOMPARE(opened(), first); // created once, reused
        QVERIFY(first->isVisible());
        first->close();
    }

    void picturesButtonOpensTheViewerOnTheFoundFiles()
    {
        Started started(false);
        QTemporaryDir disc;
        QDir(disc.path()).mkpath(u"img"_qs);
        TestSupport::writeFile(disc.filePath(u"img/zebre.gif"_qs), "GIF89a");
        started.fakes.drives.list = {{u"d:"_qs, DriveType::CdRom, disc.path()}};
        ArchiveFile::write(started.data.folderPath(u"Divers"_qs), u"PCFUN75"_qs, {"d:\\IMG\\ZEBRE.GIF"});
        TableFile::write(started.data.file(u"extens.txt"_qs), {u"GIF         &1/usr/bin/viewer"_qs});
        QVERIFY(started.shown());
        started.window.openSearch();
        auto *search = started.window.findChild<SearchForm *>();
        QVERIFY(search);
        child<QListWidget>(search, u"archives"_qs)->setCurrentRow(0);
        child<QListWidget>(search, u"extensions"_qs)->setCurrentRow(0);
        QSignalSpy finished(search, &SearchForm::searchFinished);
        search->searchByExtension();
        QVERIFY(finished.wait(5000));
        QTest::mouseClick(child<QPushButton>(search, u"Fichiers Images BMP, GIF, JPG ou WMF"_qs), Qt::LeftButton);
        auto *viewer = search->findChild<ImageViewerForm *>();
        QVERIFY(viewer && viewer->isVisible());
        QVERIFY(QTest::qWaitForWindowExposed(viewer));
        // The window manager keeps it over the search window, whatever boxes come and go.
        QCOMPARE(viewer->windowHandle()->transientParent(), search->windowHandle());
        QVERIFY(started.fakes.dialogs.messages().isEmpty());
    }

    void closingTheMainWindowEndsTheProgram()
    {
        Started started(false);
        started.window.show();
        QTimer::singleShot(0, &started.window, &QWidget::close);
        QTimer::singleShot(5000, &started.window, [] { QCoreApplication::exit(1); }); // fail-safe
        QCOMPARE(QApplication::exec(), 0);
    }
};

QTEST_MAIN(tst_MainForm)
#include "tst_mainform.moc"
