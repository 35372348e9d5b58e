#pragma once


#include <QString>
#include <QStringList>

// The extension table, extens.txt: one line per extension, in the order added. A line is the
// upper-cased extension, exactly nine blanks whatever its length, "&", the class code (1 to 9)
// and the program that opens the class, less its extension ("TXT         &4C:\WINDOWS\NOTEPAD").
// The search windows read the code in column 14 and the program from column 15.
namespace ExtensionTable {

inline QString fileName() { return QStringLiteral("extens.txt"); }

// The nine classes; a class's code is its position from 1.
QStringList classNames();

// The pattern of the program chooser's file list, as it is shown.
inline QString programPattern() { return QStringLiteral("*.exe; *.bat;*.com"); }

// The line of the table for `extension` (upper-cased here), `classCode` and `program`.
QString entryLine(const QString &extension, int classCode, const QString &program);

// Why "Ajouter" refuses an entry, the first failing check in order: no program, no class
// (code 0), no extension, an extension of more than three characters. Empty when accepted.
QString refusal(const QString &extension, int classCode, const QString &program);

// The program stored for the file `fileName` chosen in `directory`: the two joined by one
// separator (a root such as "C:\" or "/" does not double it), less the extension when the name
// ends in .exe, .bat or .com in any case ("C:\" and "EDIT.COM" give "C:\EDIT"); a Linux program
// without extension is kept whole.
QString programPath(const QString &directory, const QString &fileName);

// Whether the chooser lists a file: its name matches the pattern, ignoring case, or it is an
// executable file.
bool isProgramFile(const QString &fileName, bool executable);

// The files of `directory` the chooser lists, sorted as listings are; none when unreadable.
QStringList programFiles(const QString &directory);

} // namespace ExtensionTable
