#pragma once

#include "printer.h"

#include <QStringList>
#include <memory>

class PagePrinter;
class QPrinter;

// Records what a window asks of the printer, one line per call ("choosePrinter", "x=2000",
// "print:03-21-2001", ...), and answers the dialogs from its members. Given a PDF file name,
// it also prints for real into that file.
class FakePrinter final : public Printer
{
public:
    FakePrinter();
    explicit FakePrinter(const QString &pdfFile);
    ~FakePrinter() override;

    bool choosePrinter() override;
    PrinterFont chooseFont(int flags) override;
    QColor chooseColour() override;
    void setFont(const PrinterFont &font) override;
    void setTextColour(const QColor &colour) override;
    void setCurrentX(int twips) override;
    void setCurrentY(int twips) override;
    int currentX() const override { return m_x; }
    int currentY() const override { return m_y; }
    int pageWidth() const override;
    void printLine(const QString &text) override;
    void drawPicture(const QImage &picture, int x, int y) override;
    void endDocument() override;

    QStringList printedLines() const; // the texts of printLine, in order

    QStringList log;
    PrinterFont fontAnswer{QStringLiteral("DejaVu Sans"), 12, false, false};
    QColor colourAnswer = Qt::black;
    bool printerAnswer = true;
    int fontFlags = -1; // the flags the font dialog was shown with

private:
    std::unique_ptr<QPrinter> m_pdf;
    std::unique_ptr<PagePrinter> m_page;
    int m_x = 0;
    int m_y = 0;
};
