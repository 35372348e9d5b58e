#pragma once

#include <QString>

class DataDirectory;

// What the archive folders window does to the data directory's sub-directories, apart from its
// controls. Folders are created with a lower-case name and removed only when empty.
namespace ArchiveFolders {

inline const QString kTitle = QStringLiteral("Kalvex Dossiers");
inline const QString kRemoveTitle = QStringLiteral("Suppression de fichier ");
inline const QString kNewFolderCaption = QStringLiteral("Nouveau dossier --->");
// The capital differs on purpose: " Dossiers" after opening, " dossiers" after any change.
inline const QString kCountAfterOpening = QStringLiteral(" Dossiers");
inline const QString kCountAfterChange = QStringLiteral(" dossiers");

// The count with its sign position, then the text (" 5 Dossiers").
QString countLabel(qsizetype count, const QString &text);

// "Souhaitez-vous SUPPRIMER le dossier NAME" and the note, pushed to a second line by 45 blanks.
QString removalQuestion(const QString &folder);

// Creates the folder `name` in the data directory, not recursively. Refused, creating nothing: an
// empty name, a name that is not plain (ArchiveFile::isPlainName), and a name that an existing
// entry has already, ignoring case (adding "divers" beside "Divers" would make two folders that
// the program cannot tell apart).
bool add(const DataDirectory &data, const QString &name);

// Removes the folder `name` of the data directory only when it is empty (never recursively, so
// archive files are never lost). Refused: an empty name, ".", a name that is not plain.
bool remove(const DataDirectory &data, const QString &name);

} // namespace ArchiveFolders
