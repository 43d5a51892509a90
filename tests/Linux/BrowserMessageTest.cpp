#include "Linux/BrowserBridge/Message.h"
#include "Testing.h"

#include <limits>

namespace orvanta {

namespace {

std::string with(const std::string& origin, const std::string& more = {}) {
    return R"({"v":1,"origin":)" + origin + R"(,"focused":true)" + more + '}';
}

bool isAccepted(const std::string& json) {
    return std::holds_alternative<ExtensionMessage>(parseMessage(json));
}

QList<QByteArray> words(const char* text) {
    return QByteArray(text).simplified().split(' ');
}

} // namespace

TEST(BrowserMessage, IsReadWithAllThatItSays) {
    const std::pair<const char*, ExtensionMessage> rows[] = {
        {R"({"v":1,"origin":"https://example.org","focused":true})",
         {u"https://example.org"_s, true, {}}},
        {R"({"v":1,"origin":null,"focused":false})", {{}, false, {}}},
        {R"({"v":1,"origin":"http://a","focused":false,"answer":2147483647})",
         {u"http://a"_s, false, std::numeric_limits<int>::max()}},
        {R"( {"later":[{}],"answer":1.0,"v":1.0,"focused":true,"origin":"http://[::1]"} )",
         {u"http://[::1]"_s, true, 1}}};
    for (const auto& [json, message] : rows) {
        const auto parsed = parseMessage(json);
        ASSERT_TRUE(std::holds_alternative<ExtensionMessage>(parsed)) << json;
        EXPECT_EQ(std::get<ExtensionMessage>(parsed), message) << json;
    }
}

TEST(BrowserMessage, TakesOnlyOriginsThatNameAHostAndNothingElse) {
    for (const auto& good : words("http://localhost https://xn--bcher-kva.example "
                                  "https://[2001:db8::1] http://a_b-c.192.168.0.1.")) {
        EXPECT_TRUE(isAccepted(with('"' + good.toStdString() + '"'))) << good.constData();
    }
    EXPECT_TRUE(isAccepted(with("\"http://" + std::string(253, 'a') + '"')));
    EXPECT_FALSE(isAccepted(with("\"http://" + std::string(254, 'a') + '"')));
    auto bad = words(
        R"(http:// https:/a //a a ftp://a file:/// chrome://newtab about:blank javascript:0 HTTP://a http://A
        http://a/ http://a:80 http://u@a http://u:p@a http://a?q http://a#f http://a\\b http://a%41 http://a\u0000
        http://b\u00fccher http://\ud800 http://[ http://] http://[] http://[::1 http://[::g]
        http://[::1]:80 http://[1] http://::1 http://a\n)");
    bad += {"", "http://a b", " http://a"};
    for (const auto& each : bad) {
        EXPECT_FALSE(isAccepted(with('"' + each.toStdString() + '"'))) << each.constData();
    }
}

TEST(BrowserMessage, IsRefusedWithAReasonWhenAnythingIsOfAnotherType) {
    std::vector<std::string> rows{"", "\xff", std::string(4096, '['),
                                  with("\"http://\xc3\x28\"")}; // The last is broken UTF-8.
    for (
        const auto& each : words(
            R"(null [] {}{} {"v":1,"origin":null,"focused":true {"v":2,"origin":null,"focused":true}
             {"origin":null,"focused":true} {"v":1,"origin":null,"focused":1})")) {
        rows.push_back(each.toStdString());
    }
    for (const char* answer : {"0", "-1", "2147483648", "1e300", "1.5", "\"1\""}) {
        rows.push_back(with("null", std::string(",\"answer\":") + answer));
    }
    rows.push_back(with("1"));
    for (const std::string& row : rows) {
        const auto parsed = parseMessage(row);
        ASSERT_TRUE(std::holds_alternative<MessageError>(parsed)) << row;
        EXPECT_FALSE(std::get<MessageError>(parsed).reason.isEmpty()) << row;
    }
}

} // namespace orvanta
