#include "imageviewerform.h"

#include "datadirectory.h"
#include "foundfiles.h"
#include "pictureframe.h"
#include "pictureloader.h"
#include "printer.h"

#include <QToolButton>

ImageViewerForm::ImageViewerForm(FoundFiles &found, const Services &services, Printer &printer, QWidget *parent)
    : ViewerForm(found, services, 10, parent)
    , m_printer(printer)
{
    setWindowTitle(QStringLiteral("Visualisation des images:BMP,GIF,JPG,ICO,WMF,DIB,CUR ou EMF "));
    m_frame = new PictureFrame(this);
    m_frame->setObjectName(QStringLiteral("frame"));
    m_frame->setMinimumSize(400, 300);
    setViewArea(m_frame);

    connect(addCopyAndPrintButtons(QStringLiteral("Imprimer l'image")), &QToolButton::clicked, this, &ImageViewerForm::print);
    resize(640, 520);
}

void ImageViewerForm::start()
{
    m_show.run(m_found.count(), [this](int row) { showPicture(row); });
}

void ImageViewerForm::showPicture(int row)
{
    if (!showCurrentFile(row))
        return;
    const QImage picture = m_currentLocalPath.isEmpty() ? QImage() : m_pictures.loadPicture(m_currentLocalPath);
    if (!picture.isNull())
        m_sizingBox = picture; // a file that does not load leaves the previous picture
    if (!m_sizingBox.isNull())
        m_frame->draw(m_sizingBox, ViewerRules::fitPicture(m_sizingBox.size(), m_frame->size()));
}

void ImageViewerForm::print()
{
    m_printer.setCurrentX(2000);
    m_printer.setCurrentY(1000);
    m_printer.choosePrinter();
    m_printer.drawPicture(m_sizingBox, 1, 1);
    m_printer.endDocument();
}
