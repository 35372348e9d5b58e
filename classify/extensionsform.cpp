#include "extensionsform.h"

#include "datadirectory.h"
#include "dialogs.h"
#include "drivechooser.h"
#include "drives.h"
#include "extensiontable.h"
#include "windows1252.h"

#include <QEvent>
#include <QFileSystemModel>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QStandardItemModel>
#include <QStringListModel>
#include <QTreeView>
#include <QVBoxLayout>

ExtensionsForm::ExtensionsForm(const DataDirectory &data, Drives &drives, Dialogs &dialogs, Printer &printer,
                               PictureLoader &pictures, const Clock &clock, QWidget *parent)
    : LineTableForm(data, dialogs, printer, pictures, clock,
                    {QStringLiteral(" extensions"), QStringLiteral("Souhaitez-vous SUPPRIMER cette extension "),
                     QStringLiteral("Extensions")},
                    parent)
    , m_drives(drives)
{
    setWindowTitle(QStringLiteral("Kalvex2 Extensions"));
    setObjectName(QStringLiteral("ExtensionsForm"));
    placeFrameOnOpening([] { return QPoint(0, 0); }); // the top-left corner of the screen

    auto *panes = new QHBoxLayout;
    panes->addWidget(buildTablePane(), 3);
    panes->addWidget(buildClassPane(), 2);
    panes->addWidget(buildProgramPane(), 3);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(panes, 1);
    layout->addLayout(makeButtonRow());

    connect(m_newExtension, &QLineEdit::returnPressed, this, &ExtensionsForm::add);
    resize(960, 560);
}

ExtensionsForm::~ExtensionsForm() = default;

QWidget *ExtensionsForm::buildTablePane()
{
    auto *pane = new QWidget(this);
    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins(0, 0, 0, 0);
    // Fixed pitch, so the nine blanks of every line line up.
    m_lines->setFont(QFont(QStringLiteral("monospace")));
    m_selected->setFont(m_lines->font());
    layout->addWidget(m_count);
    layout->addWidget(m_lines, 1);
    layout->addWidget(m_selected);
    return pane;
}

QWidget *ExtensionsForm::buildClassPane()
{
    auto *pane = new QWidget(this);
    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *newRow = new QHBoxLayout;
    auto *newCaption = new QLabel(QStringLiteral("Nouvelle extension--->"), pane);
    m_newExtension = new QLineEdit(pane);
    m_newExtension->setObjectName(QStringLiteral("newExtension"));
    m_newExtension->setAccessibleName(QStringLiteral("Nouvelle extension"));
    newCaption->setBuddy(m_newExtension);
    newRow->addWidget(newCaption);
    newRow->addWidget(m_newExtension);

    auto *classCaption = new QLabel(QStringLiteral("Classification du fichier"), pane);
    m_classes = new QListWidget(pane);
    m_classes->setObjectName(QStringLiteral("classes"));
    m_classes->setAccessibleName(QStringLiteral("Classification du fichier"));
    m_classes->addItems(ExtensionTable::classNames());
    classCaption->setBuddy(m_classes);
    m_chosenClass = makeTextLabel(QStringLiteral("chosenClass"), pane);

    layout->addLayout(newRow);
    layout->addSpacing(12);
    layout->addWidget(classCaption);
    layout->addWidget(m_classes, 1);
    layout->addWidget(m_chosenClass);
    connect(m_classes, &QListWidget::currentRowChanged, this, &ExtensionsForm::chooseClass);
    return pane;
}

