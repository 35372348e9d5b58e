#include "udisksmounter.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QFile>

namespace {

const QString kService = QStringLiteral("org.freedesktop.UDisks2");
const QString kBlock = QStringLiteral("org.freedesktop.UDisks2.Block");
const QString kFilesystem = QStringLiteral("org.freedesktop.UDisks2.Filesystem");
const QString kDrive = QStringLiteral("org.freedesktop.UDisks2.Drive");

// The service answers a query at once; a mount may wait for a disc to spin up.
constexpr int kQueryMs = 2000;
constexpr int kMountMs = 15000;

// A path given as bytes ("ay", ending in NUL) as the system names it.
QString byteText(const QVariant &value)
{
    QByteArray bytes = value.toByteArray();
    while (bytes.endsWith('\0'))
        bytes.chop(1);
    return QFile::decodeName(bytes);
}

// The values the rules read, out of their D-Bus wrappings.
QVariant plainValue(const QVariant &value)
{
    if (value.metaType() == QMetaType::fromType<QDBusObjectPath>())
        return value.value<QDBusObjectPath>().path();
    if (value.metaType() != QMetaType::fromType<QDBusArgument>())
        return value;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("aay"))
        return value;
    QByteArrayList list;
    argument.beginArray();
    while (!argument.atEnd()) {
        QByteArray bytes;
        argument >> bytes;
        list.append(bytes);
    }
    argument.endArray();
    return QVariant::fromValue(list);
}

UDisksObjects objectsOf(const QDBusArgument &argument)
{
    UDisksObjects objects;
    argument.beginMap();
    while (!argument.atEnd()) {
        QDBusObjectPath path;
        argument.beginMapEntry();
        argument >> path;
        QMap<QString, QVariantMap> &interfaces = objects[path.path()];
        argument.beginMap();
        while (!argument.atEnd()) {
            QString name;
            QVariantMap properties;
            argument.beginMapEntry();
            argument >> name >> properties;
            argument.endMapEntry();
            for (auto it = properties.begin(); it != properties.end(); ++it)
                *it = plainValue(*it);
            interfaces.insert(name, properties);
        }
        argument.endMap();
        argument.endMapEntry();
    }
    argument.endMap();
    return objects;
}

bool isMounted(const QMap<QString, QVariantMap> &interfaces)
{
    return !interfaces.value(kFilesystem).value(QStringLiteral("MountPoints")).value<QByteArrayList>().isEmpty();
}

} // namespace

QStringList unmountedMediaIn(const UDisksObjects &objects)
{
    QStringList media;
    for (auto it = objects.cbegin(); it != objects.cend(); ++it) {
        const QMap<QString, QVariantMap> &interfaces = *it;
        if (!interfaces.contains(kFilesystem) || !interfaces.contains(kBlock) || isMounted(interfaces))
            continue;
        const QVariantMap &block = interfaces[kBlock];
        if (block.value(QStringLiteral("HintIgnore")).toBool())
            continue;
        // A partition names its disk's drive too; "/" (a loop device, a fixed disk's RAID) is none.
        const QVariantMap drive = objects.value(block.value(QStringLiteral("Drive")).toString()).value(kDrive);
        if (drive.value(QStringLiteral("Optical")).toBool() || drive.value(QStringLiteral("Removable")).toBool()
            || drive.value(QStringLiteral("MediaRemovable")).toBool())
            media.append(byteText(block.value(QStringLiteral("Device"))));
    }
    return media;
}

UDisks2Mounter::UDisks2Mounter(const QDBusConnection &bus)
    : m_bus(bus)
{
}

std::optional<UDisksObjects> UDisks2Mounter::managedObjects()
{
    // Asking the bus who owns the name costs nothing; a call to a missing service would wait.
    if (!m_bus.isConnected() || !m_bus.interface())
        return std::nullopt;
    const QDBusReply<bool> registered = m_bus.interface()->isServiceRegistered(kService);
    const QDBusReply<QStringList> activatable = m_bus.interface()->activatableServiceNames();
    if (!(registered.isValid() && registered.value()) && !(activatable.isValid() && activatable.value().contains(kService)))
        return std::nullopt;
    const QDBusMessage call = QDBusMessage::createMethodCall(kService, QStringLiteral("/org/freedesktop/UDisks2"),
                                                             QStringLiteral("org.freedesktop.DBus.ObjectManager"),
                                                             QStringLiteral("GetManagedObjects"));
    const QDBusMessage reply = m_bus.call(call, QDBus::Block, kQueryMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().size() != 1
        || !reply.arguments().constFirst().canConvert<QDBusArgument>())
        return std::nullopt;
    return objectsOf(reply.arguments().constFirst().value<QDBusArgument>());
}

QStringList UDisks2Mounter::unmountedMedia()
{
    const std::optional<UDisksObjects> objects = managedObjects();
    return objects ? unmountedMediaIn(*objects) : QStringList();
}

std::optional<QString> UDisks2Mounter::mount(const QString &device)
{
    const std::optional<UDisksObjects> objects = managedObjects();
    if (!objects || device.isEmpty())
        return std::nullopt;
    for (auto it = objects->cbegin(); it != objects->cend(); ++it) {
        const QVariantMap block = it->value(kBlock);
        if (!it->contains(kFilesystem)
            || (byteText(block.value(QStringLiteral("Device"))) != device
                && byteText(block.value(QStringLiteral("PreferredDevice"))) != device))
            continue;
        const QByteArrayList points = it->value(kFilesystem).value(QStringLiteral("MountPoints")).value<QByteArrayList>();
        if (!points.isEmpty())
            return byteText(points.constFirst());
        QDBusMessage call = QDBusMessage::createMethodCall(kService, it.key(), kFilesystem, QStringLiteral("Mount"));
        call << QVariantMap();
        const QDBusMessage reply = m_bus.call(call, QDBus::Block, kMountMs);
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
            return std::nullopt;
        const QString point = reply.arguments().constFirst().toString();
        return point.isEmpty() ? std::nullopt : std::optional<QString>(point);
    }
    return std::nullopt;
}
