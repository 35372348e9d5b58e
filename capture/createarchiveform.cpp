#include "createarchiveform.h"

#include "archivefile.h"
#include "archivename.h"
#include "archivelists.h"
#include "datadirectory.h"
#include "dialogs.h"
#include "drivechooser.h"
#include "drives.h"
#include "filefinder.h"
#include "folderpicker.h"
#include "foundlistmodel.h"
#include "imagedirectorylister.h"
#include "imagelist.h"
#include "listprintout.h"
#include "walkthread.h"

#include <QApplication>
#include <QDir>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHideEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QProgressBar>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

#include <utility>

namespace {

const QString kDriveHint = QStringLiteral(
    "Choisissez ci-dessous le lecteur où se trouve le support que vous souhaitez archiver : a ,b ,d ,f ,g "
    ",...la lettre du premier lecteur CD-ROM rencontré est : ");
const QString kFound = QStringLiteral(" fichiers trouvés");
const QString kImageHint = QStringLiteral("Choisir une image de disque");
const QString kImageFolderHint = QStringLiteral("Archiver toutes les images de disque d'un dossier");
constexpr int kRefreshMs = 5;
// The found list takes new rows about once a screen frame: each addition lays the list out and
// repaints its rows (a few milliseconds for long paths), which at every tick kept the window's
// thread busy and late for the end of the walk.
constexpr int kListRefreshMs = 20;

// The counter of found entries, whose text changes at every tick of a scan. Sized once for its
// longest text, it repaints without laying the whole window out again.
class CounterLabel final : public QLabel
{
public:
    explicit CounterLabel(QWidget *parent)
        : QLabel(parent)
    {
        setTextInteractionFlags(Qt::TextSelectableByMouse);
        fitLongestText();
    }

protected:
    void changeEvent(QEvent *event) override
    {
        QLabel::changeEvent(event);
        if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
            fitLongestText();
    }

private:
    void fitLongestText()
    {
        QChar widest = u'0';
        for (char16_t digit = u'1'; digit <= u'9'; ++digit) {
            if (fontMetrics().horizontalAdvance(QChar(digit)) > fontMetrics().horizontalAdvance(widest))
                widest = QChar(digit);
        }
        const QString shown = text();
        setMinimumSize(0, 0);
        setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
        setText(QString(QString::number(FileFinder::kMaxEntries).size(), widest) + kFound);
        const QSize longest = sizeHint();
        setText(shown);
        setFixedSize(longest);
    }
};

} // namespace

CreateArchiveForm::CreateArchiveForm(const DataDirectory &data, Drives &drives, DirectoryLister &lister,
                                     Dialogs &dialogs, Printer &printer, PictureLoader &pictures,
                                     const Clock &clock, QWidget *parent)
    : CreateArchiveForm(data, drives, lister, dialogs, nullptr, printer, pictures, clock, parent)
{
}

CreateArchiveForm::CreateArchiveForm(const DataDirectory &data, Drives &drives, DirectoryLister &lister,
                                     Dialogs &dialogs, FolderPicker &picker, Printer &printer,
                                     PictureLoader &pictures, const Clock &clock, QWidget *parent)
    : CreateArchiveForm(data, drives, lister, dialogs, &picker, printer, pictures, clock, parent)
{
}

CreateArchiveForm::CreateArchiveForm(const DataDirectory &data, Drives &drives, DirectoryLister &lister,
                                     Dialogs &dialogs, FolderPicker *picker, Printer &printer,
                                     PictureLoader &pictures, const Clock &clock, QWidget *parent)
    : Form(parent)
    , m_data(data)
    , m_drives(drives)
    , m_lister(lister)
    , m_dialogs(dialogs)
    , m_printer(printer)
    , m_pictures(pictures)
    , m_clock(clock)
    , m_picker(picker)
    , m_imageDrive(std::make_unique<ImageDrive>())
    , m_imageLister(std::make_unique<ImageDirectoryLister>())
{
    setObjectName(QStringLiteral("CreateArchiveForm"));
    setWindowTitle(QStringLiteral("Créer un fichier d'archives"));
    m_finder = std::make_unique<FileFinder>(m_drives, m_lister);
    m_walk = std::make_unique<WalkThread>(*m_finder);
    connect(m_walk.get(), &WalkThread::finished, this, &CreateArchiveForm::finishScan);
    buildControls();
    m_refreshTimer = new QTimer(this);
    m_refreshTimer->setInterval(kRefreshMs);
    connect(m_refreshTimer, &QTimer::timeout, this, &CreateArchiveForm::refreshFound);
}

