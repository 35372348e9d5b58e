#pragma once

#include "searchrun.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QWidget>

class DataDirectory;
class QCheckBox;
class QLabel;
class QListWidget;
class QProgressBar;

// The archives a search window reads, as the user picks them: the archive folders under
// "Dossiers d'archivage", the current folder's path, its archives (several may be selected) with
// their count, the select-all switch, whose caption tells its state, and the all-folders switch,
// which also sets the select-all switch.
class ArchivePicker : public QWidget
{
    Q_OBJECT

public:
    // Turns a folder's archives into those a search reads (`selected` empty: every one).
    using Chooser = QList<ArchiveToScan> (*)(const QString &folderPath, const QStringList &fileNames,
                                             const QList<bool> &selected);

    // `selectAllCaption` is the select-all switch's caption until it is first toggled.
    ArchivePicker(const DataDirectory &data, const QString &allFoldersCaption, const QString &selectAllCaption,
                  QWidget *parent = nullptr);

    // Lists the archive folders afresh and makes the first one current.
    void load();

    int selectedArchiveCount() const;
    bool allFolders() const;

    // The archives a search reads: the selected ones of the current folder; with the all-folders
    // switch set, every archive of every folder, folder by folder (kept for showProgress()).
    QList<ArchiveToScan> archivesToSearch(Chooser choose);
    // Shows that `archivesDone` archives of the last archivesToSearch() were read. With every folder
    // searched, the folder being read becomes current and the bar counts its own archives.
    void showProgress(int archivesDone, QProgressBar *bar);

private:
    void setCurrentFolder(int index);
    void setAllSelected(bool selected);

    const DataDirectory &m_data;
    QListWidget *m_folders = nullptr;
    QLabel *m_folderPath = nullptr;
    QListWidget *m_archives = nullptr;
    QLabel *m_archiveCount = nullptr;
    QCheckBox *m_selectAll = nullptr;
    QCheckBox *m_allFolders = nullptr;

    QList<int> m_folderFirstArchive; // all-folders search: the first archive of each folder
    int m_archivesSearched = 0;
    int m_shownFolder = -1;
};
