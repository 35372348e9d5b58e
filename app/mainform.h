#pragma once

#include "platformservices.h"

#include <QMainWindow>
#include <QPointer>

#include <memory>

class ArchiveListForm;
class CreateArchiveForm;
class DataDirectory;
class ExtensionsForm;
class FoldersForm;
class ImageFiles;
class QLabel;
class QToolButton;
class ThemesForm;
class SearchForm;
class ThemeSearchForm;
class SearchFoundFiles;
class ViewerWindows;

// The program's first window: start-up, the picture, and every command twice, in the menu bar and
// as picture buttons. Each command opens its window modally; closing this window ends the program.
class MainForm : public QMainWindow
{
    Q_OBJECT

public:
    MainForm(const DataDirectory &data, const PlatformServices &services, QWidget *parent = nullptr);
    ~MainForm() override;

    // The stored data directory path, as the label under the picture shows it.
    QString storedPath() const;

    void openCreateArchive();
    void openArchiveList();
    void openSearch();
    void openThemeSearch();
    void openFolders();
    void openExtensions();
    void openThemes();
    void openDisplaySettings();
    void openHelp();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    struct Command
    {
        QString icon;
        QString hint;
        void (MainForm::*run)();
    };

    void buildMenus();
    void buildButtons(QWidget *row);
    void startUp();
    static void showModal(QWidget *window);

    const DataDirectory &m_data;
    PlatformServices m_services;
    QLabel *m_picture = nullptr;
    QLabel *m_storedPath = nullptr;
    QList<QToolButton *> m_buttons;
    QPointer<CreateArchiveForm> m_createArchive;
    QPointer<ExtensionsForm> m_extensions;
    QPointer<ThemesForm> m_themes;
    QPointer<ArchiveListForm> m_archiveList;
    QPointer<FoldersForm> m_folders;
    QPointer<SearchForm> m_search;
    QPointer<ThemeSearchForm> m_themeSearch;
    // Files read out of disc images, in a temporary folder that goes with this window.
    std::unique_ptr<ImageFiles> m_imageFiles;
    // The viewers read the search window's rows; both live as long as this window.
    std::unique_ptr<SearchFoundFiles> m_foundFiles;
    std::unique_ptr<ViewerWindows> m_viewers;
};
