#include "Browsers/BrowserReader.h"

#include "Fakes/FakeAutomation.h"
#include "Fakes/FakeBundles.h"
#include "Fakes/QtPrinters.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace orvanta {

namespace {

using namespace Qt::StringLiterals;

const auto unreachable = u"Não foi possível consultar o navegador"_s;
const auto forbidden = u"Permissão de Automação necessária · veja Ajustes"_s;

class Transport final : public AppleEventTransport {
public:
    std::vector<AppleEvent> sent;
    std::vector<Completion> completions;
    void send(const AppleEvent& event, std::uint32_t options, Duration timeout,
              Completion completion) override {
        EXPECT_EQ(options, 0x13U);
        EXPECT_EQ(timeout, Duration(2.0));
        sent.push_back(event);
        completions.push_back(std::move(completion));
    }
};

class BrowserReaderTest : public testing::Test {
protected:
    BrowserReaderTest() {
        bundles.install(u"/a/read.browser"_s, u"Browser"_s,
                        "code=\"acTa\" code=\"URL \" code=\"cTa\"");
        automation.running[u"read.browser"_s] = {{.processIdentifier = 42}};
        automation.decisions[42] = AutomationPermission::permitted;
    }

    /// Lets every step that follows from another happen.
    static void settle() {
        for (int i = 0; i < 10; ++i) {
            QCoreApplication::processEvents();
        }
    }
    void read(const QString& id = u"read.browser"_s) {
        reader.read(id, [this](const BrowserReading::Answer& answer) {
            EXPECT_NE(answer.site.has_value(), answer.error.has_value());
            answers.append(answer.site ? u"site "_s + *answer.site : *answer.error);
        });
    }
    void reply(const std::optional<AppleEvent>& event) {
        const auto completion = transport.completions.back();
        completion(event);
        settle();
    }
    static AppleEvent address(const QString& text) {
        return {.parameters = {{AppleEvent::directObject, EventDescriptor::text(text)}}};
    }

    FakeBundles bundles;
    FakeAutomation automation;
    Transport transport;
    BrowserReader reader{bundles, automation, transport, automation, [](const QString& text) {
                             return text == u"https://a.org/"_s ? std::optional(u"a.org"_s)
                                                                : std::nullopt;
                         }};
    QStringList answers;
};

TEST_F(BrowserReaderTest, TheRequestIsForTheAddressOfTheFrontTabOfTheFirstWindow) {
    EXPECT_EQ(fourCharCode("want"), 0x77616E74U);
    constexpr FourCharCode property = fourCharCode("prop");
    for (const auto& [dialect, tab, address] :
         {std::tuple(BrowserDialect::safari, fourCharCode("cTab"), fourCharCode("pURL")),
          {BrowserDialect::chromium, fourCharCode("acTa"), fourCharCode("URL ")}}) {
        const AppleEvent event = BrowserReader::request(dialect, 4711);
        EXPECT_TRUE(event.eventClass == fourCharCode("core") &&
                    event.eventID == fourCharCode("getd"));
        EXPECT_EQ(event.target, EventDescriptor::processIdentifier(4711));
        EXPECT_TRUE(event.returnID == -1 && event.transactionID == 0);
        ASSERT_EQ(event.parameters.size(), 1U);
        const EventDescriptor* object = event.parameter(fourCharCode("----"));
        for (const auto& [want, form, selected] :
             {std::tuple(property, property, EventDescriptor::typeCode(address)),
              {property, property, EventDescriptor::typeCode(tab)},
              {fourCharCode("cwin"), fourCharCode("indx"), EventDescriptor::int32(1)}}) {
            ASSERT_TRUE(object);
            EXPECT_EQ(object->type(), fourCharCode("obj "));
            EXPECT_EQ(*object->descriptor(fourCharCode("want")), EventDescriptor::typeCode(want));
            EXPECT_EQ(*object->descriptor(fourCharCode("form")), EventDescriptor::enumCode(form));
            EXPECT_EQ(*object->descriptor(fourCharCode("seld")), selected);
            object = object->descriptor(fourCharCode("from"));
        }
        EXPECT_EQ(*object, EventDescriptor::null());
    }
}

TEST_F(BrowserReaderTest, EveryOutcomeHasItsAnswer) {
    const auto withError = [](int number) {
        AppleEvent event = address(u"https://a.org/"_s);
        event.parameters.insert({AppleEvent::errorNumber, EventDescriptor::int32(number)});
        return event;
    };
    const auto noText =
        AppleEvent{.parameters = {{AppleEvent::directObject, EventDescriptor::int32(1)}}};
    const QString unavailable = u"Site indisponível ou aba interna"_s;
    for (const auto& [event, answer] :
         {std::pair<std::optional<AppleEvent>, QString>{withError(0), u"site a.org"_s},
          {withError(-1719), unavailable},
          {address(u"about:blank"_s), unavailable},
          {AppleEvent{}, unavailable},
          {noText, unavailable},
          {std::nullopt, unreachable}}) {
        read();
        settle();
        EXPECT_EQ(transport.sent.back(), BrowserReader::request(BrowserDialect::chromium, 42));
        reply(event);
        EXPECT_EQ(answers.takeLast(), answer);
    }
    const auto sent = transport.sent.size();
    auto& running = automation.running[u"read.browser"_s];
    automation.decisions[42] = AutomationPermission::refused;
    read();
    settle();
    running = {{.processIdentifier = 42, .isTerminated = true}, {.processIdentifier = 43}};
    read();
    settle();
    running.clear();
    read();
    settle();
    EXPECT_EQ(answers, (QStringList{forbidden, u"Navegador fechado"_s, u"Navegador fechado"_s}));
    EXPECT_EQ(transport.sent.size(), sent);
}

TEST_F(BrowserReaderTest, ReadsGoOneAfterTheOtherAndThePersonIsAskedOnce) {
    automation.decisions.clear();
    read();
    EXPECT_TRUE(automation.log.isEmpty()) << "nothing happens within the call";
    settle();
    automation.decisions[42] = AutomationPermission::permitted;
    read();
    read(u"read.other"_s);
    read();
    settle();
    EXPECT_EQ(answers, QStringList{forbidden});
    EXPECT_EQ(transport.sent.size(), 1U);
    reply(address(u"https://a.org/"_s));
    EXPECT_EQ(transport.sent.size(), 2U);
    reply(std::nullopt);
    EXPECT_EQ(answers.sliced(1),
              (QStringList{u"site a.org"_s, u"Navegador não compatível"_s, unreachable}));
    EXPECT_EQ(automation.log, QStringList{u"ask 42"_s});
}

} // namespace

} // namespace orvanta
