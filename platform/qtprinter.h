#pragma once

#include "pageprinter.h"
#include "printer.h"

#include <QPrinter>

// The system printer with Qt's print, font and colour dialogs.
class QtPrinter final : public Printer
{
public:
    QtPrinter();

    bool choosePrinter() override;
    PrinterFont chooseFont(int flags) override;
    QColor chooseColour() override;

    void setFont(const PrinterFont &font) override { m_page.setFont(font); }
    void setTextColour(const QColor &colour) override { m_page.setTextColour(colour); }
    void setCurrentX(int twips) override { m_page.setCurrentX(twips); }
    void setCurrentY(int twips) override { m_page.setCurrentY(twips); }
    int currentX() const override { return m_page.currentX(); }
    int currentY() const override { return m_page.currentY(); }
    int pageWidth() const override { return m_page.pageWidth(); }
    void printLine(const QString &text) override { m_page.printLine(text); }
    void drawPicture(const QImage &picture, int x, int y) override { m_page.drawPicture(picture, x, y); }
    void endDocument() override { m_page.endDocument(); }

private:
    QPrinter m_printer;
    PagePrinter m_page;
};
