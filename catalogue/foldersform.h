#pragma once

#include "maintenanceform.h"

class QLabel;
class QLineEdit;
class QPushButton;

// "Kalvex Dossiers": the archive folders with their count; adds a folder named in lower case,
// removes an empty one after a question, and prints the list.
class FoldersForm : public MaintenanceForm
{
    Q_OBJECT

public:
    FoldersForm(const DataDirectory &data, Dialogs &dialogs, Printer &printer, PictureLoader &pictures,
                const Clock &clock, QWidget *parent = nullptr);

    void addFolder();
    void removeFolder();

protected:
    void load() override;

private:
    void folderClicked();
    void refill(const QString &countText);
    void afterChange();

    QListWidget *m_folders = nullptr;
    QLabel *m_count = nullptr;
    QLabel *m_selectedFolder = nullptr;
    QLineEdit *m_name = nullptr;
    QPushButton *m_add = nullptr;
    QPushButton *m_remove = nullptr;
};
