#include "slideshow.h"

#include "clock.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QEventLoop>
#include <QRegularExpression>
#include <QTimer>

SlideShow::SlideShow(Clock &clock, QObject *parent)
    : QObject(parent)
    , m_clock(clock)
{
}

void SlideShow::setDelayText(const QString &text)
{
    m_delayText = text;
    emit delayTextChanged(text);
}

void SlideShow::sliderMoved(int value)
{
    setDelayText(QString::number(value));
}

double SlideShow::numericValue(const QString &text)
{
    static const QRegularExpression leadingNumber(QStringLiteral("^\\s*[+-]?(\\d+\\.?\\d*|\\.\\d+)"));
    const QRegularExpressionMatch match = leadingNumber.match(text);
    return match.hasMatch() ? match.captured(0).trimmed().toDouble() : 0.0;
}

void SlideShow::setPaused(bool paused)
{
    if (m_paused == paused)
        return;
    m_paused = paused;
    emit pausedChanged(paused);
}

void SlideShow::setStopped(bool stopped)
{
    if (m_stopped == stopped)
        return;
    m_stopped = stopped;
    emit stoppedChanged(stopped);
}

void SlideShow::begin()
{
    setDelayText(QString::number(kInitialDelay));
    emit sliderReset(kInitialDelay);
    setPaused(false);
    setStopped(false);
}

void SlideShow::run(int count, const std::function<void(int)> &step)
{
    begin();
    for (int i = 0; i < count; ++i) {
        step(i);
        if (!waitAfterStep())
            return;
    }
}

void SlideShow::runPages(int count, int pageSize, const std::function<void(int, int)> &step)
{
    begin();
    int filled = 0;
    for (int i = 0; i < count; ++i) {
        const int cell = ++filled;
        step(i, cell);
        if (cell == pageSize) {
            if (!waitAfterStep())
                return;
            filled = 0;
        }
    }
}

bool SlideShow::waitAfterStep()
{
    wait(delaySeconds());
    waitWhilePaused();
    return !m_stopped;
}

void SlideShow::dismiss()
{
    setPaused(false);
    setDelayText(QString());
    wait(1);
    waitWhilePaused();
    emit dismissed();
}

void SlideShow::wait(double seconds)
{
    const QDateTime end = m_clock.now().addMSecs(qRound64(seconds * 1000));
    QCoreApplication::processEvents();
    while (m_clock.now() < end) {
        if (!handleEventsBriefly())
            return;
    }
}

void SlideShow::waitWhilePaused()
{
    while (m_paused) {
        if (!handleEventsBriefly())
            return;
    }
}

bool SlideShow::handleEventsBriefly()
{
    // Handles what is pending, then sleeps in the event loop until an event or 15 ms have passed.
    QCoreApplication::processEvents();
    QEventLoop loop;
    QTimer::singleShot(15, &loop, &QEventLoop::quit);
    if (loop.exec() == 0)
        return true;
    // The program is quitting: no event loop runs any more, so the show ends here.
    setPaused(false);
    setStopped(true);
    return false;
}
