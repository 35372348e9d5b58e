#pragma once

#include "formsupport.h"
#include "linetable.h"

#include <QList>

class Clock;
class QAbstractItemModel;
class DataDirectory;
class Dialogs;
class Drives;
class PictureLoader;
class Printer;
class QComboBox;
class QFileSystemModel;
class QLabel;
class QLineEdit;
class QListView;
class QListWidget;
class QPushButton;
class QStringListModel;
class QToolButton;
class QTreeView;
struct Drive;

// "Kalvex2 Extensions": edits extens.txt. The user types an extension, picks its class and the
// program that opens it (drive, directory tree, program files), and adds or removes lines.
class ExtensionsForm : public Form
{
    Q_OBJECT

public:
    ExtensionsForm(const DataDirectory &data, Drives &drives, Dialogs &dialogs, Printer &printer,
                   PictureLoader &pictures, const Clock &clock, QWidget *parent = nullptr);
    ~ExtensionsForm() override;

protected:
    void load() override;
    void changeEvent(QEvent *event) override;

private:
    QWidget *buildTablePane();
    QWidget *buildClassPane();
    QWidget *buildProgramPane();
    void showTable();
    void chooseEntry(int row);
    void chooseClass(int row);
    void chooseDrive(int index);
    void showDirectoryModel(QAbstractItemModel *model);
    void chooseDirectory(const QString &directory);
    void chooseProgramFile(const QString &fileName);
    void add();
    void remove();
    void print();

    const DataDirectory &m_data;
    Drives &m_drives;
    Dialogs &m_dialogs;
    Printer &m_printer;
    PictureLoader &m_pictures;
    const Clock &m_clock;

    LineTable m_table;
    int m_classCode = 0; // 0 until a class is chosen
    QString m_program;   // empty until a program is chosen
    QString m_directory; // the directory the program files are listed from
    QList<Drive> m_driveList;
    bool m_revealPending = false; // the data directory is to be scrolled into view

    QListWidget *m_entries = nullptr;
    QLabel *m_count = nullptr;
    QLabel *m_selectedEntry = nullptr;
    QLineEdit *m_newExtension = nullptr;
    QListWidget *m_classes = nullptr;
    QLabel *m_chosenClass = nullptr;
    QComboBox *m_driveChooser = nullptr;
    QFileSystemModel *m_directoryModel = nullptr;
    QAbstractItemModel *m_noDirectories = nullptr;
    QTreeView *m_directoryTree = nullptr;
    QLabel *m_currentDirectory = nullptr;
    QStringListModel *m_programModel = nullptr;
    QListView *m_programFiles = nullptr;
    QLabel *m_chosenProgram = nullptr;
    QPushButton *m_add = nullptr;
    QPushButton *m_remove = nullptr;
    QToolButton *m_print = nullptr;
};
