#include "Platform/CleanText.h"

#include "Fakes/QtPrinters.h"

#include <QSet>
#include <QStringList>

#include <gtest/gtest.h>

using namespace orvanta;
using namespace Qt::StringLiterals;

TEST(CleanText, ANameIsOneLineInItsOwnDirection) {
    for (const auto& [name, shown] : {
             std::pair(u"  two  spaces "_s, u"  two  spaces "_s),
             {u"a\nb\r\n\tc\u0007\u2028d\u2029"_s, u"a b c d"_s},
             {u"gnp.\u202Eexe\u202C \u2066x\u2069"_s, u"gnp.exe x"_s},
             {u"\u202E"_s, QString()},
             {QString(200, u'a'), QString(200, u'a')},
             {QString(201, u'a'), QString(199, u'a') + u'…'},
             {QString(198, u'a') + u"\U0001F600b"_s, QString(198, u'a') + u'…'},
         }) {
        EXPECT_EQ(cleanName(name), shown);
    }
}

TEST(CleanText, IdentifiersStayDifferentHoweverLongOrDirty) {
    EXPECT_EQ(boundedIdentifier(QString(255, u'a')), QString(255, u'a'));
    const QString head(300, u'a');
    const QStringList hostile{
        head,       head + u'b',   head + u'c', u"a\nb"_s,
        u"a b\n"_s, u"a\u202Eb"_s, u"ab\n"_s,   QString(254, u'a') + u"\U0001F600"_s};
    QSet<QString> seen;
    for (const QString& identifier : hostile) {
        const QString bounded = boundedIdentifier(identifier);
        EXPECT_LE(bounded.size(), 255);
        EXPECT_EQ(cleanName(bounded.right(60)), bounded.right(60));
        EXPECT_EQ(boundedIdentifier(bounded), bounded);
        EXPECT_EQ(bounded.section(u'#', 0, 0).left(5), cleanName(identifier).left(5).trimmed());
        seen.insert(bounded);
    }
    EXPECT_EQ(seen.size(), hostile.size());
}
