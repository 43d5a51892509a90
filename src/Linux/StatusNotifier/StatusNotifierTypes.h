#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusVariant>
#include <QList>
#include <QString>
#include <QVariantMap>

namespace orvanta {

// What travels between a status item and its host, in the shapes that D-Bus gives it.

/// (iiay) of freedesktop.org's StatusNotifierItem: rows from the top, each pixel four bytes A, R,
/// G, B, the colours not premultiplied.
struct StatusPixmap {
    int width = 0;  ///< px
    int height = 0; ///< px
    QByteArray bytes;
};
using StatusPixmaps = QList<StatusPixmap>;

/// (sa(iiay)ss) of freedesktop.org's StatusNotifierItem.
struct StatusToolTip {
    QString iconName;
    StatusPixmaps icon;
    QString title;
    QString text; ///< hosts may read it as markup
};

/// (ia{sv}av) of com.canonical.dbusmenu: an entry and what is below it.
struct MenuLayout {
    int id = 0;
    QVariantMap properties;
    QList<QDBusVariant> children; ///< each holds a MenuLayout
};

/// (ia{sv}) of com.canonical.dbusmenu.
struct MenuProperties {
    int id = 0;
    QVariantMap properties;
};

/// (ias) of com.canonical.dbusmenu: properties that an entry no longer has.
struct MenuRemovedProperties {
    int id = 0;
    QStringList names;
};

/// (isvu) of com.canonical.dbusmenu: something that happened to an entry.
struct MenuEvent {
    int id = 0;
    QString name;
    QDBusVariant data;
    uint timestamp = 0;
};

QDBusArgument& operator<<(QDBusArgument& out, const StatusPixmap& pixmap);
const QDBusArgument& operator>>(const QDBusArgument& in, StatusPixmap& pixmap);
QDBusArgument& operator<<(QDBusArgument& out, const StatusToolTip& toolTip);
const QDBusArgument& operator>>(const QDBusArgument& in, StatusToolTip& toolTip);
QDBusArgument& operator<<(QDBusArgument& out, const MenuLayout& layout);
const QDBusArgument& operator>>(const QDBusArgument& in, MenuLayout& layout);
QDBusArgument& operator<<(QDBusArgument& out, const MenuProperties& properties);
const QDBusArgument& operator>>(const QDBusArgument& in, MenuProperties& properties);
QDBusArgument& operator<<(QDBusArgument& out, const MenuRemovedProperties& removed);
const QDBusArgument& operator>>(const QDBusArgument& in, MenuRemovedProperties& removed);
QDBusArgument& operator<<(QDBusArgument& out, const MenuEvent& event);
const QDBusArgument& operator>>(const QDBusArgument& in, MenuEvent& event);

/// To be called before any of these travels; may be called again.
void registerStatusNotifierTypes();

} // namespace orvanta

Q_DECLARE_METATYPE(orvanta::MenuLayout)
