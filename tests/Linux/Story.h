#pragma once

#include "Testing.h"

#include <QRegularExpression>
#include <QVariant>

namespace orvanta {

/// A test that tells a story in words: a word does what was laid down for it (`lock=1`), `59s` lets
/// so much time pass, and brackets hold what has been noted since the last ones; braces, whatever
/// its order.
class Story : public testing::Test {
protected:
    template <typename Value = int>
    void on(const QString& word, const std::type_identity_t<std::function<void(Value)>>& action) {
        words_[word] = [action](const QVariant& value) {
            action(value.value<Value>());
        };
    }

    void play(const QString& story) {
        static const QRegularExpression token(u"[[{][^]}]*.|\\S+"_s);
        for (const auto& match : token.globalMatch(story)) {
            const QString word = match.captured();
            SCOPED_TRACE(story.first(match.capturedEnd()).toStdString());
            settle();
            if (word.front() == u'[' || word.front() == u'{') {
                QStringList expected = word.sliced(1).chopped(1).split(u' ', Qt::SkipEmptyParts);
                QStringList found = std::exchange(noted, {});
                if (word.front() == u'{') {
                    expected.sort();
                    found.sort();
                }
                EXPECT_EQ(found, expected);
            } else if (word.front().isDigit()) {
                loop.advance(word.chopped(1).toDouble());
            } else {
                words_.at(word.section(u'=', 0, 0))(word.section(u'=', 1));
            }
        }
    }
    /// Lets everything that was said be heard.
    virtual void settle() {}

    HandMainLoop loop;
    QStringList noted;

private:
    std::map<QString, std::function<void(const QVariant&)>> words_;
};

} // namespace orvanta
