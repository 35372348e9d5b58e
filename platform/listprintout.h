#pragma once

#include <QStringList>

class Clock;
class Printer;

// The printout of a list, shared by every window that prints one: the print, font and colour
// dialogs (a cancelled dialog does not stop the printing; no font name gives "MS Sans Serif"),
// then, 2000 twips from the left edge, the date 1000 twips from the top, an empty line, and one
// line per item; then the document is sent.
void printList(Printer &printer, const Clock &clock, const QStringList &items);
