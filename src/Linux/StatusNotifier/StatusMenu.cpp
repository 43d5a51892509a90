#include "Linux/StatusNotifier/StatusMenu.h"

#include <QDBusError>
#include <QSet>

#include <algorithm>
#include <utility>

namespace orvanta {

namespace {

constexpr int rootItem = 0;

bool isSeparator(const StatusMenuItem& item) {
    return item.text.isEmpty();
}

/// As X11 and GTK call the key.
QString keyName(QChar key) {
    return key == u',' ? QStringLiteral("comma") : QString(key);
}

QVariantMap allProperties(const StatusMenuItem& item) {
    if (isSeparator(item)) {
        return {{QStringLiteral("type"), QStringLiteral("separator")}};
    }
    QString label = item.text;
    label.replace(QLatin1Char('_'), QLatin1String("__")); // One alone marks an access key.
    QVariantMap properties{{QStringLiteral("label"), label},
                           {QStringLiteral("enabled"), static_cast<bool>(item.action)}};
    if (item.checked) {
        properties.insert(QStringLiteral("toggle-type"), QStringLiteral("checkmark"));
        properties.insert(QStringLiteral("toggle-state"), *item.checked ? 1 : 0);
    }
    if (item.keyEquivalent) {
        const QStringList press{QStringLiteral("Control"), keyName(*item.keyEquivalent)};
        properties.insert(QStringLiteral("shortcut"),
                          QVariant::fromValue(QList<QStringList>{press}));
    }
    return properties;
}

/// Whether one can take the other's place under the same ids, so that a menu that is open already
/// stays valid.
bool isSameShape(const std::vector<StatusMenuItem>& a, const std::vector<StatusMenuItem>& b) {
    return std::ranges::equal(a, b, [](const StatusMenuItem& x, const StatusMenuItem& y) {
        return x.text == y.text && x.checked.has_value() == y.checked.has_value();
    });
}

} // namespace

StatusMenu::StatusMenu(std::function<std::vector<StatusMenuItem>()> menu,
                       std::function<void()> willOpen)
    : menu_(std::move(menu))
    , willOpen_(std::move(willOpen)) {
    registerStatusNotifierTypes();
}

void StatusMenu::askOnce() {
    if (revision_ == 0) {
        items_ = menu_();
        revision_ = 1;
    }
}

/// Asks for the menu and tells hosts what is new; whether anything is.
bool StatusMenu::ask() {
    if (revision_ == 0) {
        askOnce();
        Q_EMIT LayoutUpdated(revision_, rootItem);
        return true;
    }
    const auto before = std::exchange(items_, menu_());
    QList<MenuProperties> updated;
    if (isSameShape(before, items_)) {
        for (int id = firstId_; id <= lastId(); ++id) {
            const QVariantMap now = allProperties(entry(id));
            if (now != allProperties(before[static_cast<size_t>(id - firstId_)])) {
                updated.append({id, now});
            }
        }
        if (updated.isEmpty()) {
            return false;
        }
        Q_EMIT ItemsPropertiesUpdated(updated, {});
    } else {
        // Never an id of another entry: a click on what was there before must hit nothing.
        firstId_ += static_cast<int>(before.size());
    }
    ++revision_;
    Q_EMIT LayoutUpdated(revision_, rootItem);
    return true;
}

bool StatusMenu::open() {
    if (willOpen_) {
        willOpen_();
    }
    return ask();
}

const StatusMenuItem& StatusMenu::entry(int id) const {
    return items_[static_cast<size_t>(id - firstId_)];
}

QVariantMap StatusMenu::properties(int id, const QStringList& names) const {
    QVariantMap all =
        id == rootItem
            ? QVariantMap{{QStringLiteral("children-display"), QStringLiteral("submenu")}}
            : allProperties(entry(id));
    if (!names.isEmpty()) {
        all.removeIf([&names](const QVariantMap::iterator& property) {
            return !names.contains(property.key());
        });
    }
    return all;
}

void StatusMenu::complain(int id) {
    if (calledFromDBus()) {
        sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("no entry %1").arg(id));
    }
}

uint StatusMenu::GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                           MenuLayout& layout) {
    askOnce();
    if (parentId != rootItem && !isEntry(parentId)) {
        complain(parentId);
        return revision_;
    }
    layout.id = parentId;
    layout.properties = properties(parentId, propertyNames);
    if (parentId == rootItem && recursionDepth != 0) {
        for (int id = firstId_; id <= lastId(); ++id) {
            const MenuLayout child{id, properties(id, propertyNames), {}};
            layout.children.append(QDBusVariant(QVariant::fromValue(child)));
        }
    }
    return revision_;
}

QList<MenuProperties> StatusMenu::GetGroupProperties(const QList<int>& ids,
                                                     const QStringList& propertyNames) {
    askOnce();
    const QSet<int> wanted(ids.begin(), ids.end());
    const auto isWanted = [&wanted](int id) {
        return wanted.isEmpty() || wanted.contains(id);
    };
    QList<MenuProperties> list;
    if (isWanted(rootItem)) {
        list.append({rootItem, properties(rootItem, propertyNames)});
    }
    for (int id = firstId_; id <= lastId(); ++id) {
        if (isWanted(id)) {
            list.append({id, properties(id, propertyNames)});
        }
    }
    return list;
}

QDBusVariant StatusMenu::GetProperty(int id, const QString& name) {
    askOnce();
    const QVariantMap found =
        id == rootItem || isEntry(id) ? properties(id, {name}) : QVariantMap();
    if (found.isEmpty()) {
        complain(id);
        return QDBusVariant(QString());
    }
    return QDBusVariant(found.first());
}

/// Whether there is such an entry.
bool StatusMenu::happen(int id, const QString& name) {
    if (!isEntry(id)) {
        return id == rootItem;
    }
    if (const auto& action = entry(id).action; action && name == QLatin1String("clicked")) {
        // The host has its answer first, however long the action takes.
        QMetaObject::invokeMethod(this, action, Qt::QueuedConnection);
    }
    return true;
}

void StatusMenu::Event(int id, const QString& name, const QDBusVariant& /*data*/,
                       uint /*timestamp*/) {
    if (!happen(id, name)) {
        complain(id);
    }
}

QList<int> StatusMenu::EventGroup(const QList<MenuEvent>& events) {
    QList<int> unknown;
    for (const MenuEvent& event : events) {
        if (!happen(event.id, event.name)) {
            unknown.append(event.id);
        }
    }
    if (!events.isEmpty() && unknown.size() == events.size()) {
        complain(unknown.first());
    }
    return unknown;
}

bool StatusMenu::AboutToShow(int id) {
    if (id == rootItem) {
        return open();
    }
    if (!isEntry(id)) {
        complain(id);
    }
    return false;
}

QList<int> StatusMenu::AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors) {
    const bool changed = ids.contains(rootItem) && open();
    for (const int id : ids) {
        if (id != rootItem && !isEntry(id)) {
            idErrors.append(id);
        }
    }
    return changed ? QList<int>{rootItem} : QList<int>{};
}

} // namespace orvanta
