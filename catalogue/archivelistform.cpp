#include "archivelistform.h"

#include "archivelist.h"
#include "archivelists.h"
#include "imagelist.h"
#include "datadirectory.h"
#include "dialogs.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QToolButton>

ArchiveListForm::ArchiveListForm(const DataDirectory &data, Dialogs &dialogs, Printer &printer,
                                 PictureLoader &pictures, const Clock &clock, QWidget *parent)
    : MaintenanceForm(data, dialogs, printer, pictures, clock, parent)
{
    setObjectName(QStringLiteral("ArchiveListForm"));
    setWindowTitle(ArchiveList::kTitle);

    m_folders = makeList(QStringLiteral("folders"), QStringLiteral("Dossiers d'archivage"));
    m_archives = makeList(QStringLiteral("archives"), QStringLiteral("Fichiers d'archives"));

    m_currentFolder = makeTextLabel(QStringLiteral("currentFolder"), this);
    m_selectedFile = makeTextLabel(QStringLiteral("selectedFile"), this);
    m_index = makeTextLabel(QStringLiteral("index"), this);
    m_count = makeTextLabel(QStringLiteral("count"), this);
    for (QLabel *label : {m_currentFolder, m_selectedFile, m_index}) {
        label->setWordWrap(true);
        label->setMinimumHeight(label->fontMetrics().height()); // no jump when emptied
    }

    m_delete = new QPushButton(QStringLiteral("Supprimer"), this);
    m_delete->setObjectName(QStringLiteral("delete"));
    m_rename = new QPushButton(QStringLiteral("Renommer"), this);
    m_rename->setObjectName(QStringLiteral("rename"));
    for (QPushButton *button : {m_delete, m_rename}) {
        button->setAutoDefault(false); // Enter must not start a deletion by surprise
        button->setAccessibleName(button->text());
    }
    QToolButton *print = makePrintButton(m_archives);

    auto *layout = new QGridLayout(this);
    layout->addWidget(m_folders, 0, 0);
    layout->addWidget(m_archives, 0, 1);
    layout->addWidget(m_currentFolder, 1, 0, 1, 2);
    layout->addWidget(m_selectedFile, 2, 0, 1, 2);
    layout->addWidget(m_index, 3, 0);
    layout->addWidget(m_count, 3, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_delete);
    buttons->addWidget(m_rename);
    buttons->addStretch(1);
    buttons->addWidget(print);
    layout->addLayout(buttons, 4, 0, 1, 2);
    layout->setRowStretch(0, 1);
    resize(620, 440);

    // A click on the folder already selected refills the list as any click does; the keyboard
    // moves the selection.
    connect(m_folders, &QListWidget::itemClicked, this, &ArchiveListForm::folderClicked);
    connect(m_folders, &QListWidget::itemSelectionChanged, this, &ArchiveListForm::folderClicked);
    connect(m_archives, &QListWidget::itemSelectionChanged, this, &ArchiveListForm::archiveClicked);
    connect(m_delete, &QPushButton::clicked, this, &ArchiveListForm::deleteSelected);
    connect(m_rename, &QPushButton::clicked, this, &ArchiveListForm::renameSelected);
}

void ArchiveListForm::load()
{
    m_data.makeCurrent();
    showArchiveFolders(*m_folders, m_data);
    // The first folder is current, so the window opens on archives rather than on the program's
    // own directory, which holds none.
    const QString first = m_folders->count() > 0 ? m_folders->item(0)->text() : QString();
    m_currentFolder->setText(m_data.folderPath(first));
    m_selectedFile->clear();
    m_index->clear();
    refillArchives(ArchiveList::kCountAfterOpeningOrDeletion);
}

void ArchiveListForm::folderClicked()
{
    const QList<QListWidgetItem *> selected = m_folders->selectedItems();
    if (selected.isEmpty())
        return;
    m_currentFolder->setText(m_data.folderPath(selected.first()->text()));
    refillArchives(ArchiveList::kCountAfterFolderClick);
}

void ArchiveListForm::archiveClicked()
{
    const QList<QListWidgetItem *> selected = m_archives->selectedItems();
    if (selected.isEmpty())
        return;
    m_selectedFile->setText(m_currentFolder->text() + QLatin1Char('/') + selected.first()->text());
    m_index->setText(QString::number(m_archives->row(selected.first())));
}

void ArchiveListForm::refillArchives(const QString &countText)
{
    const QSignalBlocker blocker(m_archives);
    showArchives(*m_archives, m_currentFolder->text());
    m_count->setText(ArchiveList::countLabel(countText, m_archives->count()));
}

void ArchiveListForm::deleteSelected()
{
    // The selected-file label stays as it is, so a second deletion asks about the same path.
    const QString selected = m_selectedFile->text();
    if (m_dialogs.question(ArchiveList::deleteQuestion(selected), ArchiveList::kDeleteTitle, kDemoHelp)
        != Answer::Yes)
        return;
    if (ArchiveList::remove(selected))
        ImageList(m_data).forget(selected);
    refillArchives(ArchiveList::kCountAfterOpeningOrDeletion);
    m_index->setText(QStringLiteral("0"));
}

void ArchiveListForm::renameSelected()
{
    const QString selected = m_selectedFile->text();
    if (m_dialogs.question(ArchiveList::renameQuestion(selected), ArchiveList::kRenameTitle, kDemoHelp)
        != Answer::Yes)
        return;
    const QString answer = m_dialogs.input(ArchiveList::kRenamePrompt);
    if (ArchiveList::rename(selected, m_currentFolder->text(), answer))
        ImageList(m_data).rename(selected, ArchiveList::renamedPath(m_currentFolder->text(), answer));
    refillArchives(ArchiveList::kCountAfterRename);
}

