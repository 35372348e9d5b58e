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
