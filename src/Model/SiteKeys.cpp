#include "Model/SiteKeys.h"

#include "Model/ActivityKey.h"
#include "Model/Sqlite.h"

#include <QUrl>

#include <map>

namespace orvanta {

namespace {

constexpr qint64 converted = 1; // as user_version

/// The new key by the old one, of the keys in this table.
std::map<QString, QString> newKeys(Database& database, const QByteArray& table) {
    std::map<QString, QString> keys;
    Statement rows(database,
                   "SELECT DISTINCT ZKEY FROM " + table + " WHERE ZKEY GLOB 'site:*[^ -~]*'");
    while (rows.step()) {
        const QString key = rows.text(0);
        const QByteArray host = QUrl::toAce(key.sliced(siteKeyPrefix.size()));
        if (!host.isEmpty()) {
            keys[key] = siteKeyPrefix + QString::fromLatin1(host);
        }
    }
    return keys;
}

void run(Database& database, const QByteArray& sql, const QString& from, const QString& to) {
    Statement(database, sql).bind(1, from).bind(2, to).run();
}

} // namespace

void convertSiteKeys(Database& database) {
    if (database.integer("PRAGMA user_version") >= converted) {
        return;
    }
    Transaction::Statements statements(database);
    Transaction transaction(statements);
    for (const auto& [from, to] : newKeys(database, "ZACTIVITY")) {
        // The one that was used later, or at all, is the one whose category holds.
        run(database,
            "UPDATE ZACTIVITY SET (ZCATEGORYVALUE, ZPREVIOUSCATEGORYVALUE, ZLASTUSEDAT) = "
            "(SELECT ZCATEGORYVALUE, ZPREVIOUSCATEGORYVALUE, ZLASTUSEDAT FROM ZACTIVITY "
            "WHERE ZKEY IN (?1, ?2) ORDER BY ZLASTUSEDAT DESC, ZKEY = ?2 DESC LIMIT 1), "
            "ZSECONDS = (SELECT TOTAL(ZSECONDS) FROM ZACTIVITY WHERE ZKEY IN (?1, ?2)), "
            "Z_OPT = Z_OPT + 1 WHERE ZKEY = ?2",
            from, to);
        run(database,
            "DELETE FROM ZACTIVITY WHERE ZKEY = ?1 AND "
            "EXISTS (SELECT 1 FROM ZACTIVITY WHERE ZKEY = ?2)",
            from, to);
        run(database, "UPDATE ZACTIVITY SET ZKEY = ?2, Z_OPT = Z_OPT + 1 WHERE ZKEY = ?1", from,
            to);
    }
    for (const auto& [from, to] : newKeys(database, "ZDAYACTIVITY")) {
        run(database,
            "UPDATE ZDAYACTIVITY AS kept SET ZSECONDS = kept.ZSECONDS + other.ZSECONDS, "
            "Z_OPT = kept.Z_OPT + 1 FROM ZDAYACTIVITY AS other "
            "WHERE kept.ZKEY = ?2 AND other.ZKEY = ?1 AND other.ZDAY = kept.ZDAY",
            from, to);
        run(database,
            "DELETE FROM ZDAYACTIVITY WHERE ZKEY = ?1 AND "
            "ZDAY IN (SELECT ZDAY FROM ZDAYACTIVITY WHERE ZKEY = ?2)",
            from, to);
        run(database,
            "UPDATE ZDAYACTIVITY SET ZKEY = ?2, ZID = ZDAY || '|' || ?2, Z_OPT = Z_OPT + 1 "
            "WHERE ZKEY = ?1",
            from, to);
    }
    database.execute("PRAGMA user_version = " + QByteArray::number(converted));
    transaction.commit();
}

} // namespace orvanta
