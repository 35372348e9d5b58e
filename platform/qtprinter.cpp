#include "qtprinter.h"

#include "widgetdialogs.h"

#include <QColorDialog>
#include <QFontDialog>
#include <QPrintDialog>

QtPrinter::QtPrinter()
    : m_printer(QPrinter::HighResolution)
    , m_page(m_printer)
{
}

bool QtPrinter::choosePrinter()
{
    const DialogOwner owner;
    QPrintDialog dialog(&m_printer, owner.widget());
    return dialog.exec() == QDialog::Accepted;
}

PrinterFont QtPrinter::chooseFont(int flags)
{
    Q_UNUSED(flags) // Qt's font dialog lists every font the screen and the printer can use
    bool ok = false;
    const DialogOwner owner;
    const QFont font = QFontDialog::getFont(&ok, QFont(QStringLiteral("Sans Serif"), 10), owner.widget());
    if (!ok)
        return {};
    return {font.family(), font.pointSizeF(), font.bold(), font.italic()};
}

QColor QtPrinter::chooseColour()
{
    const DialogOwner owner;
    const QColor colour = QColorDialog::getColor(Qt::black, owner.widget());
    return colour.isValid() ? colour : QColor(Qt::black);
}
