#include "desktoplauncher.h"

#include "filenames.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

DesktopLauncher::DesktopLauncher(QString programDirectory)
    : m_programDirectory(std::move(programDirectory))
{
}

void DesktopLauncher::openDocument(const QString &path)
{
    if (QFileInfo::exists(path))
        QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

void DesktopLauncher::startProgram(const QString &program, const QStringList &arguments)
{
    const QString found = QFileInfo(program).isAbsolute()
                              ? (QFileInfo(program).isExecutable() ? program : QString())
                              : QStandardPaths::findExecutable(program);
    if (!found.isEmpty())
        QProcess::startDetached(found, arguments);
}

void DesktopLauncher::startDisplaySettings()
{
    const CommandLine command = displaySettingsCommand([](const QString &name) {
        return QStandardPaths::findExecutable(name);
    });
    if (!command.program.isEmpty())
        QProcess::startDetached(command.program, command.arguments);
}

void DesktopLauncher::openHelp(const HelpTopic &topic)
{
    const QString page = resolveInDirectory(m_programDirectory, helpPageName(topic.file));
    if (!QFileInfo::exists(page))
        return;
    QUrl url = QUrl::fromLocalFile(page);
    if (topic.context != 0)
        url.setFragment(QStringLiteral("contexte-%1").arg(topic.context));
    QDesktopServices::openUrl(url);
}

CommandLine displaySettingsCommand(const std::function<QString(const QString &)> &findProgram)
{
    const QList<CommandLine> candidates = {
        {QStringLiteral("gnome-control-center"), {QStringLiteral("display")}},
        {QStringLiteral("kcmshell6"), {QStringLiteral("kcm_kscreen")}},
        {QStringLiteral("kcmshell5"), {QStringLiteral("kcm_kscreen")}},
        {QStringLiteral("xfce4-display-settings"), {}},
        {QStringLiteral("lxqt-config-monitor"), {}},
        {QStringLiteral("arandr"), {}},
    };
    for (const CommandLine &candidate : candidates) {
        const QString path = findProgram(candidate.program);
        if (!path.isEmpty())
            return {path, candidate.arguments};
    }
    return {};
}

QString helpPageName(const QString &helpFile)
{
    return QFileInfo(helpFile).completeBaseName().toLower() + QStringLiteral(".htm");
}
