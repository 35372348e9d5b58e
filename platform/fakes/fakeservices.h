#pragma once

#include "fakedialogs.h"
#include "fakedirectorylister.h"
#include "fakedrives.h"
#include "fakelauncher.h"
#include "fakemediaplayer.h"
#include "fakeprinter.h"
#include "platformservices.h"
#include "qtpictureloader.h"
#include "clock.h"

#include <QDateTime>

#include <functional>

// A clock that stands still unless a test moves it. `onRead` runs at every reading, before the
// time is given: a test advances the clock from there, even while a window waits on it.
class FakeClock final : public Clock
{
public:
    QDateTime now() const override
    {
        ++reads;
        if (onRead)
            onRead();
        return current;
    }
    void advanceSeconds(double seconds) { current = current.addMSecs(qRound64(seconds * 1000)); }

    QDateTime current{QDate(2001, 3, 21), QTime(10, 30)};
    std::function<void()> onRead;
    mutable int reads = 0;
};

// Records which pictures were asked for and reads them for real.
class RecordingPictureLoader final : public PictureLoader
{
public:
    QImage loadPicture(const QString &path) override { pictures.append(path); return m_real.loadPicture(path); }
    QIcon loadIcon(const QString &path) override { icons.append(path); return m_real.loadIcon(path); }

    QStringList pictures;
    QStringList icons;

private:
    QtPictureLoader m_real;
};

// One of every fake, wired as the program wires the real services.
struct FakeServices
{
    FakeDialogs dialogs;
    FakeFolderPicker folderPicker;
    FakeLauncher launcher;
    FakeDrives drives;
    FakeDirectoryLister directoryLister;
    FakePrinter printer;
    RecordingPictureLoader pictures;
    FakeClock clock;
    FakeMediaPlayer media;

    PlatformServices services()
    {
        return {dialogs, folderPicker, launcher, drives, directoryLister, printer, pictures, clock, media};
    }
};
