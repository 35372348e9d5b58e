#include "datadirectory.h"
#include "desktoplauncher.h"
#include "linuxdirectorylister.h"
#include "linuxdrives.h"
#include "mainform.h"
#include "programsetup.h"
#include "qtmediawindow.h"
#include "qtpictureloader.h"
#include "qtprinter.h"
#include "systemclock.h"
#include "udisksmounter.h"
#include "widgetdialogs.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    // Qt 6.4's FFmpeg media backend crashes on a file with sound when there is no sound device;
    // GStreamer plays the old AVI and WAV codecs. A user's own choice is kept.
    if (qEnvironmentVariableIsEmpty("QT_MEDIA_BACKEND"))
        qputenv("QT_MEDIA_BACKEND", "gstreamer");
    QApplication app(argc, argv);
    setUpProgram();

    // The data directory is the program's own, wherever it was started from.
    const DataDirectory data(QCoreApplication::applicationDirPath());

    DesktopLauncher launcher(data.path());
    WidgetDialogs dialogs(launcher, QApplication::applicationName());
    WidgetFolderPicker folderPicker;
    // A disc or stick nobody mounted (no automounter) is mounted when a scan or an action needs it.
    UDisks2Mounter mounter;
    // The letters given to media are remembered beside the catalogues, for the next runs.
    LinuxDrives drives(data.file(QStringLiteral("lecteurs.txt")));
    drives.setMounter(&mounter);
    LinuxDirectoryLister directoryLister;
    QtPrinter printer;
    QtPictureLoader pictures;
    SystemClock clock;
    QtMediaWindow media;
    const PlatformServices services{dialogs, folderPicker, launcher, drives, directoryLister,
                                    printer, pictures, clock, media};

    MainForm window(data, services);
    window.show();
    return QApplication::exec();
}
