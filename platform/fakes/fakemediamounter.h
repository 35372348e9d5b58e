#pragma once

#include "mediamounter.h"

#include <QHash>
#include <QStringList>

#include <functional>

// Lists the media a test gives and "mounts" them where the test says, recording the calls.
class FakeMediaMounter final : public MediaMounter
{
public:
    QStringList unmountedMedia() override
    {
        ++listings;
        return media;
    }

    // A mounted medium leaves the list; `onMount` lets the test's drives show the new mount.
    std::optional<QString> mount(const QString &device) override
    {
        mounted.append(device);
        const auto point = mountPoints.constFind(device);
        if (point == mountPoints.cend())
            return std::nullopt;
        media.removeAll(device);
        if (onMount)
            onMount(device, *point);
        return *point;
    }

    QStringList media; // the devices unmountedMedia() lists
    QHash<QString, QString> mountPoints; // by device: where mount() mounts it
    std::function<void(const QString &device, const QString &mountPoint)> onMount;
    int listings = 0;
    QStringList mounted; // the devices mount() was asked for
};
