#include "Browsers/BrowserReader.h"

#include "Platform/Automation.h"
#include "Platform/Bundles.h"
#include "Platform/RunningApplications.h"

#include <QMetaObject>

#include <utility>

namespace orvanta {

namespace {

constexpr FourCharCode core = fourCharCode("core");
constexpr FourCharCode getData = fourCharCode("getd");
constexpr FourCharCode propertyCode = fourCharCode("prop");

EventDescriptor objectSpecifier(FourCharCode wanted, FourCharCode form, const EventDescriptor& data,
                                const EventDescriptor& container) {
    EventDescriptor record = EventDescriptor::record();
    record.setDescriptor(EventDescriptor::typeCode(wanted), fourCharCode("want"));
    record.setDescriptor(EventDescriptor::enumCode(form), fourCharCode("form"));
    record.setDescriptor(data, fourCharCode("seld"));
    record.setDescriptor(container, fourCharCode("from"));
    return record.coerced(fourCharCode("obj "));
}

} // namespace

BrowserReader::BrowserReader(const Bundles& bundles, const RunningApplications& running,
                             AppleEventTransport& transport, AutomationPermission& permission,
                             HostExtraction host)
    : bundles_(bundles)
    , running_(running)
    , transport_(transport)
    , permission_(permission)
    , host_(std::move(host)) {}

AppleEvent BrowserReader::request(BrowserDialect dialect, std::int32_t processID) {
    const EventDescriptor window =
        objectSpecifier(fourCharCode("cwin"), fourCharCode("indx"), EventDescriptor::int32(1),
                        EventDescriptor::null());
    const EventDescriptor tab = objectSpecifier(
        propertyCode, propertyCode, EventDescriptor::typeCode(dialect.tabProperty()), window);
    const EventDescriptor address = objectSpecifier(
        propertyCode, propertyCode, EventDescriptor::typeCode(dialect.addressProperty()), tab);
    return {.eventClass = core,
            .eventID = getData,
            .target = EventDescriptor::processIdentifier(processID),
            .parameters = {{AppleEvent::directObject, address}}};
}

void BrowserReader::read(const QString& bundleID, Completion completion) {
    queue_.push_back({bundleID, std::move(completion)});
    if (queue_.size() == 1) {
        QMetaObject::invokeMethod(this, &BrowserReader::startNext, Qt::QueuedConnection);
    }
}

void BrowserReader::startNext() {
    ask(queue_.front().bundleID);
}

void BrowserReader::ask(const QString& bundleID) {
    const auto dialect = BrowserDialect::of(bundleID, bundles_);
    if (!dialect) {
        fail(QStringLiteral("Navegador não compatível"));
        return;
    }
    const auto instances = running_.instances(bundleID);
    if (instances.empty() || instances.front().isTerminated) {
        fail(QStringLiteral("Navegador fechado"));
        return;
    }
    const AppleEvent event =
        request(*dialect, static_cast<std::int32_t>(instances.front().processIdentifier));
    const bool mayAsk = !requestedPermission_.contains(bundleID);
    requestedPermission_.insert(bundleID);
    if (permission_.determine(event.target, core, getData, mayAsk) !=
        AutomationPermission::permitted) {
        fail(QStringLiteral("Permissão de Automação necessária · veja Ajustes"));
        return;
    }
    constexpr AppleEventTransport::Duration timeout{2.0};
    transport_.send(event, AppleEventTransport::waitForReply | AppleEventTransport::neverInteract,
                    timeout,
                    [this](const std::optional<AppleEvent>& reply) { handleReply(reply); });
}

void BrowserReader::handleReply(const std::optional<AppleEvent>& reply) {
    if (!reply) {
        fail(QStringLiteral("Não foi possível consultar o navegador"));
        return;
    }
    const EventDescriptor* error = reply->parameter(AppleEvent::errorNumber);
    const EventDescriptor* address = reply->parameter(AppleEvent::directObject);
    const bool isError = error && error->int32Value().value_or(0) != 0;
    const auto host =
        isError || !address ? std::nullopt : host_(address->stringValue().value_or(QString()));
    if (!host) {
        fail(QStringLiteral("Site indisponível ou aba interna"));
        return;
    }
    finish({host, std::nullopt});
}

void BrowserReader::finish(const Answer& answer) {
    // The completion may ask for the next read.
    QMetaObject::invokeMethod(
        this,
        [this, answer] {
            const Completion completion = std::move(queue_.front().completion);
            queue_.pop_front();
            if (!queue_.empty()) {
                QMetaObject::invokeMethod(this, &BrowserReader::startNext, Qt::QueuedConnection);
            }
            completion(answer);
        },
        Qt::QueuedConnection);
}

} // namespace orvanta
