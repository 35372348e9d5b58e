#pragma once

#include <QObject>
#include <QString>

#include <functional>

class Clock;

// The timed show shared by the three viewers: the delay label's text, the pause and stop boxes,
// the waits and the dismissal. It runs on the window's thread and keeps handling events in every
// wait, so each handler of the window may run (and re-enter) while a show waits. The window shows
// the state the signals give and passes the user's actions in.
class SlideShow : public QObject
{
    Q_OBJECT

public:
    static constexpr int kInitialDelay = 2;

    explicit SlideShow(Clock &clock, QObject *parent = nullptr);

    QString delayText() const { return m_delayText; }
    void setDelayText(const QString &text);
    // The slider moved: the delay label shows its value as plain digits.
    void sliderMoved(int value);
    // The delay label's numeric value: a leading decimal number, 0 for "" or any other text.
    double delaySeconds() const { return numericValue(m_delayText); }
    static double numericValue(const QString &text);

    bool isPaused() const { return m_paused; }
    void setPaused(bool paused);
    bool isStopped() const { return m_stopped; }
    void setStopped(bool stopped);

    // Resets the delay to 2 seconds and unticks the pause and stop boxes, as every start does.
    void begin();
    // A show of `count` steps: step(i), then the delay, then while paused; ends when stopped.
    void run(int count, const std::function<void(int)> &step);
    // A show of pages of `pageSize` cells: step(i, cell) with cells from 1, waiting after each
    // full page only. Cells of a last page that is not full are left to the caller as they were.
    void runPages(int count, int pageSize, const std::function<void(int, int)> &step);

    // The dismissal: pause unticked, delay label emptied (so a running show finishes at once),
    // one second's wait, then dismissed().
    void dismiss();

    // Handles events until the clock has passed now + `seconds`.
    void wait(double seconds);
    // Handles events while the pause box is ticked.
    void waitWhilePaused();

signals:
    void delayTextChanged(const QString &text);
    void sliderReset(int value);
    void pausedChanged(bool paused);
    void stoppedChanged(bool stopped);
    void dismissed();

private:
    bool waitAfterStep();
    bool handleEventsBriefly(); // false once the program is quitting

    Clock &m_clock;
    QString m_delayText = QString::number(kInitialDelay);
    bool m_paused = false;
    bool m_stopped = false;
};
