#include "pictureframe.h"

#include <QPainter>
#include <QResizeEvent>

PictureFrame::PictureFrame(QWidget *parent)
    : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(QStringLiteral("Image affichée"));
}

void PictureFrame::draw(const QImage &picture, const ViewerRules::Fit &fit)
{
    if (m_canvas.size() != size()) { // not laid out yet
        m_canvas = QImage(size(), QImage::Format_ARGB32_Premultiplied);
        m_canvas.fill(palette().color(QPalette::Window));
    }
    if (fit.clear)
        m_canvas.fill(palette().color(QPalette::Window));
    if (fit.draw && !fit.target.isEmpty() && !picture.isNull()) {
        QPainter painter(&m_canvas);
        painter.drawImage(fit.target, picture);
    }
    update();
}

void PictureFrame::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.drawImage(0, 0, m_canvas);
}

void PictureFrame::resizeEvent(QResizeEvent *event)
{
    QImage canvas(event->size(), QImage::Format_ARGB32_Premultiplied);
    canvas.fill(palette().color(QPalette::Window));
    QPainter painter(&canvas);
    painter.drawImage(0, 0, m_canvas);
    m_canvas = canvas;
}
