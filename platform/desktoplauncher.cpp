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

void DesktopLauncher::startWindowsFile(const QString &path)
{
    const CommandLine command = wineCommand(path, [](const QString &name) { return QStandardPaths::findExecutable(name); });
    // Old programs look for their data beside them.
    if (!command.program.isEmpty() && QFileInfo::exists(path))
        QProcess::startDetached(command.program, command.arguments, QFileInfo(path).absolutePath());
}

void DesktopLauncher::startDosProgram(const QString &path)
{
    const CommandLine command = dosCommand(path, [](const QString &name) { return QStandardPaths::findExecutable(name); });
    if (!command.program.isEmpty() && QFileInfo::exists(path))
        QProcess::startDetached(command.program, command.arguments, QFileInfo(path).absolutePath());
}

CommandLine wineCommand(const QString &path, const FindProgram &findProgram)
{
    const QString wine = findProgram(QStringLiteral("wine"));
    if (wine.isEmpty())
        return {};
    return {wine, {QStringLiteral("start"), QStringLiteral("/unix"), path}};
}

CommandLine dosCommand(const QString &path, const FindProgram &findProgram)
{
    const QString dosbox = findProgram(QStringLiteral("dosbox"));
    if (dosbox.isEmpty())
        return wineCommand(path, findProgram);
    const QFileInfo program(path);
    // Each -c is one dosbox command; the folder is quoted for dosbox's own parser, which splits
    // at blanks. The program's name is the one on the disc (DOS names hold no blanks).
    return {dosbox,
            {QStringLiteral("-c"), QStringLiteral("mount c \"%1\"").arg(program.absolutePath()),
             QStringLiteral("-c"), QStringLiteral("c:"), QStringLiteral("-c"), program.fileName()}};
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
