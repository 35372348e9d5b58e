#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// Mounts the media a user inserted but nobody mounted: a desktop without an automounter (a bare
// window manager) leaves a disc or a stick unmounted.
class MediaMounter
{
public:
    virtual ~MediaMounter() = default;

    // The devices ("/dev/sr0", "/dev/sdb1") of the file systems of removable media (optical discs,
    // sticks) that are present and not mounted.
    virtual QStringList unmountedMedia() = 0;

    // Mounts the file system on `device`; where it is mounted, or nothing.
    virtual std::optional<QString> mount(const QString &device) = 0;
};
