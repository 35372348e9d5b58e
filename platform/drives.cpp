#include "drives.h"

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
