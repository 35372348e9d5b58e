#pragma once

#include <QString>

class DataDirectory;
class QListWidget;

// The pair of lists several windows show: the archive folders of the data directory, and the
// archive files of one folder. Both are refilled from the disk each time.

// Fills `folders` with the archive folders, without telling its listeners, and selects the first.
void showArchiveFolders(QListWidget &folders, const DataDirectory &data);

// Fills `archives` with the archive names of `folderPath`; an empty path gives an empty list.
void showArchives(QListWidget &archives, const QString &folderPath);
