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

// Positions are measured from the paper's edge: the width is the paper's, the height runs to the
// bottom of the printable area, where a new page begins.
int PagePrinter::pageWidth() const
{
    return int(std::lround(m_printer.pageLayout().fullRectPixels(m_printer.resolution()).width() / deviceUnitsPerTwip()));
}

int PagePrinter::pageHeight() const
{
    const QPageLayout layout = m_printer.pageLayout();
    const int bottom = layout.fullRectPixels(m_printer.resolution()).height() - layout.marginsPixels(m_printer.resolution()).bottom();
    return int(std::lround(bottom / deviceUnitsPerTwip()));
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
    // Positions are measured from the paper's edge, not from the printable area; set here, after
    // the print dialog, which may have changed the page layout.
    m_printer.setFullPage(true);
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
