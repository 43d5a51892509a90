#include "Linux/BrowserBridge/PermissionPrompt.h"

#include "Fakes/QtPrinters.h"

#include <QLabel>
#include <QPointer>
#include <QPushButton>

#include <gtest/gtest.h>

namespace orvanta {

namespace {

using namespace Qt::StringLiterals;
using Next = PermissionPrompt::Preparation::Next;

class PermissionPromptTest : public testing::Test {
protected:
    ~PermissionPromptTest() override { delete prompt; }

    void show(const PermissionPrompt::Preparation& preparation) {
        delete prompt;
        done.clear();
        prompt = new PermissionPrompt(u"<b>Chromium</b> & Cia"_s, {[this, preparation] {
                                                                       done.append(u"agreed"_s);
                                                                       return preparation;
                                                                   },
                                                                   [this] {
                                                                       done.append(u"refused"_s);
                                                                   }});
        prompt->show();
    }
    QString texts() const {
        QStringList all;
        for (const QLabel* label : prompt->findChildren<QLabel*>()) {
            EXPECT_EQ(label->textFormat(), Qt::PlainText);
            all.append(label->text());
        }
        return all.join(u'\n');
    }
    QStringList buttons() const {
        QStringList all;
        for (const QPushButton* button : prompt->findChildren<QPushButton*>()) {
            all.append(button->text());
        }
        all.sort();
        return all;
    }
    void click(const QString& text) const {
        for (QPushButton* button : prompt->findChildren<QPushButton*>()) {
            if (button->text() == text) {
                button->click();
                return;
            }
        }
        ADD_FAILURE() << qPrintable(text);
    }
    bool isOpen() const { return prompt && prompt->isVisible(); }

    QPointer<PermissionPrompt> prompt;
    QStringList done;
};

TEST_F(PermissionPromptTest, AnAnswerIsGivenOnceOrNotAtAll) {
    show({});
    EXPECT_TRUE(texts().contains(u"Identificar os sites abertos no <b>Chromium</b> & Cia?"_s));
    EXPECT_EQ(buttons(), (QStringList{u"Não permitir"_s, u"Permitir"_s}));
    prompt->reject(); // Escape, or its window closed.
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(done.isEmpty());

    show({});
    click(u"Não permitir"_s);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(done, QStringList{u"refused"_s});

    show({});
    click(u"Permitir"_s);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(done, QStringList{u"agreed"_s});
}

TEST_F(PermissionPromptTest, WhatIsLeftToDoIsSaid) {
    const struct {
        PermissionPrompt::Preparation preparation;
        QString text;
        QStringList buttons;
    } rows[] = {
        {{Next::Restart, {}, {}}, u"Reinicie o <b>Chromium</b> & Cia para concluir."_s, {u"OK"_s}},
        {{Next::Confirm, {}, {}}, u"pergunta no próprio menu"_s, {u"OK"_s}},
        {{Next::Unpacked, u"/usr/share/orvanta"_s, {}},
         u"sem compactação esta pasta:\n/usr/share/orvanta"_s,
         {u"Abrir a pasta"_s, u"OK"_s}},
        {{Next::Temporary, u"/usr/share/orvanta"_s, {}},
         u"manifest.json desta pasta. Vale até o navegador ser fechado.\n/usr/share/orvanta"_s,
         {u"Abrir a pasta"_s, u"OK"_s}},
        {{Next::Failed, {}, u"Sem espaço"_s}, u"Sem espaço"_s, {u"OK"_s}},
    };
    for (const auto& [preparation, text, expected] : rows) {
        show(preparation);
        click(u"Permitir"_s);
        EXPECT_TRUE(isOpen());
        EXPECT_TRUE(texts().contains(text)) << qPrintable(texts());
        EXPECT_EQ(buttons(), expected);
        click(u"OK"_s);
        EXPECT_FALSE(isOpen());
        EXPECT_EQ(done, QStringList{u"agreed"_s});
    }
}

} // namespace

} // namespace orvanta
