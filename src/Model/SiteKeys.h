#pragma once

namespace orvanta {

class Database;

/// Gives the records of sites whose host is not written in ASCII ("site:münchen.example") the key
/// that such a host has by now ("site:xn--mnchen-3ya.example"), with the records of their days.
/// Where both are there, their seconds add up and the category of the one that was used later
/// holds. Names stay. Once a store, in one transaction: `user_version` says so. Throws
/// `ModelError`.
void convertSiteKeys(Database& database);

} // namespace orvanta