QWidget *ExtensionsForm::buildProgramPane()
{
    auto *pane = new QWidget(this);
    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins(0, 0, 0, 0);

    m_driveChooser = new DriveChooser(m_drives, QStringLiteral("drives"), pane);

    m_directoryModel = new QFileSystemModel(this);
    m_directoryModel->setFilter(QDir::AllDirs | QDir::NoDotAndDotDot);
    m_directoryTree = new QTreeView(pane);
    m_directoryTree->setObjectName(QStringLiteral("directories"));
    m_directoryTree->setAccessibleName(QStringLiteral("Répertoires"));
    m_directoryTree->setHeaderHidden(true);
    m_noDirectories = new QStandardItemModel(this);
    showDirectoryModel(m_directoryModel);

    m_currentDirectory = makeTextLabel(QStringLiteral("currentDirectory"), pane);
    m_currentDirectory->setWordWrap(true);

    m_programModel = new QStringListModel(this);
    m_programFiles = new QListView(pane);
    m_programFiles->setObjectName(QStringLiteral("programFiles"));
    m_programFiles->setAccessibleName(QStringLiteral("Programmes"));
    m_programFiles->setModel(m_programModel);
    m_programFiles->setUniformItemSizes(true);
    m_programFiles->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_programFiles->setToolTip(ExtensionTable::programPattern());

    auto *programCaption = new QLabel(QStringLiteral("Nom du fichier associé:"), pane);
    m_chosenProgram = makeTextLabel(QStringLiteral("chosenProgram"), pane);
    m_chosenProgram->setWordWrap(true);

    layout->addWidget(m_driveChooser);
    layout->addWidget(m_directoryTree, 3);
    layout->addWidget(m_currentDirectory);
    layout->addWidget(m_programFiles, 2);
    layout->addWidget(programCaption);
    layout->addWidget(m_chosenProgram);

    connect(m_directoryModel, &QFileSystemModel::directoryLoaded, this, [this] {
        if (m_revealPending && m_directoryTree->currentIndex().isValid())
            m_directoryTree->scrollTo(m_directoryTree->currentIndex(), QAbstractItemView::PositionAtCenter);
    });
    connect(m_driveChooser, &DriveChooser::currentDriveChanged, this, &ExtensionsForm::chooseDrive);
    connect(m_programFiles->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex &current) {
                if (current.isValid())
                    chooseProgramFile(current.data().toString());
            });
    return pane;
}

void ExtensionsForm::load()
{
    openTable(ExtensionTable::fileName(), ExtensionTable::fileName());

    // Nothing but the file is kept between openings.
    m_newExtension->clear();
    m_classes->setCurrentRow(-1);
    m_classCode = 0;
    m_chosenClass->clear();
    m_program.clear();
    m_chosenProgram->clear();

    // The chooser starts on the data directory, on the drive that holds it.
    {
        const QSignalBlocker blocker(m_driveChooser);
        m_driveChooser->reload();
        m_driveChooser->setCurrentIndex(int(driveHolding(m_driveChooser->drives(), m_data.path())));
    }
    chooseDrive(m_driveChooser->currentIndex());
    const QModelIndex home = m_directoryModel->index(m_data.path());
    if (home.isValid()) {
        m_directoryTree->setCurrentIndex(home);
        m_directoryTree->scrollTo(home);
        m_revealPending = true; // the model lists directories in the background: scroll again as they come
    }
}

void ExtensionsForm::changeEvent(QEvent *event)
{
    Form::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        m_newExtension->setFocus(Qt::ActiveWindowFocusReason);
}

void ExtensionsForm::chooseClass(int row)
{
    if (row < 0)
        return;
    m_classCode = row + 1;
    m_chosenClass->setText(m_classes->item(row)->text());
}

void ExtensionsForm::chooseDrive(int index)
{
    const QList<Drive> &drives = m_driveChooser->drives();
    const QString root = index >= 0 && index < drives.size() ? drives[index].mountPoint : QString();
    if (root.isEmpty()) {
        // A drive without a medium: nothing to walk or list.
        showDirectoryModel(m_noDirectories);
        chooseDirectory(QString());
        return;
    }
    showDirectoryModel(m_directoryModel);
    m_directoryTree->setRootIndex(m_directoryModel->setRootPath(root));
    chooseDirectory(root);
}

void ExtensionsForm::showDirectoryModel(QAbstractItemModel *model)
{
    if (m_directoryTree->model() == model)
        return;
    m_directoryTree->setModel(model);
    for (int column = 1; column < model->columnCount(); ++column)
        m_directoryTree->hideColumn(column);
    connect(m_directoryTree->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex &current) {
                if (current.isValid())
                    chooseDirectory(m_directoryModel->filePath(current));
            });
}

void ExtensionsForm::chooseDirectory(const QString &directory)
{
    m_revealPending = false;
    m_directory = directory;
    m_currentDirectory->setText(directory);
    m_programModel->setStringList(directory.isEmpty() ? QStringList() : ExtensionTable::programFiles(directory));
}

void ExtensionsForm::chooseProgramFile(const QString &fileName)
{
    m_program = ExtensionTable::programPath(m_directory, fileName);
    m_chosenProgram->setText(m_program);
}

void ExtensionsForm::add()
{
    const QString refusal = ExtensionTable::refusal(m_newExtension->text(), m_classCode, m_program);
    if (!refusal.isEmpty()) {
        m_dialogs.message(refusal);
        return;
    }
    m_newExtension->setText(Windows1252::toUpper(m_newExtension->text()));
    appendLine(ExtensionTable::entryLine(m_newExtension->text(), m_classCode, m_program));
}
