#include "textviewerform.h"

#include "foundfiles.h"
#include "printer.h"
#include "viewerrules.h"

#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QToolButton>

TextViewerForm::TextViewerForm(FoundFiles &found, const Services &services, Printer &printer, QWidget *parent)
    : ViewerForm(found, services, 10, parent)
    , m_printer(printer)
{
    setWindowTitle(QStringLiteral("Kalvex2: Fichiers DIZ ou  TXT"));
    m_text = new QPlainTextEdit(this);
    m_text->setObjectName(QStringLiteral("text"));
    m_text->setAccessibleName(QStringLiteral("Texte du fichier"));
    m_text->setReadOnly(true);
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_text->setMinimumSize(480, 300);
    setViewArea(m_text);

    connect(addCopyAndPrintButtons(QStringLiteral("Imprimer le texte")), &QToolButton::clicked, this, &TextViewerForm::print);
    resize(640, 520);
}

void TextViewerForm::start()
{
    m_show.run(m_found.count(), [this](int row) {
        if (showCurrentFile(row))
            m_text->setPlainText(ViewerRules::readWholeText(m_currentLocalPath));
    });
}

void TextViewerForm::print()
{
    m_printer.choosePrinter();
    PrinterFont font = m_printer.chooseFont(3);
    if (font.name.isEmpty())
        font.name = QStringLiteral("MS Sans Serif");
    font.bold = false; // the dialog gives the name, the size and the italic attribute
    m_printer.setFont(font);
    m_printer.setTextColour(m_printer.chooseColour());
    const int boxWidthTwips = m_text->width() * 1440 / std::max(1, m_text->logicalDpiX());
    const int x = ViewerRules::textPrintX(m_printer.pageWidth(), boxWidthTwips);
    m_printer.setCurrentY(10);
    // Every line starts at the block's left edge, so the block stays centred as a whole.
    const QStringList lines = m_text->toPlainText().split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        m_printer.setCurrentX(x);
        m_printer.printLine(line);
    }
    m_printer.endDocument();
}
