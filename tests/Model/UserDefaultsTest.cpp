#include "Model/UserDefaults.h"

#include "Model/ModelError.h"
#include "Model/PreferencesMigration.h"
#include "Model/PropertyList.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <bit>
#include <csignal>
#include <functional>
#include <utility>
#include <vector>

namespace orvanta {

namespace {

using namespace Qt::StringLiterals;

const QString key = u"key"_s;
const QString domain = u"com.example.own"_s;

/// A binary list of these objects, the first of them the root; references have one byte.
QByteArray binaryList(const std::vector<QByteArray>& objects) {
    QByteArray list = "bplist00"_qba;
    QByteArray offsets;
    for (const QByteArray& object : objects) {
        offsets.append(static_cast<char>(list.size() >> 8)).append(static_cast<char>(list.size()));
        list.append(object);
    }
    const auto table = qToBigEndian(static_cast<quint64>(list.size()));
    const auto count = qToBigEndian(static_cast<quint64>(objects.size()));
    list.append(offsets).append(6, '\0').append("\2\1"_qba);
    list.append(reinterpret_cast<const char*>(&count), 8).append(8, '\0');
    return list.append(reinterpret_cast<const char*>(&table), 8);
}

QByteArray dateObject(double seconds) {
    const auto bits = qToBigEndian(std::bit_cast<quint64>(seconds));
    return "\x33"_qba + QByteArray(reinterpret_cast<const char*>(&bits), 8);
}

QByteArray xmlList(const QByteArray& content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">"_qba + content +
           "</plist>"_qba;
}

/// A folder of domain files, which everybody may enter.
class UserDefaultsTest : public testing::Test {
protected:
    void SetUp() override { chmod(qPrintable(folder), 0777); }

    static void put(const QString& path, const QByteArray& bytes) {
        QFile out(path);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly));
        ASSERT_EQ(out.write(bytes), bytes.size());
    }
    static QByteArray contentOf(const QString& path) {
        QFile in(path);
        return in.open(QIODevice::ReadOnly) ? in.readAll() : "unreadable"_qba;
    }
    QStringList names() const {
        return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                      QDir::NoDotAndDotDot);
    }
    UserDefaults open() const { return {folder, domain}; }

    QTemporaryDir m_temporary;
    const QString folder = m_temporary.path();
    const QString name = domain + u".plist"_s;
    const QString file = folder + u'/' + name;
};

/// Permissions do not bind root: tests about them run as somebody who is not.
class WithoutPrivileges {
public:
    WithoutPrivileges() {
        if (m_user == 0) {
            EXPECT_EQ(seteuid(65534), 0);
        }
    }
    ~WithoutPrivileges() { EXPECT_EQ(seteuid(m_user), 0); }
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

private:
    const uid_t m_user = geteuid();
};

