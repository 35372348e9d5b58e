#include "mainform.h"

#include "archivelistform.h"
#include "createarchiveform.h"
#include "datadirectory.h"
#include "extensionsform.h"
#include "foldersform.h"
#include "imagefiles.h"
#include "formsupport.h"
#include "launcher.h"
#include "pictureloader.h"
#include "themesform.h"
#include "searchfoundfiles.h"
#include "searchform.h"
#include "themesearchform.h"
#include "viewerwindows.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QToolButton>
#include <QVBoxLayout>

MainForm::MainForm(const DataDirectory &data, const PlatformServices &services, QWidget *parent)
    : QMainWindow(parent)
    , m_data(data)
    , m_services(services)
    , m_imageFiles(std::make_unique<ImageFiles>(data))
{
    setWindowTitle(QStringLiteral("Kalvex2"));
    setObjectName(QStringLiteral("MainForm"));

    auto *central = new QWidget(this);
    auto *layout = new QVBoxLayout(central);
    auto *buttonRow = new QWidget(central);
    buildButtons(buttonRow);
    layout->addWidget(buttonRow);

    m_picture = new QLabel(central);
    m_picture->setObjectName(QStringLiteral("picture"));
    m_picture->setAlignment(Qt::AlignCenter);
    m_picture->setAccessibleName(QStringLiteral("Kalvex2"));
    m_picture->setMinimumSize(480, 320);
    layout->addWidget(m_picture, 1);

    m_storedPath = makeTextLabel(QStringLiteral("storedPath"), central);
    layout->addWidget(m_storedPath);
    setCentralWidget(central);

    buildMenus();
    // Wide enough for every command of the menu bar to show.
    setMinimumWidth(menuBar()->sizeHint().width() + 24);
    startUp();
}

MainForm::~MainForm() = default;

void MainForm::buildMenus()
{
    QMenuBar *bar = menuBar();
    QMenu *archive = bar->addMenu(QStringLiteral("   Archiver"));
    connect(archive->addAction(QStringLiteral("Créer un fichier d'archives")), &QAction::triggered, this,
            &MainForm::openCreateArchive);
    connect(archive->addAction(QStringLiteral("Supprimer un fichier d'archives")), &QAction::triggered,
            this, &MainForm::openArchiveList);

    QMenu *search = bar->addMenu(QStringLiteral("              Rechercher"));
    connect(search->addAction(QStringLiteral("Recherche d'un fichier")), &QAction::triggered, this,
            &MainForm::openSearch);
    connect(search->addAction(QStringLiteral("Recherche par thème")), &QAction::triggered, this,
            &MainForm::openThemeSearch);

    const QList<QPair<QString, void (MainForm::*)()>> commands = {
        {QStringLiteral("      Extensions "), &MainForm::openExtensions},
        {QStringLiteral("Dossiers d'archivage"), &MainForm::openFolders},
        {QStringLiteral("Thèmes"), &MainForm::openThemes},
        {QStringLiteral("Affichage"), &MainForm::openDisplaySettings},
        {QStringLiteral("            Aide"), &MainForm::openHelp},
    };
    for (const auto &[caption, run] : commands)
        connect(bar->addAction(caption), &QAction::triggered, this, run);
}

void MainForm::buildButtons(QWidget *row)
{
    const QList<Command> commands = {
        {QStringLiteral("file005.ico"), QStringLiteral("Créer un fichier d'archives"), &MainForm::openCreateArchive},
        {QStringLiteral("cross003.ico"), QStringLiteral("Supprimer un fichier d'archives"), &MainForm::openArchiveList},
        {QStringLiteral("binoculr.ico"), QStringLiteral("Rechercher un fichier"), &MainForm::openSearch},
        {QStringLiteral("crdfle10.ico"), QStringLiteral("Rechercher par thème"), &MainForm::openThemeSearch},
        {QStringLiteral("foldrs01.ico"), QStringLiteral("Ajouter/supprimer un dossier d'archivage"), &MainForm::openFolders},
        {QStringLiteral("words003.ico"), QStringLiteral("Ajouter/supprimer une extension"), &MainForm::openExtensions},
        {QStringLiteral("note14.ico"), QStringLiteral("Ajouter/supprimer un thème"), &MainForm::openThemes},
        {QStringLiteral("hlp.ico"), QStringLiteral("Rechercher une aide"), &MainForm::openHelp},
        {QStringLiteral("Gtico000.ico"), QString(), &MainForm::openDisplaySettings},
    };
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    for (const Command &command : commands) {
        // The display settings button has no hint; screen readers get the menu's caption.
        QToolButton *button = makePictureButton(command.hint, row, QStringLiteral("Affichage"));
        button->setObjectName(command.icon);
        button->setProperty("iconFile", command.icon);
        connect(button, &QToolButton::clicked, this, command.run);
        layout->addWidget(button);
        m_buttons.append(button);
    }
    layout->addStretch(1);
}

