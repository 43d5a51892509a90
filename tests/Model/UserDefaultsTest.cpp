#include "Model/UserDefaults.h"

#include "Files.h"
#include "Model/ModelError.h"
#include "Model/PreferencesMigration.h"
#include "Model/PropertyList.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtEndian>

#include <sys/resource.h>

#include <bit>
#include <csignal>
#include <functional>
#include <utility>
#include <vector>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

const QString key = u"key"_s;
const QString domain = u"com.example.own"_s;

QByteArray bigEndian(quint64 number) {
    const quint64 swapped = qToBigEndian(number);
    return {reinterpret_cast<const char*>(&swapped), sizeof swapped};
}

/// A binary list of these objects, the first of them the root; references have one byte.
QByteArray binaryList(const std::vector<QByteArray>& objects) {
    QByteArray list = "bplist00"_ba;
    QByteArray offsets;
    for (const QByteArray& object : objects) {
        offsets.append(static_cast<char>(list.size() >> 8)).append(static_cast<char>(list.size()));
        list.append(object);
    }
    const auto table = static_cast<quint64>(list.size());
    return list + offsets + QByteArray(6, '\0') + "\2\1" + bigEndian(objects.size()) +
           bigEndian(0) + bigEndian(table);
}

QByteArray dateObject(double seconds) {
    return "\x33" + bigEndian(std::bit_cast<quint64>(seconds));
}

QByteArray xmlList(const QByteArray& content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + content +
           "</plist>";
}

QByteArray xmlDictionary(const QByteArray& content) {
    return xmlList("<dict>" + content + "</dict>");
}

/// A folder of domain files, which everybody may enter.
class UserDefaultsTest : public testing::Test {
protected:
    void SetUp() override { chmod(qPrintable(folder), 0777); }

    QStringList names(const QString& of) const {
        return QDir(of).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                  QDir::NoDotAndDotDot);
    }
    UserDefaults open() const { return {folder, domain}; }

    QTemporaryDir temporary;
    const QString folder = temporary.path();
    const QString name = domain + u".plist"_s;
    const QString file = folder + u'/' + name;
    const QString broken = file + u".broken"_s;
};

} // namespace

