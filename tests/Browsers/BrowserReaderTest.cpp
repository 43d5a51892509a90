#include "Browsers/BrowserReader.h"

#include "Fakes/FakeAutomation.h"
#include "Fakes/FakeBundles.h"
#include "Fakes/QtPrinters.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <optional>
#include <vector>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

const auto unreachable = u"Não foi possível consultar o navegador"_s;
const auto unavailable = u"Site indisponível ou aba interna"_s;
const auto forbidden = u"Permissão de Automação necessária · veja Ajustes"_s;
const auto closed = u"Navegador fechado"_s;

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
        transport.completions.back()(event);
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

} // namespace

TEST_F(BrowserReaderTest, TheRequestIsForTheAddressOfTheFrontTabOfTheFirstWindow) {
    constexpr FourCharCode property = fourCharCode("prop");
    for (const auto& [dialect, tab, address] :
         {std::tuple(BrowserDialect::safari, fourCharCode("cTab"), fourCharCode("pURL")),
          {BrowserDialect::chromium, fourCharCode("acTa"), fourCharCode("URL ")}}) {
        const AppleEvent event = BrowserReader::request(dialect, 4711);
        EXPECT_EQ(event.eventClass, fourCharCode("core"));
        EXPECT_EQ(event.eventID, fourCharCode("getd"));
        EXPECT_EQ(event.target, EventDescriptor::processIdentifier(4711));
        const EventDescriptor* object = event.parameter(fourCharCode("----"));
        for (const auto& [want, form, selected] :
             {std::tuple(property, property, EventDescriptor::typeCode(address)),
              {property, property, EventDescriptor::typeCode(tab)},
              {fourCharCode("cwin"), fourCharCode("indx"), EventDescriptor::int32(1)}}) {
            ASSERT_TRUE(object && object->type() == fourCharCode("obj "));
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
    for (const auto& [event, answer] :
         {std::pair<std::optional<AppleEvent>, QString>{withError(0), u"site a.org"_s},
          {withError(-1719), unavailable},
          {address(u"about:blank"_s), unavailable},
          {AppleEvent{}, unavailable},
          {std::nullopt, unreachable}}) {
        read();
        settle();
        EXPECT_EQ(transport.sent.back(), BrowserReader::request(BrowserDialect::chromium, 42));
        reply(event);
        EXPECT_EQ(answers.takeLast(), answer);
    }
    const auto sent = transport.sent.size();
    automation.decisions[42] = AutomationPermission::refused;
    for (const auto& [instances, answer] :
         {std::pair<std::vector<RunningInstance>, QString>{{{.processIdentifier = 42}}, forbidden},
          {{{.processIdentifier = 42, .isTerminated = true}, {.processIdentifier = 43}}, closed},
          {{}, closed}}) {
        automation.running[u"read.browser"_s] = instances;
        read();
        settle();
        EXPECT_EQ(answers.takeLast(), answer);
    }
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
    EXPECT_EQ(transport.sent.size(), 1U);
    reply(address(u"https://a.org/"_s));
    EXPECT_EQ(transport.sent.size(), 2U);
    reply(std::nullopt);
    EXPECT_EQ(answers, (QStringList{forbidden, u"site a.org"_s, u"Navegador não compatível"_s,
                                    unreachable}));
    EXPECT_EQ(automation.log, QStringList{u"ask 42"_s});
}
