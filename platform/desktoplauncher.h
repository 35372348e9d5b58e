#pragma once

#include "launcher.h"

#include <functional>

// Documents open through the desktop (xdg-open), programs start detached with their arguments.
// Help files named as the old system named them ("DEMO.HLP") stand for HTML pages of the same
// base name in the program folder ("demo.htm"), opened at the anchor "contexte-<context>".
class DesktopLauncher final : public Launcher
{
public:
    explicit DesktopLauncher(QString programDirectory);

    void openDocument(const QString &path) override;
    void startProgram(const QString &program, const QStringList &arguments) override;
    void startDisplaySettings() override;
    void openHelp(const HelpTopic &topic) override;
    void startWindowsFile(const QString &path) override;
    void startDosProgram(const QString &path) override;

private:
    QString m_programDirectory;
};

struct CommandLine
{
    QString program;
    QStringList arguments;
};

using FindProgram = std::function<QString(const QString &)>;

// "wine start /unix PATH": wine opens programs, BAT files and (with its winhlp32) HLP files by
// their Unix path. An empty program when wine is not found.
CommandLine wineCommand(const QString &path, const FindProgram &findProgram);

// dosbox with the program's folder mounted as C: and the program run there; wine when there is no
// dosbox; an empty program when there is neither.
CommandLine dosCommand(const QString &path, const FindProgram &findProgram);

// The first display settings tool that `findProgram` finds, in the desktops' usual order;
// an empty program when there is none.
CommandLine displaySettingsCommand(const std::function<QString(const QString &)> &findProgram);

// The page standing for a help file: its base name in lower case with ".htm".
QString helpPageName(const QString &helpFile);
