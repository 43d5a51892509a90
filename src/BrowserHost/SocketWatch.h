#pragma once

#include "BrowserHost/Descriptor.h"

#include <string>

namespace orvanta {

/// Tells when Orvanta's socket may have appeared, without asking again and again.
///
/// It watches the socket's folder, and while that does not exist the runtime folder that it will be
/// in. What is reported is a name: whoever listens does so before giving the socket its name or its
/// mode.
class SocketWatch {
public:
    explicit SocketWatch(std::string runtimeFolder);

    /// Whether there is anything left to watch.
    bool isWatching() const { return folderWatch_ >= 0 || runtimeWatch_ >= 0; }

    /// Readable when something happened since the last take().
    int descriptor() const { return events_.number(); }

    /// Takes note of what happened; true if the socket may be there now.
    bool take();

    /// Where Orvanta listens.
    const std::string& socketPath() const { return socketPath_; }

private:
    void watch();
    int add(const std::string& path, unsigned mask) const;

    std::string runtimeFolder_;
    std::string folder_;
    std::string socketPath_;
    Descriptor events_;
    int folderWatch_ = -1;
    int runtimeWatch_ = -1;
};

} // namespace orvanta
