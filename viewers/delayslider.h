#pragma once

#include <QSlider>

// A horizontal slider that highlights the range from its start to its value, as the delay
// sliders of the viewers do.
class DelaySlider : public QSlider
{
    Q_OBJECT

public:
    explicit DelaySlider(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};
