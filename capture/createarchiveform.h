#pragma once

#include "formsupport.h"
#include "imagefolder.h"

#include <QElapsedTimer>
#include <QString>
#include <memory>
#include <optional>

class ArchiveWriter;
class Clock;
class DataDirectory;
class Dialogs;
class DirectoryLister;
class DriveChooser;
class Drives;
class FileFinder;
class FolderPicker;
class ImageDirectoryLister;
class ImageDrive;
class FoundListModel;
class PictureLoader;
class Printer;
class QLabel;
class QLineEdit;
class QListView;
class QListWidget;
class QProgressBar;
class QTimer;
class QToolButton;
class WalkThread;

// The window that catalogues one medium: choose the drive, name the archive, choose the archive
// folder, and the create button walks the whole medium and writes NAME.lst into that folder.
// The walk runs on a worker thread; a 5 ms timer moves what it found into the list in batches.
// A scan whose medium went away, or during which the window was closed, writes nothing.
class CreateArchiveForm : public Form
{
    Q_OBJECT

public:
    CreateArchiveForm(const DataDirectory &data, Drives &drives, DirectoryLister &lister, Dialogs &dialogs,
                      Printer &printer, PictureLoader &pictures, const Clock &clock, QWidget *parent = nullptr);
    // With a picker, the window also catalogues a disc image file chosen beside the drive chooser.
    CreateArchiveForm(const DataDirectory &data, Drives &drives, DirectoryLister &lister, Dialogs &dialogs,
                      FolderPicker &picker, Printer &printer, PictureLoader &pictures, const Clock &clock,
                      QWidget *parent = nullptr);
    ~CreateArchiveForm() override;

    bool isScanning() const;

signals:
    // The scan of a create press is over (an archive written or not); for a folder of images, the
    // scan of each image.
    void scanFinished();
    // A folder of images is done, its summary shown.
    void imagesFinished();

protected:
    void load() override;
    // Closing the window during a scan stops it: no archive is written.
    void hideEvent(QHideEvent *event) override;

private:
    CreateArchiveForm(const DataDirectory &data, Drives &drives, DirectoryLister &lister, Dialogs &dialogs,
                      FolderPicker *picker, Printer &printer, PictureLoader &pictures, const Clock &clock,
                      QWidget *parent);
    void buildControls();
    void chooseFolder(int row);
    void showArchives();
    void selectFirstCdRom();
    void create();
    void chooseImage();
    void chooseImageFolder();
    void nextImage();
    void scan(const QString &drive);
    void startWalk(const QString &drive, const QString &archiveName);
    void walkImage(const QString &imagePath, const QString &archiveName);
    void refreshFound();
    void finishScan();
    bool writeArchive();
    void noteSource(const QString &folder, const QString &archiveName);
    void print();
    void setCounter(int count);

    const DataDirectory &m_data;
    Drives &m_drives;
    DirectoryLister &m_lister;
    Dialogs &m_dialogs;
    Printer &m_printer;
    PictureLoader &m_pictures;
    const Clock &m_clock;
    FolderPicker *m_picker = nullptr;
    // A chosen image stands as a drive of its own, read by its own lister.
    std::unique_ptr<ImageDrive> m_imageDrive;
    std::unique_ptr<ImageDirectoryLister> m_imageLister;
    QString m_firstCdRom = QStringLiteral("d:"); // the drive an image of a disc is catalogued as
    QString m_walkedImage; // the image the walk reads; empty for a drive

    QLabel *m_driveHint = nullptr;
    DriveChooser *m_driveChooser = nullptr;
    QLineEdit *m_name = nullptr;
    QListWidget *m_folders = nullptr;
    QListWidget *m_archives = nullptr;
    QListView *m_found = nullptr;
    FoundListModel *m_foundModel = nullptr;
    QLabel *m_counter = nullptr;
    QLabel *m_endNotice = nullptr;
    QToolButton *m_createButton = nullptr;
    QToolButton *m_imageButton = nullptr;
    QToolButton *m_imageFolderButton = nullptr;
    QProgressBar *m_imageProgress = nullptr;
    QToolButton *m_cancelImages = nullptr;
    // A folder of images being catalogued one after the other.
    struct Batch
    {
        QList<ImageFolder::Image> images;
        QStringList skipped;
        QList<ImageFolder::Result> results;
        bool cancelled = false; // stops after the current image
    };
    std::optional<Batch> m_batch;
    QToolButton *m_printButton = nullptr;
    QTimer *m_refreshTimer = nullptr;

    QString m_currentFolder; // full path of the archive folder the archive goes into
    int m_countShown = 0; // the count on the counter
    QElapsedTimer m_listRefreshed;
    // The archive being written during a scan, into the folder chosen when it began.
    std::unique_ptr<ArchiveWriter> m_archive;
    QString m_archiveFolder;
    int m_entriesWritten = 0;
    bool m_scanAbandoned = false; // the window was closed during the scan
    bool m_busyCursor = false;
    // The walk thread and the found list use the finder: the thread is declared after it so
    // that it ends first; the list only reads the finder while the window shows it.
    std::unique_ptr<FileFinder> m_finder;
    std::unique_ptr<WalkThread> m_walk;
};