CreateArchiveForm::~CreateArchiveForm()
{
    m_walk.reset(); // cancels a walk still running and waits for it
    if (m_busyCursor)
        QApplication::restoreOverrideCursor();
}

bool CreateArchiveForm::isScanning() const
{
    return m_walk->isRunning();
}

void CreateArchiveForm::buildControls()
{
    auto *heading = new QLabel(QStringLiteral("Création du fichier d'archives."), this);
    heading->setObjectName(QStringLiteral("heading"));
    QFont headingFont = heading->font();
    headingFont.setBold(true);
    headingFont.setPointSizeF(headingFont.pointSizeF() * 1.4);
    heading->setFont(headingFont);

    m_driveHint = new QLabel(kDriveHint, this);
    m_driveHint->setObjectName(QStringLiteral("driveHint"));
    m_driveHint->setWordWrap(true);
    m_driveChooser = new DriveChooser(m_drives, QStringLiteral("driveChooser"), this);
    m_driveHint->setBuddy(m_driveChooser);
    m_imageButton = makePictureButton(kImageHint, this);
    m_imageButton->setObjectName(QStringLiteral("image"));
    m_imageButton->setVisible(m_picker != nullptr);
    connect(m_imageButton, &QToolButton::clicked, this, &CreateArchiveForm::chooseImage);
    m_imageFolderButton = makePictureButton(kImageFolderHint, this);
    m_imageFolderButton->setObjectName(QStringLiteral("imageFolder"));
    m_imageFolderButton->setVisible(m_picker != nullptr);
    connect(m_imageFolderButton, &QToolButton::clicked, this, &CreateArchiveForm::chooseImageFolder);
    m_imageProgress = new QProgressBar(this);
    m_imageProgress->setObjectName(QStringLiteral("imageProgress"));
    m_imageProgress->setAccessibleName(QStringLiteral("Images archivées"));
    m_imageProgress->setFormat(QStringLiteral("%v / %m images"));
    m_imageProgress->hide();
    m_cancelImages = new QToolButton(this);
    m_cancelImages->setObjectName(QStringLiteral("cancelImages"));
    m_cancelImages->setText(QStringLiteral("Annuler"));
    m_cancelImages->setToolTip(QStringLiteral("Arrêter après l'image en cours"));
    m_cancelImages->hide();
    connect(m_cancelImages, &QToolButton::clicked, this, [this] {
        if (m_batch)
            m_batch->cancelled = true;
    });

    auto *nameLabel = new QLabel(QStringLiteral("Identification du support:nom du fichier d'archives à créer :    "
                                                "(exemples: PCMax, InfoPC2, GenPC65, PCFun7...  )"),
                                 this);
    nameLabel->setObjectName(QStringLiteral("nameLabel"));
    nameLabel->setWordWrap(true);
    m_name = new QLineEdit(this);
    m_name->setObjectName(QStringLiteral("name"));
    m_name->setAccessibleName(QStringLiteral("Nom du fichier d'archives"));
    nameLabel->setBuddy(m_name);
    connect(m_name, &QLineEdit::textChanged, this, [this] { m_endNotice->hide(); });

    auto *foldersLabel = new QLabel(QStringLiteral("Dossiers d'archivage"), this);
    m_folders = new QListWidget(this);
    m_folders->setObjectName(QStringLiteral("folders"));
    m_folders->setAccessibleName(QStringLiteral("Dossiers d'archivage"));
    foldersLabel->setBuddy(m_folders);
    connect(m_folders, &QListWidget::currentRowChanged, this, &CreateArchiveForm::chooseFolder);

    auto *archivesLabel = new QLabel(QStringLiteral("Supports déjà archivés :"), this);
    m_archives = new QListWidget(this);
    m_archives->setObjectName(QStringLiteral("archives"));
    m_archives->setAccessibleName(QStringLiteral("Supports déjà archivés"));
    archivesLabel->setBuddy(m_archives);

    m_foundModel = new FoundListModel(*m_finder, this);
    m_found = new QListView(this);
    m_found->setObjectName(QStringLiteral("found"));
    m_found->setAccessibleName(QStringLiteral("Fichiers trouvés"));
    m_found->setUniformItemSizes(true);
    m_found->setModel(m_foundModel);
    m_found->setMinimumWidth(420);

    m_counter = new CounterLabel(this);
    m_counter->setObjectName(QStringLiteral("counter"));
    setCounter(0);
    m_endNotice = new QLabel(QStringLiteral("L'archivage est terminé"), this);
    m_endNotice->setObjectName(QStringLiteral("endNotice"));
    QFont noticeFont = m_endNotice->font();
    noticeFont.setBold(true);
    m_endNotice->setFont(noticeFont);
    m_endNotice->hide();

    m_createButton = makePictureButton(QStringLiteral("Créer un fichier d'archive"), this);
    m_createButton->setObjectName(QStringLiteral("create"));
    connect(m_createButton, &QToolButton::clicked, this, &CreateArchiveForm::create);
    m_printButton = makePictureButton(QString(), this, QStringLiteral("Imprimer la liste des fichiers trouvés"));
    m_printButton->setObjectName(QStringLiteral("print"));
    connect(m_printButton, &QToolButton::clicked, this, &CreateArchiveForm::print);

    auto *left = new QVBoxLayout;
    left->addWidget(m_driveHint);
    auto *driveRow = new QHBoxLayout;
    driveRow->addWidget(m_driveChooser, 1);
    driveRow->addWidget(m_imageButton);
    driveRow->addWidget(m_imageFolderButton);
    left->addLayout(driveRow);
    left->addSpacing(8);
    left->addWidget(nameLabel);
    left->addWidget(m_name);
    left->addSpacing(8);
    left->addWidget(foldersLabel);
    left->addWidget(m_folders, 1);
    left->addWidget(archivesLabel);
    left->addWidget(m_archives, 1);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_createButton);
    buttons->addWidget(m_printButton);
    buttons->addStretch(1);
    auto *right = new QVBoxLayout;
    right->addLayout(buttons);
    right->addWidget(m_found, 1);
    right->addWidget(m_counter);
    auto *progressRow = new QHBoxLayout;
    progressRow->addWidget(m_imageProgress, 1);
    progressRow->addWidget(m_cancelImages);
    right->addLayout(progressRow);
    right->addWidget(m_endNotice);

    auto *grid = new QGridLayout(this);
    grid->addWidget(heading, 0, 0, 1, 2);
    grid->addLayout(left, 1, 0);
    grid->addLayout(right, 1, 1);
    // Halves: narrower, the left column wrapped the name's caption with its ")" alone on a line.
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(1, 1);
    resize(900, 600);
}

