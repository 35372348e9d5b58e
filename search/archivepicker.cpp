#include "archivepicker.h"

#include "archivefile.h"
#include "archivelists.h"
#include "datadirectory.h"
#include "textformat.h"

#include <QCheckBox>
#include <QFontMetrics>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QVBoxLayout>

namespace {

const QString kSelectAllOn = u"La Sélection de tous les fichiers d'archives est activèe"_qs;
const QString kSelectAllOff = u"La Sélection de tous les fichiers d'archives est desactivèe"_qs;

} // namespace

ArchivePicker::ArchivePicker(const DataDirectory &data, const QString &allFoldersCaption,
                             const QString &selectAllCaption, QWidget *parent)
    : QWidget(parent)
    , m_data(data)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(new QLabel(u"Dossiers d'archivage"_qs, this));
    m_folders = new QListWidget(this);
    m_folders->setObjectName(u"folders"_qs);
    m_folders->setAccessibleName(u"Dossiers d'archivage"_qs);
    m_folders->setMinimumHeight(m_folders->fontMetrics().height() * 6); // the five default folders
    layout->addWidget(m_folders, 1); // the archives get twice its height
    m_folderPath = new QLabel(this);
    m_folderPath->setObjectName(u"folderPath"_qs);
    m_folderPath->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(m_folderPath);
    m_archives = new QListWidget(this);
    m_archives->setObjectName(u"archives"_qs);
    m_archives->setAccessibleName(u"Fichiers d'archives"_qs);
    m_archives->setSelectionMode(QAbstractItemView::ExtendedSelection);
    layout->addWidget(m_archives, 2);
    m_archiveCount = new QLabel(this);
    m_archiveCount->setObjectName(u"archiveCount"_qs);
    layout->addWidget(m_archiveCount);
    m_selectAll = new QCheckBox(selectAllCaption, this);
    m_selectAll->setObjectName(u"selectAll"_qs);
    layout->addWidget(m_selectAll);
    m_allFolders = new QCheckBox(allFoldersCaption, this);
    m_allFolders->setObjectName(u"allFolders"_qs);
    layout->addWidget(m_allFolders);

    // Wide enough for every caption of the selection switch, so toggling it moves nothing.
    const QFontMetrics metrics(m_selectAll->font());
    int widest = 0;
    for (const QString &caption : {kSelectAllOn, kSelectAllOff, selectAllCaption, allFoldersCaption})
        widest = std::max(widest, metrics.horizontalAdvance(caption));
    setFixedWidth(widest + 40);

    connect(m_folders, &QListWidget::currentRowChanged, this, &ArchivePicker::setCurrentFolder);
    connect(m_selectAll, &QCheckBox::toggled, this, &ArchivePicker::setAllSelected);
    connect(m_allFolders, &QCheckBox::toggled, this, [this](bool on) {
        if (on)
            m_selectAll->setChecked(true);
    });
}

void ArchivePicker::load()
{
    showArchiveFolders(*m_folders, m_data);
    setCurrentFolder(0);
}

void ArchivePicker::setCurrentFolder(int index)
{
    const QString folder = index >= 0 && index < m_folders->count() ? m_folders->item(index)->text() : QString();
    m_folderPath->setText(folder.isEmpty() ? QString() : m_data.folderPath(folder));
    showArchives(*m_archives, folder.isEmpty() ? QString() : m_data.folderPath(folder));
    m_archiveCount->setText(u"Nbre de CD ou disquettes répertoriés : "_qs + formatSigned(m_archives->count()));
    if (m_selectAll->isChecked())
        m_archives->selectAll();
}

void ArchivePicker::setAllSelected(bool selected)
{
    m_selectAll->setText(selected ? kSelectAllOn : kSelectAllOff);
    if (selected)
        m_archives->selectAll();
    else
        m_archives->clearSelection();
}

int ArchivePicker::selectedArchiveCount() const
{
    return int(m_archives->selectedItems().size());
}

bool ArchivePicker::allFolders() const
{
    return m_allFolders->isChecked();
}

QList<ArchiveToScan> ArchivePicker::archivesToSearch(Chooser choose)
{
    QList<ArchiveToScan> archives;
    m_folderFirstArchive.clear();
    m_shownFolder = -1;
    if (m_allFolders->isChecked()) {
        for (int i = 0; i < m_folders->count(); ++i) {
            const QString folderPath = m_data.folderPath(m_folders->item(i)->text());
            m_folderFirstArchive.append(int(archives.size()));
            archives.append(choose(folderPath, ArchiveFile::list(folderPath), {}));
        }
    } else {
        QStringList files;
        QList<bool> selected;
        for (int i = 0; i < m_archives->count(); ++i) {
            files.append(m_archives->item(i)->text());
            selected.append(m_archives->item(i)->isSelected());
        }
        archives = choose(m_folderPath->text(), files, selected);
    }
    m_archivesSearched = int(archives.size());
    return archives;
}

void ArchivePicker::showProgress(int archivesDone, QProgressBar *bar)
{
    if (m_folderFirstArchive.isEmpty()) {
        bar->setRange(0, m_archivesSearched);
        bar->setValue(archivesDone);
        return;
    }
    int folder = 0;
    while (folder + 1 < m_folderFirstArchive.size() && m_folderFirstArchive[folder + 1] <= archivesDone)
        ++folder;
    if (folder != m_shownFolder) {
        m_shownFolder = folder;
        const int last = folder + 1 < m_folderFirstArchive.size() ? m_folderFirstArchive[folder + 1] : m_archivesSearched;
        m_folders->setCurrentRow(folder);
        bar->setRange(0, last - m_folderFirstArchive[folder]);
    }
    bar->setValue(archivesDone - m_folderFirstArchive[folder]);
}
