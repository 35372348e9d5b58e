#pragma once

#include "formsupport.h"

class Clock;
class DataDirectory;
class Dialogs;
class Printer;
class PictureLoader;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QToolButton;

// "Kalvex Dossiers": the archive folders with their count; adds a folder named in lower case,
// removes an empty one after a question, and prints the list.
class FoldersForm : public Form
{
    Q_OBJECT

public:
    FoldersForm(const DataDirectory &data, Dialogs &dialogs, Printer &printer, PictureLoader &pictures,
                const Clock &clock, QWidget *parent = nullptr);

    void addFolder();
    void removeFolder();
    void print();

protected:
    void load() override;

private:
    void folderClicked();
    void refill(const QString &countText);
    void afterChange();

    const DataDirectory &m_data;
    Dialogs &m_dialogs;
    Printer &m_printer;
    PictureLoader &m_pictures;
    const Clock &m_clock;

    QListWidget *m_folders = nullptr;
    QLabel *m_count = nullptr;
    QLabel *m_selectedFolder = nullptr;
    QLineEdit *m_name = nullptr;
    QPushButton *m_add = nullptr;
    QPushButton *m_remove = nullptr;
    QToolButton *m_print = nullptr;
};
