#include "archivelists.h"

#include "archivefile.h"
#include "datadirectory.h"

#include <QListWidget>
#include <QSignalBlocker>

void showArchiveFolders(QListWidget &folders, const DataDirectory &data)
{
    const QSignalBlocker blocker(folders);
    folders.clear();
    folders.addItems(data.archiveFolders());
    if (folders.count() > 0)
        folders.setCurrentRow(0);
}

void showArchives(QListWidget &archives, const QString &folderPath)
{
    archives.clear();
    if (!folderPath.isEmpty()) // no folder: nothing, rather than the current directory's archives
        archives.addItems(ArchiveFile::list(folderPath));
}
