#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <optional>

class MediaMounter;

enum class DriveType { Unknown, Removable, Fixed, CdRom };

struct Drive
{
    QString name;       // a lower-case letter and a colon, "d:"
    DriveType type = DriveType::Unknown;
    QString mountPoint; // the native root of the drive; empty when no medium is mounted
    QString label = {}; // the volume label, when the medium has one
    QString device = {}; // what is mounted ("/dev/sr0", an image): tells drives apart over time
    QString medium = {}; // what the mounted medium is known by (its file system, its image); empty when none

    bool operator==(const Drive &) const = default;
};

// The system's drives, named by letters as the catalogues name them. changed() tells that drives
// came or went (a stick plugged in, a disc mounted); the letters of the drives that stay do not change.
class Drives : public QObject
{
    Q_OBJECT

public:
    ~Drives() override = default;

    // Every drive, in letter order. The same set of drives gives the same letters every time.
    virtual QList<Drive> drives() = 0;

    // The drive named by `name` ("d:", "d:\", "D", ...), if there is one.
    std::optional<Drive> find(const QString &name);

    // Media present but mounted nowhere are mounted through `mounter`, which outlives the drives;
    // without one (the default) nothing is ever mounted.
    void setMounter(MediaMounter *mounter) { m_mounter = mounter; }
    // Mounts the medium in drive `name` ("d:") when one is there and mounted nowhere (a disc in an
    // optical drive nobody mounted); true when it was mounted.
    bool mountMedium(const QString &name);
    // Mounts every removable medium present and mounted nowhere; true when one was.
    bool mountUnmountedMedia();

signals:
    void changed();

private:
    MediaMounter *m_mounter = nullptr;
};

// The drive name ("d:") of a name or root such as "D:\", "d:" or "d"; empty when there is no letter.
QString driveNameOf(const QString &nameOrRoot);

// The drive whose mount point holds `path` (the deepest one; "/" holds every absolute path), as an
// index into `drives`; -1 when none does.
qsizetype driveHolding(const QList<Drive> &drives, const QString &path);

// What a drive chooser shows under the letter: the volume label and the mount point, or that the
// drive holds no medium.
QString driveDescription(const Drive &drive);

// A drive's line in a drive chooser's list: its name, its volume label and its mount point
// ("d:  PCFUN75  (/media/user/PCFUN75)"), or that it is empty ("d:  (vide)").
QString driveListLine(const Drive &drive);
