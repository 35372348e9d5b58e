#pragma once

#include "linetableform.h"

#include <QList>

class DriveChooser;
class Drives;
class QAbstractItemModel;
class QFileSystemModel;
class QLabel;
class QLineEdit;
class QListView;
class QListWidget;
class QStringListModel;
class QTreeView;
struct Drive;

// "Kalvex2 Extensions": edits extens.txt. The user types an extension, picks its class and the
// program that opens it (drive, directory tree, program files), and adds or removes lines.
class ExtensionsForm : public LineTableForm
{
    Q_OBJECT

public:
    ExtensionsForm(const DataDirectory &data, Drives &drives, Dialogs &dialogs, Printer &printer,
                   PictureLoader &pictures, const Clock &clock, QWidget *parent = nullptr);
    ~ExtensionsForm() override;

protected:
    void load() override;
    void changeEvent(QEvent *event) override;
    void add() override;

private:
    QWidget *buildTablePane();
    QWidget *buildClassPane();
    QWidget *buildProgramPane();
    void chooseClass(int row);
    void chooseDrive(int index);
    void showDirectoryModel(QAbstractItemModel *model);
    void chooseDirectory(const QString &directory);
    void chooseProgramFile(const QString &fileName);

    Drives &m_drives;

    int m_classCode = 0; // 0 until a class is chosen
    QString m_program;   // empty until a program is chosen
    QString m_directory; // the directory the program files are listed from
    bool m_revealPending = false; // the data directory is to be scrolled into view

    QLineEdit *m_newExtension = nullptr;
    QListWidget *m_classes = nullptr;
    QLabel *m_chosenClass = nullptr;
    DriveChooser *m_driveChooser = nullptr;
    QFileSystemModel *m_directoryModel = nullptr;
    QAbstractItemModel *m_noDirectories = nullptr;
    QTreeView *m_directoryTree = nullptr;
    QLabel *m_currentDirectory = nullptr;
    QStringListModel *m_programModel = nullptr;
    QListView *m_programFiles = nullptr;
    QLabel *m_chosenProgram = nullptr;
};
