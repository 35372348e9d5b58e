#include "delayslider.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>

DelaySlider::DelaySlider(QWidget *parent)
    : QSlider(Qt::Horizontal, parent)
{
    setTickPosition(QSlider::TicksBelow);
    setTickInterval(1);
    setPageStep(1);
}

void DelaySlider::paintEvent(QPaintEvent *event)
{
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect groove = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderGroove, this);
    const QRect handle = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    {
        QPainter painter(this);
        const QRect band(groove.left(), groove.center().y() - 3, handle.center().x() - groove.left(), 7);
        painter.fillRect(band, palette().color(QPalette::Highlight));
    }
    QSlider::paintEvent(event);
}
