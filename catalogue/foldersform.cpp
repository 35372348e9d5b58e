#include "foldersform.h"

#include "archivefolders.h"
#include "datadirectory.h"
#include "dialogs.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>

FoldersForm::FoldersForm(const DataDirectory &data, Dialogs &dialogs, Printer &printer, PictureLoader &pictures,
                         const Clock &clock, QWidget *parent)
    : MaintenanceForm(data, dialogs, printer, pictures, clock, parent)
{
    setObjectName(QStringLiteral("FoldersForm"));
    setWindowTitle(ArchiveFolders::kTitle);

    m_folders = makeList(QStringLiteral("folders"), QStringLiteral("Dossiers d'archivage"));

    m_count = makeTextLabel(QStringLiteral("count"), this);
    m_selectedFolder = makeTextLabel(QStringLiteral("selectedFolder"), this);
    m_selectedFolder->setMinimumHeight(m_selectedFolder->fontMetrics().height()); // no jump when emptied

    auto *caption = new QLabel(ArchiveFolders::kNewFolderCaption, this);
    m_name = new QLineEdit(this);
    m_name->setObjectName(QStringLiteral("name"));
    m_name->setAccessibleName(QStringLiteral("Nouveau dossier"));
    caption->setBuddy(m_name);

    m_add = new QPushButton(QStringLiteral("Ajouter"), this);
    m_add->setObjectName(QStringLiteral("add"));
    m_add->setDefault(true); // Enter in the name field adds the folder
    m_remove = new QPushButton(QStringLiteral("Supprimer"), this);
    m_remove->setObjectName(QStringLiteral("remove"));
    m_remove->setAutoDefault(false);
    for (QPushButton *button : {m_add, m_remove})
        button->setAccessibleName(button->text());
    QToolButton *print = makePrintButton(m_folders);

    auto *nameRow = new QHBoxLayout;
    nameRow->addWidget(caption);
    nameRow->addWidget(m_name, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_add);
    buttons->addWidget(m_remove);
    buttons->addStretch(1);
    buttons->addWidget(print);
    auto *side = new QVBoxLayout;
    side->addWidget(m_count);
    side->addWidget(m_selectedFolder);
    side->addLayout(nameRow);
    side->addStretch(1);
    side->addLayout(buttons);
    auto *layout = new QHBoxLayout(this);
    layout->addWidget(m_folders, 1);
    layout->addLayout(side, 1);
    resize(560, 320);

    connect(m_folders, &QListWidget::itemSelectionChanged, this, &FoldersForm::folderClicked);
    connect(m_add, &QPushButton::clicked, this, &FoldersForm::addFolder);
    connect(m_remove, &QPushButton::clicked, this, &FoldersForm::removeFolder);
}

void FoldersForm::load()
{
    m_data.makeCurrent();
    m_selectedFolder->clear();
    m_name->clear();
    refill(ArchiveFolders::kCountAfterOpening);
    m_name->setFocus();
}

void FoldersForm::folderClicked()
{
    const QList<QListWidgetItem *> selected = m_folders->selectedItems();
    if (!selected.isEmpty())
        m_selectedFolder->setText(selected.first()->text());
}

void FoldersForm::refill(const QString &countText)
{
    const QSignalBlocker blocker(m_folders);
    m_folders->clear();
    m_folders->addItems(m_data.archiveFolders());
    m_count->setText(ArchiveFolders::countLabel(m_folders->count(), countText));
}

void FoldersForm::afterChange()
{
    refill(ArchiveFolders::kCountAfterChange);
    m_name->clear();
    m_selectedFolder->clear();
}

void FoldersForm::addFolder()
{
    // The field shows the name as it is created: folder names are lower case.
    m_name->setText(m_name->text().toLower());
    ArchiveFolders::add(m_data, m_name->text());
    afterChange();
}

void FoldersForm::removeFolder()
{
    const QString selected = m_selectedFolder->text();
    if (m_dialogs.question(ArchiveFolders::removalQuestion(selected), ArchiveFolders::kRemoveTitle, kDemoHelp)
        == Answer::No)
        return;
    ArchiveFolders::remove(m_data, selected);
    afterChange();
}

