#pragma once

#include "printer.h"

#include <QColor>
#include <QFont>
#include <QImage>
#include <QPainter>

class QPrinter;

// The page side of a Printer: text and pictures put on a QPrinter's pages at positions in twips
// (1440 to the inch of the printer's resolution), with the current position moving line by line.
// The painter starts with the first output; endDocument() sends the pages.
class PagePrinter
{
public:
    // Prints on `printer`, which must outlive this object.
    explicit PagePrinter(QPrinter &printer);
    ~PagePrinter();

    void setFont(const PrinterFont &font);
    void setTextColour(const QColor &colour) { m_colour = colour; }
    void setCurrentX(int twips) { m_x = twips; }
    void setCurrentY(int twips) { m_y = twips; }
    int currentX() const { return m_x; }
    int currentY() const { return m_y; }
    int pageWidth() const;
    int pageHeight() const;

    void printLine(const QString &text);
    void drawPicture(const QImage &picture, int x, int y);
    void endDocument();

private:
    bool ensureStarted();
    double deviceUnitsPerTwip() const;
    int lineHeight() const;

    QPrinter &m_printer;
    QPainter m_painter;
    QFont m_font;
    QColor m_colour = Qt::black;
    int m_x = 0;
    int m_y = 0;
    bool m_failed = false;
};
