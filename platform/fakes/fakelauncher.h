#pragma once

#include "launcher.h"

#include <QList>
#include <QStringList>

class FakeLauncher final : public Launcher
{
public:
    void openDocument(const QString &path) override { documents.append(path); }
    void startProgram(const QString &program, const QStringList &arguments) override
    {
        programs.append(QStringList{program} + arguments);
    }
    void startDisplaySettings() override { ++displaySettings; }
    void openHelp(const HelpTopic &topic) override { helps.append(topic); }
    void startWindowsFile(const QString &path) override { windowsFiles.append(path); }
    void startDosProgram(const QString &path) override { dosPrograms.append(path); }

    QStringList documents;
    QList<QStringList> programs; // program then its arguments
    int displaySettings = 0;
    QList<HelpTopic> helps;
    QStringList windowsFiles; // through wine
    QStringList dosPrograms;  // in dosbox
};
