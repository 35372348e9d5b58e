#include "listprintout.h"

#include "clock.h"
#include "printer.h"
#include "textformat.h"

namespace {
constexpr int kLeft = 2000;
constexpr int kTop = 1000;
constexpr int kScreenAndPrinterFonts = 3;
}

void printList(Printer &printer, const Clock &clock, const QStringList &items)
{
    printer.choosePrinter();
    PrinterFont font = printer.chooseFont(kScreenAndPrinterFonts);
    if (font.name.isEmpty())
        font.name = QStringLiteral("MS Sans Serif");
    printer.setFont(font);
    printer.setTextColour(printer.chooseColour());

    printer.setCurrentX(kLeft);
    printer.setCurrentY(kTop);
    printer.printLine(formatDate(clock.now().date()));
    printer.setCurrentX(kLeft);
    printer.printLine(QString());
    for (const QString &item : items) {
        printer.setCurrentX(kLeft);
        printer.printLine(item);
    }
    printer.endDocument();
}
