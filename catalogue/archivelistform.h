#pragma once

#include "maintenanceform.h"

class QLabel;
class QPushButton;

// "Renommer ou supprimer un fichier d'archives": the archive folders, the archives (*.lst) of the
// current folder and their count; deletes or renames the selected archive after a question, and
// prints the archive names. When the window opens, the first archive folder is current.
class ArchiveListForm : public MaintenanceForm
{
    Q_OBJECT

public:
    ArchiveListForm(const DataDirectory &data, Dialogs &dialogs, Printer &printer, PictureLoader &pictures,
                    const Clock &clock, QWidget *parent = nullptr);

    void deleteSelected();
    void renameSelected();

protected:
    void load() override;

private:
    void folderClicked();
    void archiveClicked();
    void refillArchives(const QString &countText);

    QListWidget *m_folders = nullptr;
    QListWidget *m_archives = nullptr;
    QLabel *m_currentFolder = nullptr;
    QLabel *m_selectedFile = nullptr;
    QLabel *m_index = nullptr;
    QLabel *m_count = nullptr;
    QPushButton *m_delete = nullptr;
    QPushButton *m_rename = nullptr;
};