TEST(PropertyListTest, RefusesWhatIsNoSoundDictionary) {
    std::vector<QByteArray> doubling{"\xd1\1\2", "\x51k"}; // 2^100 nodes in a few hundred bytes
    const auto nested = [](int depth) {
        std::vector<QByteArray> objects{"\xd1\1\2", "\x51k"};
        for (int i = 3; i < depth + 2; ++i) {
            objects.push_back("\xa1"_ba + static_cast<char>(i));
        }
        objects.emplace_back("\x09");
        return binaryList(objects);
    };
    for (char i = 3; i < 103; ++i) {
        doubling.push_back("\xa2" + QByteArray(2, i));
    }
    doubling.emplace_back("\x09");
    const auto ofWidth = [](int width) { // Of an offset, and of a reference.
        return "bplist00\xd0" + QByteArray(width - 1, '\0') + '\x08' + QByteArray(6, '\0') +
               QByteArray(2, static_cast<char>(width)) + bigEndian(1) + bigEndian(0) + bigEndian(9);
    };

    const std::pair<const char*, QByteArray> rows[] = {
        {"text", "paused = 1"},
        {"magic only", "bplist00"},
        {"its own child", binaryList({"\xd1\1\0"_ba, "\x51k"})},
        {"reference out of range", binaryList({"\xd1\1\2", "\x51k"})},
        {"key is no text", binaryList({"\xd1\1\1", "\x09"})},
        {"NUL in a key", binaryList({"\xd1\1\2", "\x62\0k\0\0"_ba, "\x09"})},
        {"NUL in a text", binaryList({"\xd1\1\1", "\x52k\0"_ba})},
        {"text that is not ASCII", binaryList({"\xd1\1\1", "\x52k\xe9"})},
        {"empty UTF-16", binaryList({"\xd1\1\2", "\x51k", "\x60"})},
        {"XML that is not UTF-8", xmlDictionary("<key>k\xe9</key><true/>")},
        {"text beyond the end",
         binaryList({"\xd1\1\1", "\x5f\x13\xff\xff\xff\xff\xff\xff\xff\xff"})},
        {"doubling", binaryList(doubling)},
        {"deeper than the stack may be", nested(129)},
        {"offsets of nine bytes", ofWidth(9)},
        {"offsets in the trailer",
         "bplist00\xd0"_ba + "\0\x08\0\0\0\0\2\1"_ba + bigEndian(1) + bigEndian(0) + bigEndian(9)},
        {"deep XML", xmlDictionary("<key>k</key>" + QByteArray("<array>").repeated(5000) +
                                   QByteArray("</array>").repeated(5000))},
        {"too deep for the stack", xmlList(QByteArray("<array>").repeated(1'000'000))},
        {"too slow", xmlDictionary("<key>k</key><string>" + QByteArray("&amp;").repeated(200'000) +
                                   "</string>")},
        {"too large", QByteArray(PropertyList::maximumSize + 1, ' ')},
    };
    for (const auto& [title, bytes] : rows) {
        EXPECT_THROW(PropertyList::parse(bytes), ModelError) << title;
    }
    EXPECT_TRUE(PropertyList::parse(nested(128)) && PropertyList::parse(ofWidth(8)));
    for (const QByteArray& array : {binaryList({"\xa0"}), xmlList("<array/>")}) {
        EXPECT_FALSE(PropertyList::parse(array));
    }
}

TEST_F(UserDefaultsTest, ReadsEachTypeAsThePlatformDoes) {
    const QByteArray date = "<date>2001-01-01T00:00:00Z</date>";
    const QByteArray texts = "<array><string>b</string><string>é</string></array>";
    const QByteArray mixed = "<array><string>b</string><integer>1</integer></array>";
    const QByteArrayList trueValues{"<true/>", "<integer>-2</integer>", "<real>0.5</real>",
                                    "<string>YES</string>", "<string> -007</string>"};
    const QByteArrayList falseValues{"<false/>",
                                     "<integer>0</integer>",
                                     "<real>0.0</real>",
                                     "<string>NO</string>",
                                     "<string>00</string>",
                                     "<string></string>",
                                     "<data>AQ==</data>",
                                     date,
                                     texts,
                                     mixed};
    for (const QByteArray& value : trueValues + falseValues) {
        putFile(file, xmlDictionary("<key>key</key>" + value));
        const UserDefaults defaults = open();
        EXPECT_TRUE(defaults.contains(key)) << value.constData();
        EXPECT_EQ(defaults.boolValue(key), trueValues.contains(value)) << value.constData();
        EXPECT_EQ(defaults.date(key), value == date ? std::optional(Date{0}) : std::nullopt);
        EXPECT_EQ(defaults.stringArray(key).value_or(QStringList()).join(u' '),
                  value == texts ? u"b é"_s : QString());
    }
    EXPECT_FALSE(open().contains(u"other"_s) || open().boolValue(u"other"_s));
}

TEST_F(UserDefaultsTest, WritesThroughAtOnceForThePersonAlone) {
    const mode_t mask = umask(0);
    const QString deeper = folder + u"/not/yet"_s;
    const QString written = deeper + u'/' + name;
    UserDefaults defaults(deeper, domain);
    EXPECT_FALSE(defaults.contains(key) || QFileInfo::exists(deeper));
    EXPECT_TRUE(defaults.setBool(u"bool"_s, true));
    EXPECT_EQ(modeOf(deeper), 0700U);
    EXPECT_EQ(modeOf(written), 0600U);
    chmod(qPrintable(written), 0666);
    EXPECT_TRUE(defaults.setDate(u"date"_s, Date{-0.75}));
    EXPECT_EQ(modeOf(written), 0600U);
    EXPECT_TRUE(defaults.setStringArray(u"array"_s, {u"é"_s}));
    umask(mask);
    for (const UserDefaults& each : {defaults, UserDefaults(deeper, domain)}) {
        EXPECT_TRUE(each.boolValue(u"bool"_s));
        EXPECT_EQ(each.date(u"date"_s), Date{-0.75});
        EXPECT_EQ(each.stringArray(u"array"_s), QStringList{u"é"_s});
    }
    EXPECT_EQ(names(deeper), QStringList{name});
}

TEST_F(UserDefaultsTest, KeepsWhatItAndAnotherMachineWroteToTheBit) {
    const QByteArray date = dateObject(721692800.1234567);
    const QByteArray old = dateObject(-63114076800.3);
    const QByteArray data = "\x43\0\1\xff"_ba;
    const QByteArray number = "\x13\xff\xff\xff\xff\xff\xff\xff\xfe";
    putFile(file, binaryList({"\xd3\1\2\3\4\5\6", "\x59resetDate", "\x57Unknown", "\x56paused",
                              date, "\xd1\7\x08", "\x08", "\x64\0d\0e\0e\0p"_ba, "\xa3\x09\x0a\x0b",
                              old, data, number}));
    EXPECT_EQ(open().date(u"resetDate"_s), Date{721692800.1234567});
    for (const double seconds : {0.0, -0.25, -1.5, -978307200.000001, 3e9, -6e10}) {
        ASSERT_TRUE(open().setDate(key, Date{seconds}));
        EXPECT_EQ(open().date(key), Date{seconds});
        for (const QByteArray& kept :
             {dateObject(seconds), date, old, data, number, QByteArray("\x54"_ba + "deep")}) {
            EXPECT_TRUE(contentOf(file).contains(kept)) << kept.toHex().constData();
        }
    }
    EXPECT_EQ(open().persistentDomain(domain)->dictionary(u"Unknown"_s)->keys(),
              QStringList{u"deep"_s});
}

TEST_F(UserDefaultsTest, ATruncatedFileIsAbsentOrWholeAndNeverLost) {
    const QByteArray xml = xmlDictionary("<key>key</key><string>true &amp;</string><!-- c -->");
    for (const QByteArray& whole : {PropertyList::parse(xml)->toBinary(), xml}) {
        for (qsizetype size = 0; size < whole.size(); ++size) {
            putFile(file, whole.first(size));
            UserDefaults defaults = open();
            const bool isAbsent = !defaults.contains(key);
            EXPECT_NE(defaults.boolValue(key), isAbsent) << size;
            EXPECT_TRUE(defaults.setBool(u"other"_s, true));
            EXPECT_TRUE(open().boolValue(u"other"_s) && open().contains(key) != isAbsent);
            EXPECT_EQ(contentOf(broken), isAbsent ? whole.first(size) : "unreadable"_ba) << size;
            QFile::remove(broken);
        }
    }
}

TEST_F(UserDefaultsTest, WhatCannotBeReadIsKeptBesideTheNewFile) {
    PropertyList good;
    good.setBoolean(key, true);
    const auto inodeOf = [](const QString& path) {
        struct stat info {};
        return lstat(qPrintable(path), &info) == 0 ? info.st_ino : 0;
    };
    QString aside = broken;
    int kept = 0;
    const std::pair<std::function<void()>, const char*> rows[] = {
        {[&] { putFile(file, binaryList({"\xa0"})); }, "an array"},
        {[&] { QDir().mkpath(file + u"/inside"_s); }, "a directory"},
        {[&] { mkfifo(qPrintable(file), 0600); }, "a pipe"},
        {[&] { QFile::link(file, file); }, "links in a circle"},
        {[&] { putFile(file, QByteArray(PropertyList::maximumSize + 1, ' ')); }, "too large"},
        {[&] {
             putFile(file, good.toBinary());
             chmod(qPrintable(file), 0);
         },
         "no permission"},
    };
    for (const auto& [make, title] : rows) {
        SCOPED_TRACE(title);
        make();
        const WithoutPrivileges somebody;
        const auto inode = inodeOf(file);
        UserDefaults defaults = open();
        EXPECT_FALSE(defaults.contains(key) || defaults.persistentDomain(domain));
        EXPECT_EQ(inodeOf(file), inode) << "reading moves nothing";
        EXPECT_TRUE(defaults.setBool(u"new"_s, false) && defaults.setBool(u"new"_s, true));
        EXPECT_TRUE(open().boolValue(u"new"_s));
        EXPECT_EQ(inodeOf(aside), inode);
        EXPECT_EQ(names(folder).size(), ++kept + 1) << "moved aside only once";
        aside = broken + u"-%1"_s.arg(kept + 1);
        QFile::remove(file);
    }

    // Also a good one that has appeared since.
    UserDefaults defaults = open();
    putFile(file, good.toBinary());
    EXPECT_TRUE(defaults.setBool(u"new"_s, true));
    EXPECT_EQ(contentOf(aside), good.toBinary());
}

TEST_F(UserDefaultsTest, AFailedWriteHarmsNothingAndIsMadeUpForByTheNext) {
    PropertyList good;
    good.setBoolean(u"before"_s, true);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit full{10, limit.rlim_max}; // As a disk that is full.
    std::signal(SIGXFSZ, SIG_IGN);
    for (const QByteArray& before : {good.toBinary(), "broken"_ba}) {
        putFile(file, before);
        const bool isBroken = !open().contains(u"before"_s);
        UserDefaults defaults = open();
        setrlimit(RLIMIT_FSIZE, &full);
        EXPECT_FALSE(defaults.setDate(u"date"_s, Date{1}));
        EXPECT_FALSE(defaults.setStringArray(u"array"_s, {u"a"_s}));
        setrlimit(RLIMIT_FSIZE, &limit);
        chmod(qPrintable(folder), 0555);
        {
            const WithoutPrivileges somebody;
            EXPECT_FALSE(defaults.setBool(key, true));
        }
        chmod(qPrintable(folder), 0777);
        EXPECT_EQ(defaults.date(u"date"_s), Date{1});
        EXPECT_EQ(contentOf(file), before);
        EXPECT_EQ(names(folder), QStringList{name});
        EXPECT_TRUE(defaults.setBool(u"after"_s, true));
        EXPECT_EQ(open().persistentDomain(domain)->keys().size(), isBroken ? 4 : 5);
        EXPECT_EQ(open().date(u"date"_s), Date{1});
        EXPECT_EQ(contentOf(broken), isBroken ? before : "unreadable"_ba);
    }

    // A file in the folder's place.
    UserDefaults nowhere(file + u"/folder"_s, domain);
    EXPECT_FALSE(nowhere.setBool(key, true));
    EXPECT_TRUE(nowhere.boolValue(key));
    QFile::remove(file);
    EXPECT_TRUE(nowhere.setBool(u"other"_s, true));
    EXPECT_TRUE(UserDefaults(file + u"/folder"_s, domain).boolValue(key));
}

TEST_F(UserDefaultsTest, WritesThroughASymbolicLink) {
    const QString target = folder + u"/target"_s;
    ASSERT_TRUE(QFile::link(u"target"_s, file));
    for (const bool isBroken : {false, true}) {
        isBroken ? putFile(target, "broken") : void();
        EXPECT_TRUE(open().setBool(key, true) && open().boolValue(key));
        EXPECT_TRUE(QFileInfo(file).isSymLink() && !QFileInfo(target).isSymLink());
        EXPECT_EQ(QFile::exists(target + u".broken"_s), isBroken);
    }
    QFile::remove(target);
    ASSERT_EQ(mkfifo(qPrintable(target), 0600), 0);
    EXPECT_FALSE(open().setBool(key, true)) << "what is no plain file stays where it is";
}

TEST_F(UserDefaultsTest, WhatAnOlderInstallationLeftIsTakenWhereThereIsNothingYet) {
    const QString older = u"com.example.older"_s;
    const QString olderFile = folder + u'/' + older + u".plist"_s;
    const QByteArray everything =
        "<key>safari</key><false/><key>chrome</key><string>x</string><key>paused</key><true/>"
        "<key>finderIgnoredV1</key><true/><key>disabledBrowsers</key><array/>"
        "<key>historySeededV1</key><true/><key>other</key><true/>";
    const struct {
        const char* what;
        QByteArray older;
        QByteArray newer;
        const char* keys;
        bool isPaused = false;
    } rows[] = {
        {"neither", {}, {}, ""},
        {"everything", everything, {}, "chrome finderIgnoredV1 paused safari", true},
        {"what is there stays", everything, "<key>mine</key><true/><key>paused</key><false/>",
         "chrome finderIgnoredV1 mine paused safari"},
        {"nothing that is carried over", "<key>other</key><true/>", {}, ""},
        {"a date", "<key>resetDate</key><date>2001-01-01T00:00:00Z</date>", {}, "resetDate"},
        {"a broken one", "<garbage", {}, ""},
    };
    for (const auto& [what, olderValues, newerValues, keys, isPaused] : rows) {
        SCOPED_TRACE(what);
        for (const auto& [at, values] : {std::pair(olderFile, olderValues), {file, newerValues}}) {
            QFile::remove(at);
            values.isEmpty() ? void() : putFile(at, xmlDictionary(values));
        }
        UserDefaults defaults = open();
        PreferencesMigration::migrate(defaults, older, domain);
        for (const UserDefaults& each : {defaults, open()}) {
            QStringList found = each.persistentDomain(domain).value_or(PropertyList()).keys();
            found.sort();
            EXPECT_EQ(found.join(u' '), QLatin1StringView(keys));
            EXPECT_EQ(each.boolValue(u"paused"_s), isPaused);
        }
        EXPECT_EQ(QFile::exists(file), *keys != 0);
        EXPECT_EQ(QFile::exists(olderFile), !olderValues.isEmpty());
    }
}
