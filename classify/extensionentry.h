#pragma once

#include <QString>
#include <QStringList>

// An entry of the extension table, as ExtensionTable::entryLine writes it, read by fixed columns:
// characters 1 to 3 the extension, the number read from character 14 on the class code, characters
// 15 on the program. The columns fit a three-letter extension; a shorter one shifts the line, so
// its entry never matches a class and its extension is read with the blanks that follow it.
namespace ExtensionEntry {

QString extension(const QString &entry);
// The number at character 14 (blanks before it skipped, as many digits as follow); 0 when none.
int classCode(const QString &entry);
// The program, when the entry is at least 14 characters long; empty otherwise.
QString program(const QString &entry);

// The entries whose class code is `code`, in their order.
QStringList ofClass(const QStringList &entries, int code);

} // namespace ExtensionEntry
