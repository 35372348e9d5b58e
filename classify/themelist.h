#pragma once

#include <QPoint>
#include <QSize>
#include <QString>

// The theme list, themes.txt: one theme a line, lower-cased, in the order added. It is written
// under the name "themes.txt" and read under "THEMES.txt"; both reach one file.
namespace ThemeList {

inline QString writeName() { return QStringLiteral("themes.txt"); }
inline QString readName() { return QStringLiteral("THEMES.txt"); }

// The line stored for a theme as typed: its lower-case form, nothing checked.
QString themeLine(const QString &typed);

// Where the themes window goes: centred on an assumed screen of 12500 by 9000 twips, whatever
// the real screen, at 15 twips per pixel. `windowSize` is the window's outer size in pixels.
QPoint windowPosition(QSize windowSize);

} // namespace ThemeList
