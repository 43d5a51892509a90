#pragma once

#include "BrowserHost/Descriptor.h"
#include "BrowserHost/Outbox.h"
#include "BrowserHost/SocketWatch.h"
#include "Linux/BrowserBridge/FrameReader.h"

#include <string_view>

namespace orvanta {

/// Hands frames on between a browser and Orvanta, unread, and keeps none: what the browser says
/// while Orvanta is away is dropped, since Orvanta asks as soon as it is connected.
///
/// It sleeps until one of the two speaks. A connection is tried when the socket may have appeared
/// and when the browser has something to say; never because time has passed.
class Relay {
public:
    /// Both descriptors in non-blocking mode.
    Relay(Descriptor fromBrowser, Descriptor toBrowser, SocketWatch watch);

    /// Runs until the browser is gone. Returns the process's exit status: 0, or 1 after a complaint
    /// when the browser sent what is no frame.
    int run();

private:
    enum class End { None, BrowserGone, BrokenFrame };

    End readBrowser();
    void readOrvanta();
    void connect();
    void disconnect(std::string_view reason);
    void sendToOrvanta();

    Descriptor browserInput_;
    Descriptor browserOutput_;
    SocketWatch watch_;
    Descriptor socket_;
    FrameReader fromBrowser_;
    FrameReader fromOrvanta_;
    Outbox toBrowser_;
    Outbox toOrvanta_;
};

/// Says a sentence to whoever reads the browser's standard error.
void complain(std::string_view sentence);

} // namespace orvanta
