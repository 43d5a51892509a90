#include "Linux/Applications/ExecLine.h"

#include "Linux/Applications/KeyFile.h"
#include "Testing.h"

namespace orvanta {

namespace {

TEST(ExecLineTest, FieldCodesAreExpandedWordByWord) {
    const ExecFields fields{u"the icon"_s, u"O Nome"_s, u"/a b/x.desktop"_s};
    const std::pair<const char*, QStringList> rows[] = {
        {"chromium %U", {u"chromium"_s}},
        {"a %u %f %F %d %m b", {u"a"_s, u"b"_s}},
        {"a --url=%u", {u"a"_s, u"--url="_s}},
        {"a %i -n %c", {u"a"_s, u"--icon"_s, u"the icon"_s, u"-n"_s, u"O Nome"_s}},
        {"a --entry=%k", {u"a"_s, u"--entry=/a b/x.desktop"_s}},
        {"a 100%% %%u %", {u"a"_s, u"100%"_s, u"%u"_s}},
        {R"("a b" "\$x \"q\" \\" "")", {u"a b"_s, u"$x \"q\" \\"_s, QString()}},
        {"env A=1 a", {u"env"_s, u"A=1"_s, u"a"_s}},
        {"\"unclosed", {}},
        {"", {}},
    };
    for (const auto& [exec, words] : rows) {
        EXPECT_EQ(execWords(QString::fromUtf8(exec), fields), words) << exec;
    }
    EXPECT_EQ(execWords(u"a %i b"_s, {}), (QStringList{u"a"_s, u"b"_s}));
}

TEST(ExecLineTest, AWordComesBackAsItWasWritten) {
    for (const char* word :
         {"/usr/bin/orvanta", "/a b/c", "", "100%U", "\"`$\\", " \\s\n\t", "~é"}) {
        const QString wanted = QString::fromUtf8(word);
        const auto file = KeyFile::parse("[G]\nExec=" + execWord(wanted).toUtf8() +
                                         "\nValue=" + keyFileValue(wanted).toUtf8() + '\n');
        ASSERT_TRUE(file);
        EXPECT_EQ(execWords(QString::fromUtf8(file->text("G", "Exec").get()), {}),
                  QStringList{wanted});
        EXPECT_EQ(QString::fromUtf8(file->text("G", "Value").get()), wanted);
    }
    EXPECT_EQ(execWord(u"/usr/bin/orvanta"_s), u"/usr/bin/orvanta"_s);
}

} // namespace

} // namespace orvanta