void CreateArchiveForm::load()
{
    m_data.makeCurrent();
    loadButtonIcon(m_createButton, m_pictures, m_data.file(QStringLiteral("File005.ico")));
    loadButtonIcon(m_printButton, m_pictures, m_data.file(QStringLiteral("inkjet.ico")));
    if (m_picker) {
        loadButtonIcon(m_imageButton, m_pictures, m_data.file(QStringLiteral("discimg.ico")));
        loadButtonIcon(m_imageFolderButton, m_pictures, m_data.file(QStringLiteral("imgfoldr.ico")));
    }

    showArchiveFolders(*m_folders, m_data);
    m_currentFolder = m_data.folderPath(m_folders->count() > 0 ? m_folders->item(0)->text() : QString());
    showArchives();

    selectFirstCdRom();
}

void CreateArchiveForm::selectFirstCdRom()
{
    m_driveChooser->reload();
    const QList<Drive> drives = m_driveChooser->drives();
    QString letter;
    for (const Drive &drive : drives) {
        if (drive.type == DriveType::CdRom) {
            letter = drive.name.left(1);
            break;
        }
    }
    m_driveHint->setText(kDriveHint + letter);
    m_firstCdRom = (letter.isEmpty() ? QStringLiteral("d") : letter) + QLatin1Char(':');
    // Without a CD-ROM drive the chooser stays on the drive of the data directory.
    if (letter.isEmpty())
        m_driveChooser->setCurrentIndex(int(driveHolding(drives, m_data.path())));
    else
        m_driveChooser->setCurrentName(letter + QLatin1Char(':'));
}

