#pragma once

#include <QByteArray>

#include <vector>

namespace orvanta {

/// The programs that a shell script may start, by name or path, in the order of the script.
///
/// Understands the little of a shell that scripts need to start a browser: variables, set and used
/// line after line, whatever the conditions around them; what stands first in a line; what follows
/// "exec". Takes rather too much than too little: whoever asks looks at what is there.
std::vector<QByteArray> programsStartedBy(const QByteArray& script);

} // namespace orvanta
