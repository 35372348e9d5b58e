#include "backgroundwork.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QList>
#include <QMutex>
#include <QTimer>

#include <thread>

namespace BackgroundWork {
namespace {

// How often a waiting caller reads the clock.
constexpr int kTickMilliseconds = 100;

struct State
{
    QMutex mutex;
    bool busy = false;
    bool abandoned = false; // the running work's caller gave up on it
    QList<QEventLoop *> waiting; // woken when the worker ends
};

State &state()
{
    // Never destroyed: abandoned work may still end after the program's statics are gone.
    static State *const instance = new State;
    return *instance;
}

} // namespace

bool busy()
{
    State &s = state();
    QMutexLocker lock(&s.mutex);
    return s.busy;
}

bool run(std::function<void()> work, const Clock &clock, int milliseconds)
{
    if (!QCoreApplication::instance()) {
        work(); // no event loop to keep going (a command-line tool)
        return true;
    }
    const QDateTime deadline = clock.now().addMSecs(milliseconds);
    State &s = state();
    auto done = std::make_shared<bool>(false); // guarded by s.mutex
    QEventLoop loop;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, &loop, &QEventLoop::quit);
    tick.start(kTickMilliseconds);

    bool started = false;
    bool finished = false;
    QMutexLocker lock(&s.mutex);
    s.waiting.append(&loop);
    for (;;) {
        if (!started) {
            if (!s.busy) {
                s.busy = true;
                s.abandoned = false;
                started = true;
                std::thread([work = std::move(work), done, &s] {
                    work();
                    QMutexLocker workerLock(&s.mutex);
                    *done = true;
                    s.busy = false;
                    for (QEventLoop *waiter : std::as_const(s.waiting))
                        QMetaObject::invokeMethod(waiter, &QEventLoop::quit, Qt::QueuedConnection);
                }).detach();
            } else if (s.abandoned) {
                break; // refused: stuck work still holds the worker
            }
        }
        if (started && *done) {
            finished = true;
            break;
        }
        lock.unlock();
        const bool late = clock.now() >= deadline;
        lock.relock();
        if (late) {
            if (started && !*done)
                s.abandoned = true;
            finished = started && *done;
            break;
        }
        lock.unlock();
        loop.exec();
        lock.relock();
    }
    s.waiting.removeOne(&loop);
    return finished;
}

} // namespace BackgroundWork
