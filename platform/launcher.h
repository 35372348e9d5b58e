#pragma once

#include "dialogs.h"

#include <QString>
#include <QStringList>

// Opens documents and starts programs. Nothing here waits for what it starts, and a failure
// (missing file, missing program) is silent: callers never get an error to show.
class Launcher
{
public:
    virtual ~Launcher() = default;

    // Opens a document with the desktop's associated program (the "open" verb).
    virtual void openDocument(const QString &path) = 0;

    // Starts `program` with `arguments`, each passed as one argument (never through a shell).
    // A program that cannot be found is not started.
    virtual void startProgram(const QString &program, const QStringList &arguments) = 0;

    // Starts the desktop's display settings tool, if there is one.
    virtual void startDisplaySettings() = 0;

    // Opens a help file at a context ("DEMO.HLP", 1000).
    virtual void openHelp(const HelpTopic &topic) = 0;

    // Starts a file of an old Windows system found on a medium (a Windows program, a BAT or an
    // HLP file) through wine, when wine is installed; otherwise nothing happens.
    virtual void startWindowsFile(const QString &path) = 0;

    // Starts a DOS program (COM or DOS EXE) found on a medium in dosbox, else through wine, else
    // not at all.
    virtual void startDosProgram(const QString &path) = 0;
};
