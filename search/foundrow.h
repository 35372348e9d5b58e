#pragma once

#include <QString>

// The current row of a search window, as its labels hold it: set by a left press on a result row,
// acted on by a right press. Every text is the stored path's, as the path result list shows it
// (upper-cased, drive included, quotes removed).
class FoundRow
{
public:
    // Makes the row with stored path `path` of archive `archive` (its name less ".lst", its file
    // `archiveFile`) current.
    // The current extension changes only when the path holds a dot: otherwise the one of the row
    // chosen before stays, and a right press acts by it on the new path.
    void choose(const QString &path, const QString &archive, const QString &archiveFile = {});

    QString path() const { return m_path; }
    // The same path, kept for the help and icon actions.
    QString helpPath() const { return m_helpPath; }
    // '"' + path + '"'.
    QString quotedPath() const { return m_quotedPath; }
    // The archive name and " .lst" (with its blank before the dot).
    QString archiveLabel() const { return m_archiveLabel; }
    // The archive file the row was found in: its disc is the one acted on.
    QString archiveFile() const { return m_archiveFile; }
    // The path less its last four characters.
    QString pathLessExtension() const { return m_pathLessExtension; }
    // Up to three characters after the path's last dot.
    QString extension() const { return m_extension; }
    void setExtension(const QString &extension) { m_extension = extension; }
    // "Mettez dans le lecteur "ARCHIVE" : PATH", the disc to put in the drive.
    QString mediumPrompt() const { return m_mediumPrompt; }

    // The source of a copy: the quoted path less its first and last characters.
    QString copySource() const;

private:
    QString m_path;
    QString m_helpPath;
    QString m_quotedPath;
    QString m_archiveLabel;
    QString m_archiveFile;
    QString m_pathLessExtension;
    QString m_extension;
    QString m_mediumPrompt;
};
