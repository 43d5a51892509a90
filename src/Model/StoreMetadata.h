#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <set>

namespace orvanta {

class Database;
struct Schema;

/// The table Z_METADATA, in which Core Data says of a store what model it was written with: one
/// row with a property list.
namespace StoreMetadata {

/// The bytes of the property list; nothing when there is no row or no value in it. Throws
/// `ModelError`, also when there is no such table.
std::optional<QByteArray> read(Database& database);

/// The entities that the model of this list has; none when it does not say so in the right form.
/// Throws `ModelError` for what is no property list.
std::set<QString> entityNames(const QByteArray& list);

/// Says that the store was written with the schema, in whatever row there is or in a new one. All
/// else in its list stays; a list that cannot be read is replaced. Throws `ModelError`.
void write(Database& database, const Schema& schema);

} // namespace StoreMetadata

} // namespace orvanta
