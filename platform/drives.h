#pragma once

#include <QList>
#include <QString>
#include <optional>

enum class DriveType { Unknown, Removable, Fixed, CdRom };

struct Drive
{
    QString name;       // a lower-case letter and a colon, "d:"
    DriveType type = DriveType::Unknown;
    QString mountPoint; // the native root of the drive; empty when no medium is mounted

    bool operator==(const Drive &) const = default;
};

// The system's drives, named by letters as the catalogues name them.
class Drives
{
public:
    virtual ~Drives() = default;

    // Every drive, in letter order. The same set of drives gives the same letters every time.
    virtual QList<Drive> drives() = 0;

    // The drive named by `name` ("d:", "d:\", "D", ...), if there is one.
    std::optional<Drive> find(const QString &name);
};

// The drive name ("d:") of a name or root such as "D:\", "d:" or "d"; empty when there is no letter.
QString driveNameOf(const QString &nameOrRoot);
