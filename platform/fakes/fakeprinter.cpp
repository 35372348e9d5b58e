#include "fakeprinter.h"

#include "pageprinter.h"

#include <QPrinter>

FakePrinter::FakePrinter() = default;

FakePrinter::FakePrinter(const QString &pdfFile)
    : m_pdf(std::make_unique<QPrinter>(QPrinter::HighResolution))
{
    m_pdf->setOutputFormat(QPrinter::PdfFormat);
    m_pdf->setOutputFileName(pdfFile);
    m_pdf->setPageSize(QPageSize(QPageSize::A4));
    m_page = std::make_unique<PagePrinter>(*m_pdf);
}

FakePrinter::~FakePrinter() = default;

bool FakePrinter::choosePrinter()
{
    log.append(QStringLiteral("choosePrinter"));
    return printerAnswer;
}

PrinterFont FakePrinter::chooseFont(int flags)
{
    log.append(QStringLiteral("chooseFont"));
    fontFlags = flags;
    return fontAnswer;
}

QColor FakePrinter::chooseColour()
{
    log.append(QStringLiteral("chooseColour"));
    return colourAnswer;
}

void FakePrinter::setFont(const PrinterFont &font)
{
    log.append(QStringLiteral("font=%1,%2%3%4").arg(font.name).arg(font.pointSize)
                   .arg(font.bold ? QStringLiteral(",bold") : QString())
                   .arg(font.italic ? QStringLiteral(",italic") : QString()));
    if (m_page)
        m_page->setFont(font);
}

void FakePrinter::setTextColour(const QColor &colour)
{
    log.append(QStringLiteral("colour=") + colour.name());
    if (m_page)
        m_page->setTextColour(colour);
}

void FakePrinter::setCurrentX(int twips)
{
    log.append(QStringLiteral("x=%1").arg(twips));
    m_x = twips;
    if (m_page)
        m_page->setCurrentX(twips);
}

void FakePrinter::setCurrentY(int twips)
{
    log.append(QStringLiteral("y=%1").arg(twips));
    m_y = twips;
    if (m_page)
        m_page->setCurrentY(twips);
}

int FakePrinter::pageWidth() const
{
    return m_page ? m_page->pageWidth() : 11906; // A4 less no margin
}

void FakePrinter::printLine(const QString &text)
{
    log.append(QStringLiteral("print:") + text);
    if (m_page) {
        m_page->printLine(text);
        m_x = m_page->currentX();
        m_y = m_page->currentY();
    } else {
        m_x = 0;
        m_y += 240;
    }
}

void FakePrinter::drawPicture(const QImage &picture, int x, int y)
{
    log.append(QStringLiteral("picture=%1x%2@%3,%4").arg(picture.width()).arg(picture.height()).arg(x).arg(y));
    if (m_page)
        m_page->drawPicture(picture, x, y);
}

void FakePrinter::endDocument()
{
    log.append(QStringLiteral("endDocument"));
    if (m_page)
        m_page->endDocument();
    m_x = m_y = 0;
}

QStringList FakePrinter::printedLines() const
{
    QStringList lines;
    for (const QString &entry : log) {
        if (entry.startsWith(QLatin1String("print:")))
            lines.append(entry.mid(6));
    }
    return lines;
}