void CreateArchiveForm::chooseFolder(int row)
{
    if (row < 0)
        return;
    m_currentFolder = m_data.folderPath(m_folders->item(row)->text());
    showArchives();
}

void CreateArchiveForm::showArchives()
{
    ::showArchives(*m_archives, m_currentFolder);
}

void CreateArchiveForm::setCounter(int count)
{
    m_counter->setText(QString::number(count) + kFound);
}

void CreateArchiveForm::create()
{
    if (isScanning())
        return;
    m_walkedImage.clear();
    m_finder->setMedium(m_drives, m_lister);
    // A disc nobody mounted (no automounter) is mounted first, so the walk finds it.
    m_drives.mountMedium(m_driveChooser->currentName());
    scan(m_driveChooser->currentName());
}

void CreateArchiveForm::chooseImage()
{
    if (isScanning() || !m_picker)
        return;
    const std::optional<QString> image = m_picker->pickFile(kImageHint, DiscImage::nameFilters());
    if (!image)
        return;
    walkImage(*image, QString());
}

// The image is catalogued as its disc would be: a floppy in a:, a CD in the first CD-ROM drive.
void CreateArchiveForm::walkImage(const QString &imagePath, const QString &archiveName)
{
    const QString drive = DiscImage::probe(imagePath) == ImageKind::Floppy ? QStringLiteral("a:") : m_firstCdRom;
    m_imageDrive->set(drive, imagePath);
    m_walkedImage = imagePath;
    m_finder->setMedium(*m_imageDrive, *m_imageLister);
    if (archiveName.isEmpty())
        scan(drive);
    else
        startWalk(drive, archiveName);
}

void CreateArchiveForm::chooseImageFolder()
{
    if (isScanning() || !m_picker || m_batch)
        return;
    const std::optional<QString> folder = m_picker->pickFolder();
    if (!folder)
        return;
    ImageFolder::Plan plan = ImageFolder::plan(*folder, m_currentFolder);
    if (!plan.clashes.isEmpty()
        && m_dialogs.question(ImageFolder::clashQuestion(plan.clashes), windowTitle(), kDemoHelp) != Answer::Yes)
        return;
    m_batch = Batch{std::move(plan.images), std::move(plan.skipped), {}, false};
    m_imageProgress->setRange(0, int(m_batch->images.size()));
    m_imageProgress->setValue(0);
    m_imageProgress->show();
    m_cancelImages->show();
    nextImage();
}

void CreateArchiveForm::nextImage()
{
    const qsizetype next = m_batch->results.size();
    if (next < m_batch->images.size() && !m_batch->cancelled) {
        walkImage(m_batch->images[next].path, m_batch->images[next].archiveName);
        return;
    }
    for (qsizetype i = next; i < m_batch->images.size(); ++i)
        m_batch->results.append({m_batch->images[i], ImageFolder::Outcome::Cancelled});
    const QString summary = ImageFolder::summary(m_batch->results, m_batch->skipped);
    m_batch.reset();
    m_imageProgress->hide();
    m_cancelImages->hide();
    showArchives();
    m_dialogs.message(summary);
    emit imagesFinished();
}

void CreateArchiveForm::scan(const QString &drive)
{
    m_endNotice->hide();
    m_foundModel->clear();

    const ArchiveNameCheck checked = checkArchiveName(m_name->text(), drive, m_driveHint->text());
    if (!checked.name.isEmpty())
        m_name->setText(checked.name);
    if (!checked.refusal.isEmpty()) {
        m_dialogs.message(checked.refusal);
        return;
    }
    startWalk(drive, m_name->text());
}

void CreateArchiveForm::startWalk(const QString &drive, const QString &archiveName)
{
    m_endNotice->hide();
    m_foundModel->clear();
    setCounter(0);
    m_countShown = 0;
    m_listRefreshed.invalidate(); // the first rows are shown at the first tick
    m_refreshTimer->start();
    if (!m_busyCursor) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        m_busyCursor = true;
    }
    m_createButton->setEnabled(false);

    m_finder->setChemin(drive + QLatin1Char('\\'));
    m_finder->setCriteres(QStringLiteral("*.*"));
    m_archive = std::make_unique<ArchiveWriter>(m_currentFolder, archiveName);
    m_archiveFolder = m_currentFolder;
    m_entriesWritten = 0;
    m_scanAbandoned = false;
    m_walk->start();
}