class FullDisk {
public:
    FullDisk() {
        getrlimit(RLIMIT_FSIZE, &m_limit);
        const rlimit small{10, m_limit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &m_limit);
        std::signal(SIGXFSZ, m_handler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit m_limit{};
    void (*m_handler)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

} // namespace

TEST(PropertyListTest, KeepsDatesToTheBit) {
    for (const double seconds :
         {0.0, -0.25, -1.5, 721692800.1234567, -978307200.000001, 3e9, -6e10}) {
        PropertyList list;
        list.setDate(key, Date{seconds});
        const auto bytes = list.toBinary();
        EXPECT_TRUE(bytes.contains(dateObject(seconds))) << seconds;
        EXPECT_EQ(PropertyList::parse(bytes)->date(key), Date{seconds});
    }
}

TEST(PropertyListTest, ReadsBackWhatItWroteAndOnlyAsThatType) {
    PropertyList hashes;
    hashes.setData(u"Activity"_s, QByteArray(32, '\0'));
    hashes.setData(u"DayActivity"_s, {});
    PropertyList list;
    list.setDictionary(u"hashes"_s, hashes);
    list.setInteger(u"integer"_s, -3);
    list.setText(u"text"_s, u"Início 😀"_s);
    list.setTexts(u"texts"_s, {u"b"_s, u""_s});
    list.setBoolean(u"boolean"_s, true);

    const PropertyList read = PropertyList::parse(list.toBinary()).value();
    EXPECT_EQ(read.keys().size(), 5);
    EXPECT_EQ(read.dictionary(u"hashes"_s)->keys(), (QStringList{u"Activity"_s, u"DayActivity"_s}));
    EXPECT_EQ(read.dictionary(u"hashes"_s)->data(u"Activity"_s), QByteArray(32, '\0'));
    EXPECT_EQ(read.dictionary(u"hashes"_s)->data(u"DayActivity"_s), QByteArray());
    EXPECT_EQ(read.integer(u"integer"_s), -3);
    EXPECT_EQ(read.text(u"text"_s), u"Início 😀"_s);
    EXPECT_EQ(read.texts(u"texts"_s), (QStringList{u"b"_s, u""_s}));
    EXPECT_EQ(read.boolean(u"boolean"_s), true);
    for (const QString& other : read.keys()) {
        EXPECT_EQ(read.integer(other).has_value(), other == u"integer"_s);
        EXPECT_EQ(read.text(other).has_value(), other == u"text"_s);
        EXPECT_EQ(read.texts(other).has_value(), other == u"texts"_s);
        EXPECT_EQ(read.boolean(other).has_value(), other == u"boolean"_s);
        EXPECT_EQ(read.dictionary(other).has_value(), other == u"hashes"_s);
        EXPECT_FALSE(read.data(other) || read.date(other) || read.real(other));
    }

    PropertyList copy = read;
    EXPECT_TRUE(copy.copyValue(u"text"_s, hashes) == false && copy.text(u"text"_s));
    EXPECT_TRUE(copy.copyValue(u"texts"_s, list));
    copy.setInteger(u"text"_s, 1);
    EXPECT_EQ(read.text(u"text"_s), u"Início 😀"_s) << "a copy shares nothing";
}

TEST(PropertyListTest, RefusesWhatIsNoSoundDictionary) {
    std::vector<QByteArray> doubling; // 2^100 nodes in a few hundred bytes
    std::vector<QByteArray> deep;
    doubling.push_back("\xd1\1\2"_qba);
    doubling.push_back("\x51k"_qba);
    deep = doubling;
    for (char i = 3; i < 103; ++i) {
        doubling.push_back("\xa2"_qba + QByteArray(2, i));
    }
    for (int i = 3; i < 250; ++i) {
        deep.push_back("\xa1"_qba + static_cast<char>(i));
    }
    doubling.push_back("\x09"_qba);
    deep.push_back("\x09"_qba);

    const std::vector<std::pair<const char*, QByteArray>> rows{
        {"empty", {}},
        {"text", "paused = 1"_qba},
        {"magic only", "bplist00"_qba},
        {"its own child", binaryList({"\xd1\1\0"_qba, "\x51k"_qba})},
        {"reference out of range", binaryList({"\xd1\1\2"_qba, "\x51k"_qba})},
        {"key is no text", binaryList({"\xd1\1\1"_qba, "\x09"_qba})},
        {"NUL in a key", binaryList({"\xd1\1\2"_qba, "\x62\0k\0\0"_qba, "\x09"_qba})},
        {"NUL in a text", binaryList({"\xd1\1\1"_qba, "\x52k\0"_qba})},
        {"text that is not ASCII", binaryList({"\xd1\1\1"_qba, "\x52k\xe9"_qba})},
        {"empty UTF-16", binaryList({"\xd1\1\2"_qba, "\x51k"_qba, "\x60"_qba})},
        {"XML that is not UTF-8", xmlList("<dict><key>k\xe9</key><true/></dict>"_qba)},
        {"text beyond the end",
         binaryList({"\xd1\1\1"_qba, "\x5f\x13\xff\xff\xff\xff\xff\xff\xff\xff"_qba})},
        {"doubling", binaryList(doubling)},
        {"deep", binaryList(deep)},
        {"deep XML", xmlList("<dict><key>k</key>"_qba + QByteArray("<array>").repeated(5000) +
                             QByteArray("</array>").repeated(5000) + "</dict>"_qba)},
        {"too deep for the stack", xmlList(QByteArray("<array>").repeated(1'000'000))},
        {"too slow", xmlList("<dict><key>k</key><string>"_qba +
                             QByteArray("&amp;").repeated(200'000) + "</string></dict>"_qba)},
        {"too large", QByteArray(PropertyList::maximumSize + 1, ' ')},
    };
    for (const auto& [title, bytes] : rows) {
        EXPECT_THROW(PropertyList::parse(bytes), ModelError) << title;
    }
    for (const QByteArray& array : {binaryList({"\xa0"_qba}), xmlList("<array/>"_qba)}) {
        EXPECT_FALSE(PropertyList::parse(array));
    }
}

TEST_F(UserDefaultsTest, ReadsEachTypeAsThePlatformDoes) {
    struct Row {
        const char* value;
        bool asBool = false;
        bool isDate = false;
        std::optional<QStringList> asArray = {};
    };
    const std::vector<Row> rows{
        {"<true/>", true},
        {"<false/>"},
        {"<integer>0</integer>"},
        {"<integer>-2</integer>", true},
        {"<real>0.0</real>"},
        {"<real>0.5</real>", true},
        {"<string>YES</string>", true},
        {"<string>true</string>", true},
        {"<string>y</string>", true},
        {"<string> -007</string>", true},
        {"<string>NO</string>"},
        {"<string>on</string>"},
        {"<string>00</string>"},
        {"<string></string>"},
        {"<data>AQ==</data>"},
        {"<date>2001-01-01T00:00:00Z</date>", false, true},
        {"<dict><key>a</key><true/></dict>"},
        {"<array/>", false, false, QStringList()},
        {"<array><string>b</string><string>a</string></array>", false, false,
         QStringList{u"b"_s, u"a"_s}},
        {"<array><string>b</string><integer>1</integer></array>"},
    };
    for (const Row& row : rows) {
        put(file, xmlList("<dict><key>key</key>"_qba + row.value + "</dict>"_qba));
        const UserDefaults defaults = open();
        EXPECT_TRUE(defaults.contains(key)) << row.value;
        EXPECT_EQ(defaults.boolValue(key), row.asBool) << row.value;
        EXPECT_EQ(defaults.date(key), row.isDate ? std::optional(Date{0}) : std::nullopt)
            << row.value;
        EXPECT_EQ(defaults.stringArray(key), row.asArray) << row.value;
        EXPECT_FALSE(defaults.contains(u"other"_s) || defaults.boolValue(u"other"_s));
    }
}

TEST_F(UserDefaultsTest, WritesThroughAtOnceForThePersonAlone) {
    const mode_t mask = umask(0);
    const QString deeper = folder + u"/not/yet"_s;
    UserDefaults defaults(deeper, domain);
    EXPECT_FALSE(defaults.contains(key) || QFileInfo::exists(deeper));
    const auto modeOf = [](const QString& path) {
        struct stat info {};
        stat(qPrintable(path), &info);
        return info.st_mode & 0777;
    };
    EXPECT_TRUE(defaults.setBool(u"bool"_s, true));
    EXPECT_EQ(modeOf(deeper), 0700U);
    EXPECT_EQ(modeOf(deeper + u'/' + name), 0600U);
    chmod(qPrintable(deeper + u'/' + name), 0666);
    EXPECT_TRUE(defaults.setDate(u"date"_s, Date{-0.75}));
    EXPECT_EQ(modeOf(deeper + u'/' + name), 0600U);
    EXPECT_TRUE(defaults.setStringArray(u"array"_s, {u"a"_s}));
    umask(mask);

    for (const UserDefaults& each : {defaults, UserDefaults(deeper, domain)}) {
        EXPECT_TRUE(each.boolValue(u"bool"_s));
        EXPECT_EQ(each.date(u"date"_s), Date{-0.75});
        EXPECT_EQ(each.stringArray(u"array"_s), QStringList{u"a"_s});
    }
    EXPECT_EQ(QDir(deeper).entryList(QDir::Files | QDir::Hidden), QStringList{name});
}

TEST_F(UserDefaultsTest, KeepsWhatAnotherMachineWroteToTheBit) {
    const double moment = 721692800.1234567;
    const double old = -63114076800.3;
    put(file, binaryList({
                  "\xd3\1\2\3\4\5\6"_qba,
                  "\x59resetDate"_qba,
                  "\x57Unknown"_qba,
                  "\x56paused"_qba,
                  dateObject(moment),
                  "\xd1\7\x08"_qba,
                  "\x08"_qba,
                  "\x64\0d\0e\0e\0p"_qba,
                  "\xa3\x09\x0a\x0b"_qba,
                  dateObject(old),
                  "\x43\0\1\xff"_qba,
                  "\x13\xff\xff\xff\xff\xff\xff\xff\xfe"_qba,
              }));
    UserDefaults defaults = open();
    EXPECT_EQ(defaults.date(u"resetDate"_s), Date{moment});
    ASSERT_TRUE(defaults.setBool(u"paused"_s, true));

    const QByteArray bytes = contentOf(file);
    for (const QByteArray& kept : {dateObject(moment), dateObject(old), "\x43\0\1\xff"_qba,
                                   "\x13\xff\xff\xff\xff\xff\xff\xff\xfe"_qba,
                                   "\x54"
                                   "deep"_qba}) {
        EXPECT_TRUE(bytes.contains(kept)) << kept.toHex().constData();
    }
    EXPECT_EQ(open().date(u"resetDate"_s), Date{moment});
    EXPECT_TRUE(open().boolValue(u"paused"_s));
    EXPECT_EQ(open().persistentDomain(domain)->dictionary(u"Unknown"_s)->keys(),
              QStringList{u"deep"_s});
}

TEST_F(UserDefaultsTest, ATruncatedFileIsAbsentOrWholeAndNeverLost) {
    const QByteArray xml =
        xmlList("<dict><key>key</key><array><string>a&amp;b</string></array><!-- c --></dict>"_qba);
    for (const QByteArray& whole : {PropertyList::parse(xml)->toBinary(), xml}) {
        for (qsizetype size = 0; size < whole.size(); ++size) {
            put(file, whole.first(size));
            UserDefaults defaults = open();
            const bool isAbsent = !defaults.contains(key);
            if (!isAbsent) {
                EXPECT_EQ(defaults.stringArray(key), QStringList{u"a&b"_s}) << size;
            }
            EXPECT_TRUE(defaults.setBool(u"other"_s, true));
            EXPECT_TRUE(open().boolValue(u"other"_s) && open().contains(key) != isAbsent);
            EXPECT_EQ(QFile::exists(file + u".broken"_s), isAbsent) << size;
            if (isAbsent) {
                EXPECT_EQ(contentOf(file + u".broken"_s), whole.first(size));
            }
            QFile::remove(file + u".broken"_s);
        }
    }
}

TEST_F(UserDefaultsTest, WhatCannotBeReadIsKeptBesideTheNewFile) {
    const std::vector<std::pair<const char*, std::function<void()>>> rows{
        {"garbage",
         [&] {
             put(file, "garbage"_qba);
         }},
        {"an array",
         [&] {
             put(file, binaryList({"\xa0"_qba}));
         }},
        {"a directory",
         [&] {
             QDir().mkpath(file + u"/inside"_s);
         }},
        {"a pipe",
         [&] {
             mkfifo(qPrintable(file), 0600);
         }},
        {"links in a circle",
         [&] {
             QFile::link(file, file);
         }},
        {"too large",
         [&] {
             put(file, {});
             QFile::resize(file, PropertyList::maximumSize + 1);
         }},
        {"no permission",
         [&] {
             PropertyList good;
             good.setBoolean(key, true);
             put(file, good.toBinary());
             chmod(qPrintable(file), 0);
         }},
    };
    const auto inodeOf = [](const QString& path) {
        struct stat info {};
        return lstat(qPrintable(path), &info) == 0 ? info.st_ino : 0;
    };
    QStringList expected;
    for (const auto& [title, make] : rows) {
        make();
        const WithoutPrivileges somebody;
        const auto inode = inodeOf(file);
        UserDefaults defaults = open();
        EXPECT_FALSE(defaults.contains(key) || defaults.persistentDomain(domain)) << title;
        EXPECT_EQ(inodeOf(file), inode) << title << ": reading moves nothing";
        EXPECT_TRUE(defaults.setBool(u"new"_s, true)) << title;
        EXPECT_TRUE(open().boolValue(u"new"_s)) << title;
        const QString aside =
            name + (expected.isEmpty() ? u".broken"_s : u".broken-%1"_s.arg(expected.size() + 1));
        EXPECT_EQ(inodeOf(folder + u'/' + aside), inode) << title;
        expected.append(aside);
        EXPECT_TRUE(defaults.setBool(u"new"_s, false)) << title;
        EXPECT_EQ(names().size(), expected.size() + 1) << title << ": moved aside only once";
        QFile::remove(file);
    }
}

TEST_F(UserDefaultsTest, AFileThatAppearedSinceIsKeptToo) {
    UserDefaults defaults = open();
    PropertyList late;
    late.setBoolean(key, true);
    put(file, late.toBinary());
    EXPECT_TRUE(defaults.setBool(u"new"_s, true));
    EXPECT_EQ(contentOf(file + u".broken"_s), late.toBinary());
}

TEST_F(UserDefaultsTest, AFailedWriteHarmsNothingAndIsMadeUpForByTheNext) {
    ASSERT_TRUE(open().setBool(u"before"_s, true));
    const QByteArray good = contentOf(file);
    UserDefaults defaults = open();
    {
        const FullDisk disk;
        EXPECT_FALSE(defaults.setDate(u"date"_s, Date{1}));
        EXPECT_FALSE(defaults.setStringArray(u"array"_s, {u"a"_s}));
    }
    EXPECT_EQ(defaults.date(u"date"_s), Date{1});
    EXPECT_EQ(contentOf(file), good);
    EXPECT_EQ(names(), QStringList{name});
    EXPECT_TRUE(defaults.setBool(u"after"_s, true));
    EXPECT_TRUE(open().boolValue(u"before"_s) && open().boolValue(u"after"_s));
    EXPECT_EQ(open().date(u"date"_s), Date{1});
    EXPECT_TRUE(open().contains(u"array"_s));

    // A file in the folder's place.
    UserDefaults nowhere(file + u"/folder"_s, domain);
    EXPECT_FALSE(nowhere.setBool(key, true));
    EXPECT_TRUE(nowhere.boolValue(key));
    QFile::remove(file);
    EXPECT_TRUE(nowhere.setBool(u"other"_s, true));
    EXPECT_TRUE(UserDefaults(file + u"/folder"_s, domain).boolValue(key));
}

TEST_F(UserDefaultsTest, ABrokenFileStaysInItsPlaceUntilANewOneStandsThere) {
    put(file, "broken"_qba);
    UserDefaults defaults = open();
    {
        const FullDisk disk;
        EXPECT_FALSE(defaults.setBool(key, true));
    }
    EXPECT_EQ(names(), QStringList{name});
    chmod(qPrintable(folder), 0555);
    {
        const WithoutPrivileges somebody;
        EXPECT_FALSE(defaults.setBool(key, true));
    }
    EXPECT_EQ(names(), QStringList{name});
    EXPECT_EQ(contentOf(file), "broken"_qba);
    chmod(qPrintable(folder), 0777);
    EXPECT_TRUE(defaults.setBool(u"other"_s, true));
    EXPECT_TRUE(open().boolValue(key));
    EXPECT_EQ(contentOf(file + u".broken"_s), "broken"_qba);
}

TEST_F(UserDefaultsTest, WritesThroughASymbolicLink) {
    const QString target = folder + u"/dotfiles/orvanta"_s;
    ASSERT_TRUE(QDir().mkpath(folder + u"/dotfiles"_s));
    ASSERT_TRUE(QFile::link(u"dotfiles/orvanta"_s, file));
    for (const bool isBroken : {false, true}) {
        if (isBroken) {
            put(target, "broken"_qba);
        }
        UserDefaults defaults = open();
        EXPECT_TRUE(defaults.setBool(key, true));
        EXPECT_TRUE(defaults.setBool(u"other"_s, true));
        EXPECT_TRUE(QFileInfo(file).isSymLink() && !QFileInfo(target).isSymLink());
        EXPECT_TRUE(open().boolValue(key) && open().boolValue(u"other"_s));
        EXPECT_EQ(QFile::exists(target + u".broken"_s), isBroken);
    }
}

TEST_F(UserDefaultsTest, ReadsAndReplacesWholeDomains) {
    const QString other = u"com.example.other"_s;
    UserDefaults defaults = open();
    EXPECT_FALSE(defaults.persistentDomain(domain) || defaults.persistentDomain(other));
    EXPECT_TRUE(names().isEmpty());

    PropertyList values;
    values.setBoolean(key, true);
    EXPECT_TRUE(defaults.setPersistentDomain(values, other));
    EXPECT_TRUE(defaults.setPersistentDomain(values, other));
    EXPECT_EQ(defaults.persistentDomain(other)->boolean(key), true);
    EXPECT_FALSE(defaults.contains(key));
    EXPECT_EQ(names(), QStringList{other + u".plist"_s});

    ASSERT_TRUE(defaults.setBool(u"gone"_s, true));
    EXPECT_TRUE(defaults.setPersistentDomain(values, domain));
    EXPECT_TRUE(defaults.boolValue(key) && !defaults.contains(u"gone"_s));
    EXPECT_EQ(open().persistentDomain(domain)->keys(), QStringList{key});

    put(folder + u'/' + other + u".plist"_s, "broken"_qba);
    EXPECT_TRUE(defaults.setPersistentDomain(values, other));
    EXPECT_EQ(contentOf(folder + u'/' + other + u".plist.broken"_s), "broken"_qba);
}

TEST_F(UserDefaultsTest, WhatAnOlderInstallationLeftIsTakenWhereThereIsNothingYet) {
    const QString older = u"com.example.older"_s;
    const auto xml = [](const char* content) {
        return xmlList("<dict>"_qba + content + "</dict>"_qba);
    };
    const QByteArray everything = xml("<key>safari</key><false/><key>chrome</key><string>x</string>"
                                      "<key>paused</key><true/><key>finderIgnoredV1</key><true/>"
                                      "<key>disabledBrowsers</key><array/>"
                                      "<key>historySeededV1</key><true/>"
                                      "<key>setupDoneV1</key><true/><key>other</key><true/>");
    const struct {
        const char* what;
        QByteArray older;
        QByteArray newer;
        QStringList added;
    } rows[] = {
        {"neither", {}, {}, {}},
        {"no older one", {}, xml("<key>paused</key><true/>"), {}},
        {"everything",
         everything,
         {},
         {u"safari"_s, u"chrome"_s, u"paused"_s, u"finderIgnoredV1"_s}},
        {"what is there stays",
         everything,
         xml("<key>paused</key><false/><key>safari</key><integer>1</integer><key>mine</key><true/"
             ">"),
         {u"chrome"_s, u"finderIgnoredV1"_s}},
        {"nothing that is carried over", xml("<key>setupDoneV1</key><true/>"), {}, {}},
        {"a date to the bit",
         binaryList({"\xd1\1\2"_qba, "\x59resetDate"_qba, dateObject(721692800.1234567)}),
         {},
         {u"resetDate"_s}},
        {"a broken one", "garbage", {}, {}},
    };
    for (const auto& [what, olderBytes, newerBytes, added] : rows) {
        SCOPED_TRACE(what);
        for (const auto& [at, bytes] : {std::pair(folder + u'/' + older + u".plist"_s, olderBytes),
                                        std::pair(file, newerBytes)}) {
            QFile::remove(at);
            if (!bytes.isEmpty()) {
                put(at, bytes);
            }
        }
        const auto before = open().persistentDomain(domain);
        PropertyList expected = before.value_or(PropertyList());
        for (const QString& each : added) {
            EXPECT_TRUE(expected.copyValue(each, *open().persistentDomain(older)));
        }
        for (int time = 0; time < 2; ++time) {
            UserDefaults defaults = open();
            PreferencesMigration::migrate(defaults, older, domain);
            const auto after = open().persistentDomain(domain);
            ASSERT_EQ(after.has_value(), before || !added.isEmpty());
            EXPECT_TRUE(!after || after->toBinary() == expected.toBinary());
            EXPECT_TRUE(!added.isEmpty() || !before || contentOf(file) == newerBytes);
        }
        EXPECT_EQ(QFile::exists(folder + u'/' + older + u".plist"_s), !olderBytes.isEmpty());
    }
}

} // namespace orvanta
