#pragma once

class Clock;
class Dialogs;
class DirectoryLister;
class Drives;
class FolderPicker;
class Launcher;
class MediaPlayer;
class PictureLoader;
class Printer;

// Every system service the windows use, as the program starts them (or a test's fakes).
// Windows take the services they need one by one; only the main window receives them all.
struct PlatformServices
{
    Dialogs &dialogs;
    FolderPicker &folderPicker;
    Launcher &launcher;
    Drives &drives;
    DirectoryLister &directoryLister;
    Printer &printer;
    PictureLoader &pictures;
    Clock &clock;
    MediaPlayer &media;
};
