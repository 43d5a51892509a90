#pragma once

#include <QString>

namespace orvanta {

/// Makes the folder, and what is missing on the way to it, for this person alone (mode 0700, as
/// freedesktop.org's base directories want it). One that is there already stays as it is. False
/// where there is no such folder afterwards; `errno` tells why.
bool makePrivateFolder(const QString& path);

/// Takes from a folder of this person's what it allows others. For a folder that is ours alone.
void narrowFolder(const QString& path);

/// Whether this is a folder of this person's in which nobody else may write, and no link to one.
bool isPrivateFolder(const QString& path);

} // namespace orvanta
