#include "datadirectory.h"
#include "fakeservices.h"
#include "imageviewerform.h"
#include "mainform.h"
#include "searchform.h"
#include "testsupport.h"

#include <QApplication>
#include <QLabel>
#include <QMenuBar>
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
        const QList<QAction *> actions = window.findChildren<QAction *>(); // the menus' and the bar's own
        const auto entry = std::find_if(actions.cbegin(), actions.cend(), [&](QAction *a) { return a->text() == caption; });
        QVERIFY(entry != actions.cend());
        (*entry)->trigger();
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
        without.window.show();
        QTimer::singleShot(0, &without.window, &QWidget::close);
        QTimer::singleShot(5000, &without.window, [] { QCoreApplication::exit(1); }); // fail-safe
        QCOMPARE(QApplication::exec(), 0);
    }

    // The search window's pictures button opens the viewer: modal, and kept by the window manager
    // over the search window, whatever boxes come and go.
    void picturesButtonOpensTheViewerOverTheSearch()
    {
        Started started(false);
        started.window.show();
        started.window.openSearch();
        auto *search = child<SearchForm>(&started.window, QString());
        emit search->picturesViewerRequested();
        auto *viewer = search->findChild<ImageViewerForm *>();
        QVERIFY(viewer && QTest::qWaitForWindowExposed(viewer));
        QVERIFY(QApplication::activeModalWidget() == viewer && viewer->windowHandle()->transientParent() == search->windowHandle());
    }
};

QTEST_MAIN(tst_MainForm)
#include "tst_mainform.moc"
