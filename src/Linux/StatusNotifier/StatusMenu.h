#pragma once

#include "Linux/StatusNotifier/StatusNotifierTypes.h"
#include "Platform/StatusItem.h"

#include <QDBusContext>
#include <QObject>

namespace orvanta {

/// The status item's menu as its host reads it: com.canonical.dbusmenu, version 3 (the protocol of
/// libdbusmenu). One level deep.
///
/// The menu is asked for anew when a host is about to show it, and when one reads it that never was
/// asked for. Whatever a host sends, each call costs no more than the menu has entries.
class StatusMenu final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version CONSTANT)
    Q_PROPERTY(QString TextDirection READ textDirection CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath CONSTANT)

public:
    /// `willOpen` is called each time before a host shows the menu.
    StatusMenu(std::function<std::vector<StatusMenuItem>()> menu, std::function<void()> willOpen);

    uint version() const { return 3; }
    QString textDirection() const { return QStringLiteral("ltr"); }
    QString status() const { return QStringLiteral("normal"); }
    QStringList iconThemePath() const { return {}; }

public Q_SLOTS:
    // Types are written out in full, without aliases: Qt finds them by these words.
    //
    // An empty list of ids asks for all entries, one of names for all properties. Unknown ids are
    // answered with an error or, within a list, left out.

    Q_SCRIPTABLE uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                                orvanta::MenuLayout& layout);
    Q_SCRIPTABLE QList<orvanta::MenuProperties>
    GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames);
    Q_SCRIPTABLE QDBusVariant GetProperty(int id, const QString& name);
    Q_SCRIPTABLE void Event(int id, const QString& name, const QDBusVariant& data, uint timestamp);
    Q_SCRIPTABLE QList<int> EventGroup(const QList<orvanta::MenuEvent>& events);
    Q_SCRIPTABLE bool AboutToShow(int id);
    Q_SCRIPTABLE QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

Q_SIGNALS:
    Q_SCRIPTABLE void LayoutUpdated(uint revision, int parent);
    Q_SCRIPTABLE void ItemsPropertiesUpdated(const QList<orvanta::MenuProperties>& updated,
                                             const QList<orvanta::MenuRemovedProperties>& removed);

private:
    void askOnce();
    bool ask();
    bool open();
    int lastId() const { return firstId_ + static_cast<int>(items_.size()) - 1; }
    bool isEntry(int id) const { return id >= firstId_ && id <= lastId(); }
    const StatusMenuItem& entry(int id) const;
    QVariantMap properties(int id, const QStringList& names) const;
    bool happen(int id, const QString& name);
    void complain(int id);

    std::function<std::vector<StatusMenuItem>()> menu_;
    std::function<void()> willOpen_;
    std::vector<StatusMenuItem> items_; ///< numbered from firstId_ on
    int firstId_ = 1;
    uint revision_ = 0; ///< 0: never asked for
};

} // namespace orvanta
