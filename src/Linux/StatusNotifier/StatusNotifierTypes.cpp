#include "Linux/StatusNotifier/StatusNotifierTypes.h"

#include <QDBusMetaType>

namespace orvanta {

namespace {

template <typename... Fields>
QDBusArgument& writeStructure(QDBusArgument& out, const Fields&... fields) {
    out.beginStructure();
    (out << ... << fields);
    out.endStructure();
    return out;
}

template <typename... Fields>
const QDBusArgument& readStructure(const QDBusArgument& in, Fields&... fields) {
    in.beginStructure();
    (in >> ... >> fields);
    in.endStructure();
    return in;
}

} // namespace

QDBusArgument& operator<<(QDBusArgument& out, const StatusPixmap& pixmap) {
    return writeStructure(out, pixmap.width, pixmap.height, pixmap.bytes);
}
const QDBusArgument& operator>>(const QDBusArgument& in, StatusPixmap& pixmap) {
    return readStructure(in, pixmap.width, pixmap.height, pixmap.bytes);
}

QDBusArgument& operator<<(QDBusArgument& out, const StatusToolTip& toolTip) {
    return writeStructure(out, toolTip.iconName, toolTip.icon, toolTip.title, toolTip.text);
}
const QDBusArgument& operator>>(const QDBusArgument& in, StatusToolTip& toolTip) {
    return readStructure(in, toolTip.iconName, toolTip.icon, toolTip.title, toolTip.text);
}

QDBusArgument& operator<<(QDBusArgument& out, const MenuLayout& layout) {
    return writeStructure(out, layout.id, layout.properties, layout.children);
}
const QDBusArgument& operator>>(const QDBusArgument& in, MenuLayout& layout) {
    return readStructure(in, layout.id, layout.properties, layout.children);
}

QDBusArgument& operator<<(QDBusArgument& out, const MenuProperties& properties) {
    return writeStructure(out, properties.id, properties.properties);
}
const QDBusArgument& operator>>(const QDBusArgument& in, MenuProperties& properties) {
    return readStructure(in, properties.id, properties.properties);
}

QDBusArgument& operator<<(QDBusArgument& out, const MenuRemovedProperties& removed) {
    return writeStructure(out, removed.id, removed.names);
}
const QDBusArgument& operator>>(const QDBusArgument& in, MenuRemovedProperties& removed) {
    return readStructure(in, removed.id, removed.names);
}

QDBusArgument& operator<<(QDBusArgument& out, const MenuEvent& event) {
    return writeStructure(out, event.id, event.name, event.data, event.timestamp);
}
const QDBusArgument& operator>>(const QDBusArgument& in, MenuEvent& event) {
    return readStructure(in, event.id, event.name, event.data, event.timestamp);
}

void registerStatusNotifierTypes() {
    qDBusRegisterMetaType<StatusPixmap>();
    qDBusRegisterMetaType<StatusPixmaps>();
    qDBusRegisterMetaType<StatusToolTip>();
    qDBusRegisterMetaType<QList<QDBusVariant>>();
    qDBusRegisterMetaType<MenuLayout>();
    qDBusRegisterMetaType<MenuProperties>();
    qDBusRegisterMetaType<QList<MenuProperties>>();
    qDBusRegisterMetaType<MenuRemovedProperties>();
    qDBusRegisterMetaType<QList<MenuRemovedProperties>>();
    qDBusRegisterMetaType<MenuEvent>();
    qDBusRegisterMetaType<QList<MenuEvent>>();
    qDBusRegisterMetaType<QList<int>>();
    qDBusRegisterMetaType<QList<QStringList>>();
}

} // namespace orvanta
