#pragma once

#include "mediamounter.h"

#include <QDBusConnection>
#include <QMap>
#include <QVariantMap>

// What UDisks2's ObjectManager.GetManagedObjects tells: by object path, each interface's
// properties, an object path given as its text and a list of byte strings ("aay") as a QByteArrayList.
using UDisksObjects = QMap<QString, QMap<QString, QVariantMap>>;

// The devices of the file systems in `objects` that are mounted nowhere, not hidden, and on the
// medium of a removable or optical drive; in object path order.
QStringList unmountedMediaIn(const UDisksObjects &objects);

// Mounts through UDisks2 (org.freedesktop.UDisks2, Filesystem.Mount with no options, which the
// active user may call without a password). Without the bus or the service (a container), every
// call answers nothing at once: the service's owner is asked for before any long call.
class UDisks2Mounter final : public MediaMounter
{
public:
    explicit UDisks2Mounter(const QDBusConnection &bus = QDBusConnection::systemBus());

    QStringList unmountedMedia() override;
    std::optional<QString> mount(const QString &device) override;

private:
    std::optional<UDisksObjects> managedObjects();

    QDBusConnection m_bus;
};
