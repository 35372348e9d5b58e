#pragma once

#include "formsupport.h"

class Clock;
class DataDirectory;
class Dialogs;
class Printer;
class PictureLoader;
class QLabel;
class QListWidget;
class QPushButton;
class QToolButton;

// "Renommer ou supprimer un fichier d'archives": the archive folders, the archives (*.lst) of the
// current folder and their count; deletes or renames the selected archive after a question, and
// prints the archive names. When the window opens, the first archive folder is current.
class ArchiveListForm : public Form
{
    Q_OBJECT

public:
    ArchiveListForm(const DataDirectory &data, Dialogs &dialogs, Printer &printer, PictureLoader &pictures,
                    const Clock &clock, QWidget *parent = nullptr);

    void deleteSelected();
    void renameSelected();
    void print();

protected:
    void load() override;

private:
    void folderClicked();
    void archiveClicked();
    void refillArchives(const QString &countText);

    const DataDirectory &m_data;
    Dialogs &m_dialogs;
    Printer &m_printer;
    PictureLoader &m_pictures;
    const Clock &m_clock;

    QListWidget *m_folders = nullptr;
    QListWidget *m_archives = nullptr;
    QLabel *m_currentFolder = nullptr;
    QLabel *m_selectedFile = nullptr;
    QLabel *m_index = nullptr;
    QLabel *m_count = nullptr;
    QPushButton *m_delete = nullptr;
    QPushButton *m_rename = nullptr;
    QToolButton *m_print = nullptr;
};
