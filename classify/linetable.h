#pragma once

#include <QString>
#include <QStringList>

class Dialogs;

// A table kept whole in one file (extens.txt, themes.txt): read as comma-separated fields, one
// line per field, and rewritten whole after every change, so the lines and the file never differ.
class LineTable
{
public:
    // The table is read from `readPath` and written to `writePath` (two spellings of one file).
    LineTable(QString readPath, QString writePath);

    // Reads the file afresh; a missing or unreadable file gives an empty table.
    void load();

    const QStringList &lines() const { return m_lines; }
    qsizetype count() const { return m_lines.size(); }

    // Appends `line` and rewrites the file.
    void append(const QString &line);
    // Removes the line at `index` and rewrites the file; an index out of range (nothing
    // selected) removes nothing and the file is rewritten as it stands.
    void removeAt(qsizetype index);

private:
    void save() const; // a failed write is ignored, the lines stay as they are

    QString m_readPath;
    QString m_writePath;
    QStringList m_lines;
};

// Asks `question` in the removal box ("Suppression de fichier ", Yes/No, No the default, help
// DEMO.HLP context 1000) and, on Yes only, removes the line at `index` from `table`. Returns
// whether the user answered Yes.
bool removeAfterQuestion(LineTable &table, qsizetype index, Dialogs &dialogs, const QString &question);
