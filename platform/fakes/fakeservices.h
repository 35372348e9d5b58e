#pragma once

#include "fakedialogs.h"
#include "fakedirectorylister.h"
#include "fakedrives.h"
#include "fakelauncher.h"
#include "fakeprinter.h"
#include "platformservices.h"
#include "qtpictureloader.h"
#include "clock.h"

#include <QDateTime>

class FakeClock final : public Clock
{
public:
    QDateTime now() const override { return current; }
    QDateTime current{QDate(2001, 3, 21), QTime(10, 30)};
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

    PlatformServices services()
    {
        return {dialogs, folderPicker, launcher, drives, directoryLister, printer, pictures, clock};
    }
};
