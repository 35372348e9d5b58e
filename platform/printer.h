#pragma once

#include <QColor>
#include <QImage>
#include <QString>

struct PrinterFont
{
    QString name;          // empty when the font dialog gave no name
    double pointSize = 0;  // 0 when the font dialog gave no size
    bool bold = false;
    bool italic = false;
};

// The system printer and its common dialogs. Positions are in twips (1/1440 inch) from the
// page's top-left corner. The page is opened by the first output and sent by endDocument().
class Printer
{
public:
    virtual ~Printer() = default;

    // The print dialog; false when the user cancelled (callers may print all the same).
    virtual bool choosePrinter() = 0;
    // The font dialog. `flags` 3 lists screen and printer fonts. Cancel gives an empty font.
    virtual PrinterFont chooseFont(int flags) = 0;
    // The colour dialog. Cancel gives black.
    virtual QColor chooseColour() = 0;

    virtual void setFont(const PrinterFont &font) = 0;
    virtual void setTextColour(const QColor &colour) = 0;

    virtual void setCurrentX(int twips) = 0;
    virtual void setCurrentY(int twips) = 0;
    virtual int currentX() const = 0;
    virtual int currentY() const = 0;
    virtual int pageWidth() const = 0; // twips

    // Prints `text` at the current position, then moves to the start of the next line (x = 0).
    // A line that would pass the page's bottom goes to a new page.
    virtual void printLine(const QString &text) = 0;
    // Draws `picture` at its natural size with its top-left corner at (x, y).
    virtual void drawPicture(const QImage &picture, int x, int y) = 0;

    virtual void endDocument() = 0;
};
