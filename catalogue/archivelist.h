#pragma once

#include <QString>

// What the archive list window does to archive files, apart from its controls: the texts it
// shows and the two changes it makes. Nothing here asks questions; the window asks first.
namespace ArchiveList {

// The count label's three texts, each bound to its action; their spellings differ on purpose.
inline const QString kCountAfterOpeningOrDeletion = QStringLiteral("Nombre de cd et disques répertoriés : ");
inline const QString kCountAfterRename = QStringLiteral("Nombre de cd et disquettes répertoriés : ");
inline const QString kCountAfterFolderClick = QStringLiteral("Nbre de CD ou disquettes répertoriés : ");

inline const QString kTitle = QStringLiteral("Renommer ou supprimer un fichier d'archives");
inline const QString kDeleteTitle = QStringLiteral("Supprimer un fichier d'archives");
inline const QString kRenameTitle = QStringLiteral("Renommer un fichier d'archives ");
inline const QString kRenamePrompt =
    QStringLiteral("Saisissez un nom de 8 caractères au maximum (sans extension) ?");

// A count text followed by the number with its sign position ("... : " + " 5").
QString countLabel(const QString &text, qsizetype count);

QString deleteQuestion(const QString &selectedFile);
QString renameQuestion(const QString &selectedFile);

// The path an archive is renamed to: the current folder, "/", the answer upper-cased as
// Windows1252::toUpper does and ".lst".
// No length or character check: an empty answer gives ".lst" in the folder.
QString renamedPath(const QString &currentFolder, const QString &answer);

// Renames the archive `selectedFile` to renamedPath(currentFolder, answer), which moves it when
// another folder has been clicked since it was selected. Refused, changing nothing: a missing
// source, an answer that is not a plain name (ArchiveFile::isPlainName), and a target that
// exists, ignoring case as the catalogue's names do (changing the case of the file's own name is
// allowed). Never replaces or deletes a file.
bool rename(const QString &selectedFile, const QString &currentFolder, const QString &answer);

// Deletes the archive file `path`, and only it: never a directory, never anything when the path
// is empty or missing.
bool remove(const QString &path);

} // namespace ArchiveList
