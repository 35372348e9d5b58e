#pragma once

#include "viewerrules.h"

#include <QImage>
#include <QWidget>

// The image viewer's frame: a canvas that keeps what was drawn on it until it is cleared.
class PictureFrame : public QWidget
{
    Q_OBJECT

public:
    explicit PictureFrame(QWidget *parent = nullptr);

    // Draws `picture` into the frame as `fit` says.
    void draw(const QImage &picture, const ViewerRules::Fit &fit);
    const QImage &canvas() const { return m_canvas; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QImage m_canvas;
};
