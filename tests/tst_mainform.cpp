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
#include <QWindow>
#include <QToolButton>

namespace {

QList<QToolButton *> pictureButtons(MainForm &window)
{
    QList<QToolButton *> buttons;
    for (QToolButton *button : window.centralWidget()->findChildren<QToolButton *>())
        buttons.append(button);
    std::sort(buttons.begin(), buttons.end(), [](QToolButton *a, QToolButton *b) { return a->x() < b->x(); });
    return buttons;
}

QAction *menuAction(MainForm &window, const QString &caption)
{
    return TestSupport::menuAction(window.menuBar(), caption);
}

// A click as the window system delivers it, so that window modality applies to it.
void clickThroughWindowSystem(QWidget *topLevel, QWidget *button)
{
    const QPoint centre = button->mapTo(topLevel, button->rect().center());
    QTest::mouseClick(topLevel->windowHandle(), Qt::LeftButton, {}, centre); // delivered at once
    QCoreApplication::processEvents(); // and whatever it posted
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
    void menuCaptionsInOrder()
    {
        Started started(false);
        MainForm &window = started.window;
        QStringList captions;
        for (QAction *action : window.menuBar()->actions())
            captions.append(action->text());
        QCOMPARE(captions, (QStringList{u"   Archiver"_qs, u"              Rechercher"_qs, u"      Extensions "_qs,
                                        u"Dossiers d'archivage"_qs, u"Thèmes"_qs, u"Affichage"_qs,
                                        u"            Aide"_qs}));
        const auto items = [&](int index) {
            QStringList texts;
            for (QAction *item : window.menuBar()->actions()[index]->menu()->actions())
                texts.append(item->text());
            return texts;
        };
        QCOMPARE(items(0), (QStringList{u"Créer un fichier d'archives"_qs, u"Supprimer un fichier d'archives"_qs}));
        QCOMPARE(items(1), (QStringList{u"Recherche d'un fichier"_qs, u"Recherche par thème"_qs}));
        for (int i = 2; i < 7; ++i)
            QVERIFY(!window.menuBar()->actions()[i]->menu());
    }

    void pictureButtonsWithIconsAndHints()
    {
        Started started(true);
        QVERIFY(started.shown());
        QTemporaryDir &dir = started.dir;
        FakeServices &fakes = started.fakes;
        MainForm &window = started.window;

        const QList<QToolButton *> buttons = pictureButtons(window);
        QCOMPARE(buttons.size(), 9);
        const QStringList hints = {u"Créer un fichier d'archives"_qs, u"Supprimer un fichier d'archives"_qs,
                                   u"Rechercher un fichier"_qs, u"Rechercher par thème"_qs,
                                   u"Ajouter/supprimer un dossier d'archivage"_qs,
                                   u"Ajouter/supprimer une extension"_qs, u"Ajouter/supprimer un thème"_qs,
                                   u"Rechercher une aide"_qs, QString()};
        const QStringList icons = {u"file005.ico"_qs, u"cross003.ico"_qs, u"binoculr.ico"_qs, u"crdfle10.ico"_qs,
                                   u"foldrs01.ico"_qs, u"words003.ico"_qs, u"note14.ico"_qs, u"hlp.ico"_qs,
                                   u"Gtico000.ico"_qs};
        for (int i = 0; i < 9; ++i) {
            QCOMPARE(buttons[i]->toolTip(), hints[i]);
            QVERIFY(!buttons[i]->accessibleName().isEmpty());
            if (!hints[i].isEmpty())
                QCOMPARE(buttons[i]->accessibleName(), hints[i]);
            QCOMPARE(fakes.pictures.icons[i], dir.filePath(icons[i]));
            QVERIFY2(!buttons[i]->icon().isNull(), qPrintable(icons[i]));
        }
        QCOMPARE(fakes.pictures.pictures, QStringList{dir.filePath(u"kalvex.jpg"_qs)});
        QVERIFY(!window.findChild<QLabel *>(u"picture"_qs)->pixmap().isNull());
    }

    void startUpWithoutPicturesStillCreatesTheFolders()
    {
        Started started(false);
        QTemporaryDir &dir = started.dir;
        const DataDirectory &data = started.data;
        MainForm &window = started.window;
        QCOMPARE(data.archiveFolders().size(), 5);
        QCOMPARE(window.storedPath(), dir.path() + u"/"_qs);
        QCOMPARE(QDir::currentPath(), QDir(dir.path()).canonicalPath());
        QVERIFY(window.findChild<QLabel *>(u"picture"_qs)->pixmap().isNull());
        for (QToolButton *button : pictureButtons(window))
            QVERIFY(button->icon().isNull());
    }

    void helpAndDisplaySettingsFromMenuAndButtons()
    {
        Started started(true);
        QVERIFY(started.shown());
        QTemporaryDir &dir = started.dir;
        FakeServices &fakes = started.fakes;
        MainForm &window = started.window;
        const QList<QToolButton *> buttons = pictureButtons(window);

        clickThroughWindowSystem(&window, buttons[7]);
        menuAction(window, u"            Aide"_qs)->trigger();
        QCOMPARE(fakes.launcher.documents, QStringList(2, dir.filePath(u"kalvex2.htm"_qs)));

        QTest::mouseClick(buttons[8], Qt::LeftButton);
        menuAction(window, u"Affichage"_qs)->trigger();
        QCOMPARE(fakes.launcher.displaySettings, 2);
        QVERIFY(fakes.dialogs.shown.isEmpty());
    }

    void everyWindowOpensFromMenuAndButtonAsOneModalWindow_data()
    {
        QTest::addColumn<QString>("caption");
        QTest::addColumn<int>("button");
        QTest::addColumn<QString>("form");
        QTest::newRow("create") << u"Créer un fichier d'archives"_qs << 0 << u"CreateArchiveForm"_qs;
        QTest::newRow("archive list") << u"Supprimer un fichier d'archives"_qs << 1 << u"ArchiveListForm"_qs;
        QTest::newRow("search") << u"Recherche d'un fichier"_qs << 2 << u"SearchForm"_qs;
        QTest::newRow("theme search") << u"Recherche par thème"_qs << 3 << u"ThemeSearchForm"_qs;
        QTest::newRow("folders") << u"Dossiers d'archivage"_qs << 4 << u"FoldersForm"_qs;
        QTest::newRow("extensions") << u"      Extensions "_qs << 5 << u"ExtensionsForm"_qs;
        QTest::newRow("themes") << u"Thèmes"_qs << 6 << u"ThemesForm"_qs;
    }

    void everyWindowOpensFromMenuAndButtonAsOneModalWindow()
    {
        QFETCH(QString, caption);
        QFETCH(int, button);
        QFETCH(QString, form);
        Started started(false);
        QVERIFY(started.shown());
        FakeServices &fakes = started.fakes;
        MainForm &window = started.window;
        const QList<QToolButton *> buttons = pictureButtons(window);
        const auto opened = [&]() -> QWidget * {
            for (QWidget *child : window.findChildren<QWidget *>()) {
                if (child->isWindow() && QLatin1String(child->metaObject()->className()) == form)
                    return child;
            }
            return nullptr;
        };

        menuAction(window, caption)->trigger();
        QWidget *first = opened();
        QVERIFY(first && first->isVisible());
        QCOMPARE(first->windowModality(), Qt::ApplicationModal);
        QVERIFY(QTest::qWaitForWindowExposed(first));
        QCOMPARE(QApplication::activeModalWidget(), first);
        // The main window does not react while the other one is open.
        clickThroughWindowSystem(&window, buttons[7]);
        QVERIFY(fakes.launcher.documents.isEmpty());
        first->close();

        QTest::mouseClick(buttons[button], Qt::LeftButton);
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
        search->findChild<QListWidget *>(u"archives"_qs)->setCurrentRow(0);
        search->findChild<QListWidget *>(u"extensions"_qs)->setCurrentRow(0);
        QSignalSpy finished(search, &SearchForm::searchFinished);
        search->searchByExtension();
        QVERIFY(finished.wait(5000));

        QTest::mouseClick(search->findChild<QPushButton *>(u"Fichiers Images BMP, GIF, JPG ou WMF"_qs), Qt::LeftButton);
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
        MainForm &window = started.window;
        window.show();
        QTimer::singleShot(0, &window, &QWidget::close);
        QTimer failSafe;
        failSafe.setSingleShot(true);
        bool timedOut = false;
        connect(&failSafe, &QTimer::timeout, &window, [&] { timedOut = true; QCoreApplication::exit(1); });
        failSafe.start(5000);
        QCOMPARE(QApplication::exec(), 0);
        QVERIFY(!timedOut);
    }
};

QTEST_MAIN(tst_MainForm)
#include "tst_mainform.moc"