void MainForm::startUp()
{
    // Every step may fail (a missing picture, a read-only directory): the next one runs all the same.
    m_data.makeCurrent();
    const QImage picture = m_services.pictures.loadPicture(m_data.file(QStringLiteral("kalvex.jpg")));
    if (!picture.isNull())
        m_picture->setPixmap(QPixmap::fromImage(picture));
    for (QToolButton *button : std::as_const(m_buttons)) {
        const QString file = button->property("iconFile").toString();
        button->setIcon(m_services.pictures.loadIcon(m_data.file(file)));
    }
    m_storedPath->setText(m_data.storedPath());
    m_data.startUp();
    m_storedPath->setText(m_data.storedPath());
}

QString MainForm::storedPath() const
{
    return m_storedPath->text();
}

void MainForm::showModal(QWidget *window)
{
    window->setWindowModality(Qt::ApplicationModal);
    window->show();
    window->raise();
    window->activateWindow();
}

void MainForm::openCreateArchive()
{
    if (!m_createArchive)
        m_createArchive = new CreateArchiveForm(m_data, m_services.drives, m_services.directoryLister,
                                                m_services.dialogs, m_services.folderPicker, m_services.printer,
                                                m_services.pictures, m_services.clock, this);
    showModal(m_createArchive);
}

void MainForm::openArchiveList()
{
    if (!m_archiveList)
        m_archiveList = new ArchiveListForm(m_data, m_services.dialogs, m_services.printer, m_services.pictures,
                                            m_services.clock, this);
    showModal(m_archiveList);
}

void MainForm::openSearch()
{
    if (!m_search) {
        m_search = new SearchForm(m_data,
                                  {m_services.launcher, m_services.drives, m_services.dialogs, m_services.folderPicker,
                                   m_services.pictures, m_services.media, m_imageFiles.get()},
                                  m_services.printer, m_services.clock, this);
        m_foundFiles = std::make_unique<SearchFoundFiles>(m_search->results(), m_services.drives,
                                                          m_imageFiles.get());
        m_viewers = std::make_unique<ViewerWindows>(
            *m_foundFiles,
            ViewerForm::Services{m_data, m_services.clock, m_services.dialogs, m_services.folderPicker,
                                 m_services.pictures},
            m_services.printer, m_search);
        connect(m_search, &SearchForm::picturesViewerRequested, this, [this] { m_viewers->showPictures(); });
        connect(m_search, &SearchForm::textsViewerRequested, this, [this] { m_viewers->showTexts(); });
        connect(m_search, &SearchForm::iconsViewerRequested, this, [this] { m_viewers->showIcons(); });
    }
    showModal(m_search);
}

void MainForm::openThemeSearch()
{
    if (!m_themeSearch)
        m_themeSearch = new ThemeSearchForm(m_data,
                                            {m_services.launcher, m_services.drives, m_services.dialogs,
                                             m_services.folderPicker, m_services.pictures, m_services.media,
                                             m_imageFiles.get()},
                                            m_services.printer, m_services.clock, this);
    showModal(m_themeSearch);
}

void MainForm::openFolders()
{
    if (!m_folders)
        m_folders = new FoldersForm(m_data, m_services.dialogs, m_services.printer, m_services.pictures,
                                    m_services.clock, this);
    showModal(m_folders);
}

void MainForm::openExtensions()
{
    if (!m_extensions)
        m_extensions = new ExtensionsForm(m_data, m_services.drives, m_services.dialogs, m_services.printer,
                                          m_services.pictures, m_services.clock, this);
    showModal(m_extensions);
}

void MainForm::openThemes()
{
    if (!m_themes)
        m_themes = new ThemesForm(m_data, m_services.dialogs, m_services.printer, m_services.pictures,
                                  m_services.clock, this);
    showModal(m_themes);
}

void MainForm::openDisplaySettings()
{
    m_services.launcher.startDisplaySettings();
}

void MainForm::openHelp()
{
    m_services.launcher.openDocument(m_data.file(QStringLiteral("kalvex2.htm")));
}

void MainForm::closeEvent(QCloseEvent *event)
{
    event->accept();
    QCoreApplication::quit(); // closes every other window with it
}
