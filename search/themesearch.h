#pragma once

#include "searchrun.h"

#include <QList>
#include <QString>
#include <QStringList>

// The search by theme: every entry whose full path holds the chosen theme (rowsForPath() tells
// which), run by the same engine as the archive search (SearchRequests::request()).
namespace ThemeSearch {

// The archives of a folder a search by theme reads: every selected one (every one when `selected`
// is empty), with no limit on their number, each known by its file name, ".lst" included.
QList<ArchiveToScan> archivesToScan(const QString &folderPath, const QStringList &fileNames,
                                    const QList<bool> &selected = {});

} // namespace ThemeSearch
