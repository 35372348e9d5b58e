#pragma once

#include <QString>
#include <QStringList>

// Resolves a file named without a directory inside `directory`, ignoring case as the program's
// file names were written for a system that does: the exact name first, else the single entry
// whose name matches ignoring case, else the exact name (the one to create).
QString resolveInDirectory(const QString &directory, const QString &bareName);

// Sorts names as directory listings give them here: ignoring case, then by their bytes.
void sortAsListed(QStringList &names);
