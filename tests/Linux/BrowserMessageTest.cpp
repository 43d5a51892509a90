#include "Fakes/QtPrinters.h"
#include "Linux/BrowserBridge/FrameReader.h"
#include "Linux/BrowserBridge/Message.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace orvanta {

namespace {

std::string withOrigin(const std::string& origin) {
    return R"({"v":1,"origin":)" + origin + R"(,"focused":true})";
}

std::string withAnswer(const std::string& answer) {
    return R"({"v":1,"origin":null,"focused":true,"answer":)" + answer + "}";
}

bool isAccepted(const std::string& json) {
    return std::holds_alternative<ExtensionMessage>(parseMessage(json));
}

} // namespace

TEST(BrowserMessage, IsReadWithAllThatItSays) {
    struct Row {
        const char* json;
        ExtensionMessage message;
    };
    const auto origin = [](const char* text) {
        return QString::fromLatin1(text);
    };
    for (const Row& row : {
             Row{R"({"v":1,"origin":"https://example.org","focused":true})",
                 {origin("https://example.org"), true, {}}},
             Row{R"({"v":1,"origin":null,"focused":false})", {{}, false, {}}},
             Row{R"({"v":1,"origin":"http://a","focused":false,"answer":2147483647})",
                 {origin("http://a"), false, std::numeric_limits<int>::max()}},
             Row{R"( {"later":[{}],"answer":1.0,"v":1.0,"focused":true,"origin":"http://[::1]"} )",
                 {origin("http://[::1]"), true, 1}},
         }) {
        const auto parsed = parseMessage(row.json);
        ASSERT_TRUE(std::holds_alternative<ExtensionMessage>(parsed)) << row.json;
        EXPECT_EQ(std::get<ExtensionMessage>(parsed), row.message) << row.json;
    }
}

TEST(BrowserMessage, TakesOnlyOriginsThatNameAHostAndNothingElse) {
    for (const char* good :
         {"http://localhost", "https://xn--bcher-kva.example", "http://192.168.0.1",
          "https://[2001:db8::1]", "http://a_b-c.example.", "https://_dmarc.example.org"}) {
        EXPECT_TRUE(isAccepted(withOrigin('"' + std::string(good) + '"'))) << good;
    }
    EXPECT_TRUE(isAccepted(withOrigin("\"http://" + std::string(253, 'a') + '"')));
    EXPECT_FALSE(isAccepted(withOrigin("\"http://" + std::string(254, 'a') + '"')));
    for (const char* bad : {"",
                            "http://",
                            "https:/a",
                            "//a",
                            "a",
                            "ftp://a",
                            "file:///",
                            "chrome://newtab",
                            "about:blank",
                            "javascript:0",
                            "HTTP://a",
                            "http://A",
                            "http://a/",
                            "http://a:80",
                            "http://u@a",
                            "http://u:p@a",
                            "http://a?q",
                            "http://a#f",
                            "http://a b",
                            "http://a\\\\b",
                            "http://a%41",
                            "http://a\\u0000",
                            "http://b\\u00fccher",
                            "http://\\ud800",
                            "http://[",
                            "http://]",
                            "http://[]",
                            "http://[::1",
                            "http://[::g]",
                            "http://[::1]:80",
                            "http://[1]",
                            "http://::1",
                            " http://a",
                            "http://a\\n"}) {
        EXPECT_FALSE(isAccepted(withOrigin('"' + std::string(bad) + '"'))) << bad;
    }
}

TEST(BrowserMessage, IsRefusedWithAReasonWhenAnythingIsOfAnotherType) {
    std::vector<std::string> rows{
        "",
        " ",
        "{",
        "}",
        "null",
        "1",
        "[]",
        "\"{}\"",
        "{}",
        "\xff",
        "{}{}",
        R"({"v":2,"origin":null,"focused":true})",
        R"({"v":"1","origin":null,"focused":true})",
        R"({"v":true,"origin":null,"focused":true})",
        R"({"v":1.5,"origin":null,"focused":true})",
        R"({"origin":null,"focused":true})",
        R"({"v":1,"origin":null})",
        R"({"v":1,"focused":true})",
        R"({"v":1,"origin":null,"focused":1})",
        R"({"v":1,"origin":null,"focused":null})",
        R"({"v":1,"origin":null,"focused":"true"})",
        withOrigin("1"),
        withOrigin("false"),
        withOrigin("{}"),
        withOrigin("[\"http://a\"]"),
        withOrigin("\"http://\xc3\x28\""), // broken UTF-8
        std::string(4096, '['),
        std::string(4096, '\0'),
    };
    for (const char* answer : {"0", "-1", "2147483648", "1e300", "1.5", "\"1\"", "null", "true"}) {
        rows.push_back(withAnswer(answer));
    }
    for (const std::string& row : rows) {
        const auto parsed = parseMessage(row);
        ASSERT_TRUE(std::holds_alternative<MessageError>(parsed)) << row;
        EXPECT_FALSE(std::get<MessageError>(parsed).reason.isEmpty()) << row;
    }
}

TEST(BrowserMessage, CutAnywhereIsRefused) {
    const std::string whole = R"({"v":1,"origin":"https://example.org","focused":true,"answer":7})";
    ASSERT_TRUE(isAccepted(whole));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(isAccepted(whole.substr(0, length))) << length;
        EXPECT_FALSE(isAccepted(whole.substr(whole.size() - length))) << length;
    }
}

TEST(BrowserMessage, AsksInOneFrame) {
    for (const auto& [question, text] :
         {std::pair{1, R"({"v":1,"ask":1})"},
          std::pair{std::numeric_limits<int>::max(), R"({"v":1,"ask":2147483647})"}}) {
        const QByteArray bytes = askFrame(question);
        std::string_view rest(bytes.data(), std::size_t(bytes.size()));
        FrameReader reader;
        EXPECT_EQ(reader.next(rest), std::string_view(text));
        EXPECT_TRUE(rest.empty());
    }
}

} // namespace orvanta
