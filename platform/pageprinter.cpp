#include "pageprinter.h"

#include <QFontMetricsF>
#include <QPrinter>
#include <cmath>

PagePrinter::PagePrinter(QPrinter &printer)
    : m_printer(printer)
{
}

PagePrinter::~PagePrinter()
{
    endDocument();
}

void PagePrinter::setFont(const PrinterFont &font)
{
    if (!font.name.isEmpty())
        m_font.setFamily(font.name);
    if (font.pointSize > 0)
        m_font.setPointSizeF(font.pointSize);
    m_font.setBold(font.bold);
    m_font.setItalic(font.italic);
}

double PagePrinter::deviceUnitsPerTwip() const
{
    return m_printer.resolution() / 1440.0;
}

int PagePrinter::pageWidth() const
{
    const QRect page = m_printer.pageLayout().paintRectPixels(m_printer.resolution());
    return int(std::lround(page.width() / deviceUnitsPerTwip()));
}

int PagePrinter::pageHeight() const
{
    const QRect page = m_printer.pageLayout().paintRectPixels(m_printer.resolution());
    return int(std::lround(page.height() / deviceUnitsPerTwip()));
}

int PagePrinter::lineHeight() const
{
    const QFontMetricsF metrics(m_font, &m_printer);
    return int(std::lround(metrics.lineSpacing() / deviceUnitsPerTwip()));
}

bool PagePrinter::ensureStarted()
{
    if (m_painter.isActive())
        return true;
    if (m_failed)
        return false;
    if (!m_painter.begin(&m_printer)) {
        m_failed = true; // no printer: what is printed goes nowhere, silently
        return false;
    }
    return true;
}

void PagePrinter::printLine(const QString &text)
{
    const int height = lineHeight();
    if (m_y + height > pageHeight() && m_y > 0) {
        if (ensureStarted())
            m_printer.newPage();
        m_y = 0;
    }
    if (ensureStarted()) {
        const double scale = deviceUnitsPerTwip();
        const QFontMetricsF metrics(m_font, &m_printer);
        m_painter.setFont(m_font);
        m_painter.setPen(m_colour);
        m_painter.drawText(QPointF(m_x * scale, m_y * scale + metrics.ascent()), text);
    }
    m_y += height;
    m_x = 0;
}

void PagePrinter::drawPicture(const QImage &picture, int x, int y)
{
    if (picture.isNull() || !ensureStarted())
        return;
    const double scale = deviceUnitsPerTwip();
    // A picture's pixel is a pixel of a 96 dpi screen: 15 twips.
    const QRectF target(x * scale, y * scale, picture.width() * 15 * scale, picture.height() * 15 * scale);
    m_painter.drawImage(target, picture);
}

void PagePrinter::endDocument()
{
    if (m_painter.isActive())
        m_painter.end();
    m_failed = false;
    m_x = 0;
    m_y = 0;
}