void CreateArchiveForm::refreshFound()
{
    const int count = m_finder->count();
    // The archive takes the entries as they come, like the list: little is left to write once
    // the walk is over. It appears only then.
    for (; m_entriesWritten < count; ++m_entriesWritten)
        m_archive->add(m_finder->entry(m_entriesWritten + 1));
    if (count > m_countShown) {
        m_countShown = count;
        setCounter(count);
    }
    const bool listDue = !isScanning() || !m_listRefreshed.isValid() || m_listRefreshed.elapsed() >= kListRefreshMs;
    if (count > m_foundModel->rowCount() && listDue) {
        m_foundModel->showUpTo(count);
        m_listRefreshed.start();
    }
}

bool CreateArchiveForm::writeArchive()
{
    // The folder and the name may have been changed during the walk: the archive goes where they
    // say now.
    const std::unique_ptr<ArchiveWriter> archive = std::move(m_archive);
    if (m_currentFolder == m_archiveFolder) {
        archive->setArchiveName(m_name->text());
        return archive->commit();
    }
    ArchiveWriter elsewhere(m_currentFolder, m_name->text());
    for (int i = 1; i <= m_finder->count(); ++i)
        elsewhere.add(m_finder->entry(i));
    return elsewhere.commit();
}

// An archive made from an image remembers it, so that its files can be read out of it later; one
// made again from a drive forgets any image it came from.
void CreateArchiveForm::noteSource(const QString &folder, const QString &archiveName)
{
    ImageList images(m_data);
    const QString archive = QDir(folder).filePath(ArchiveFile::fileName(archiveName));
    if (m_walkedImage.isEmpty())
        images.forget(archive);
    else
        images.record(archive, m_walkedImage);
}

void CreateArchiveForm::hideEvent(QHideEvent *event)
{
    Form::hideEvent(event);
    // Reopening the window starts afresh (its folder list back on the first folder): a scan left
    // running would write its archive where the user never chose. A minimised window scans on.
    if (!event->spontaneous() && isScanning()) {
        m_scanAbandoned = true;
        m_finder->Annuler();
    }
}

void CreateArchiveForm::finishScan()
{
    m_refreshTimer->stop();
    refreshFound();
    setCounter(m_finder->count());
    if (m_busyCursor) {
        QApplication::restoreOverrideCursor();
        m_busyCursor = false;
    }
    m_createButton->setEnabled(true);
    m_data.makeCurrent();

    // An empty medium writes nothing and says nothing. A file that could not be written is not
    // announced as an archive either. A medium gone during the walk, or a window closed, leaves
    // an earlier archive of that name as it was.
    if (m_batch) {
        // One image of a folder: its archive keeps the image's name, and the next image follows.
        using ImageFolder::Outcome;
        const int count = m_finder->count();
        const Outcome outcome = m_scanAbandoned                          ? Outcome::Cancelled
                                : m_finder->failed()                      ? Outcome::Unreadable
                                : count == 0                              ? Outcome::Empty
                                : std::exchange(m_archive, {})->commit() ? Outcome::Written
                                                                          : Outcome::Unreadable;
        m_archive.reset();
        if (outcome == Outcome::Written)
            noteSource(m_archiveFolder, m_batch->images[m_batch->results.size()].archiveName);
        if (m_scanAbandoned)
            m_batch->cancelled = true;
        m_batch->results.append({m_batch->images[m_batch->results.size()], outcome, count});
        m_imageProgress->setValue(int(m_batch->results.size()));
        emit scanFinished();
        nextImage();
        return;
    }
    if (m_finder->failed() || m_scanAbandoned) {
        m_archive.reset(); // its temporary file goes with it
    } else if (writeArchive()) {
        noteSource(m_currentFolder, m_name->text());
        m_endNotice->show();
        showArchives();
        for (int i = 0; i < 3; ++i)
            m_dialogs.beep();
    }
    emit scanFinished();
}

void CreateArchiveForm::print()
{
    printList(m_printer, m_clock, m_foundModel->texts());
}
