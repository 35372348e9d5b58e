#include "drives.h"

#include "mediamounter.h"

QString driveNameOf(const QString &nameOrRoot)
{
    if (nameOrRoot.isEmpty() || !nameOrRoot.at(0).isLetter())
        return {};
    return nameOrRoot.left(1).toLower() + QLatin1Char(':');
}

std::optional<Drive> Drives::find(const QString &name)
{
    const QString wanted = driveNameOf(name);
    if (wanted.isEmpty())
        return std::nullopt;
    const QList<Drive> all = drives();
    for (const Drive &drive : all) {
        if (drive.name == wanted)
            return drive;
    }
    return std::nullopt;
}

bool Drives::mountMedium(const QString &name)
{
    if (!m_mounter)
        return false;
    const std::optional<Drive> drive = find(name);
    if (!drive || !drive->mountPoint.isEmpty() || drive->device.isEmpty())
        return false;
    // Only what the mounter lists: an empty drive or a fixed disk is never asked for.
    return m_mounter->unmountedMedia().contains(drive->device) && m_mounter->mount(drive->device).has_value();
}

bool Drives::mountUnmountedMedia()
{
    if (!m_mounter)
        return false;
    bool mounted = false;
    for (const QString &device : m_mounter->unmountedMedia())
        mounted = m_mounter->mount(device).has_value() || mounted;
    return mounted;
}

qsizetype driveHolding(const QList<Drive> &drives, const QString &path)
{
    qsizetype best = -1;
    qsizetype bestLength = -1;
    for (qsizetype i = 0; i < drives.size(); ++i) {
        QString root = drives[i].mountPoint;
        if (root.isEmpty())
            continue;
        if (!root.endsWith(QLatin1Char('/')))
            root += QLatin1Char('/');
        const bool holds = path == drives[i].mountPoint || path.startsWith(root);
        if (holds && root.size() > bestLength) {
            best = i;
            bestLength = root.size();
        }
    }
    return best;
}

QString driveListLine(const Drive &drive)
{
    if (drive.mountPoint.isEmpty())
        return drive.name + QStringLiteral("  (vide)");
    const QString label = drive.label.isEmpty() ? QString() : drive.label + QStringLiteral("  ");
    return drive.name + QStringLiteral("  ") + label + QLatin1Char('(') + drive.mountPoint + QLatin1Char(')');
}

QString driveDescription(const Drive &drive)
{
    if (drive.mountPoint.isEmpty())
        return QStringLiteral("(aucun support)");
    if (drive.label.isEmpty())
        return drive.mountPoint;
    return QStringLiteral("[%1]  %2").arg(drive.label, drive.mountPoint);
}
