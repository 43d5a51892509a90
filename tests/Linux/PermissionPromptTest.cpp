#include "Linux/BrowserBridge/PermissionPrompt.h"

#include "Testing.h"
#include "Widgets.h"

#include <QPointer>

namespace orvanta {

namespace {

using Next = PermissionPrompt::Preparation::Next;

class PermissionPromptTest : public testing::Test {
protected:
    ~PermissionPromptTest() override { delete prompt; }

    void show(const PermissionPrompt::Preparation& preparation = {}) {
        delete prompt;
        done.clear();
        const auto agree = [this, preparation] {
            return done.append(u"agreed"_s), preparation;
        };
        const auto refuse = [this] {
            done.append(u"refused"_s);
        };
        prompt = new PermissionPrompt(u"<b>Chromium</b> & Cia"_s, {agree, refuse});
        prompt->show();
    }
    QString text() const { return texts<QLabel>(prompt).join(u'\n'); }
    QStringList buttons() const {
        QStringList all = texts<QPushButton>(prompt);
        all.sort();
        return all;
    }
    bool isOpen() const { return prompt && prompt->isVisible(); }

    QPointer<PermissionPrompt> prompt;
    QStringList done;
};

TEST_F(PermissionPromptTest, AnAnswerIsGivenOnceOrNotAtAll) {
    show();
    EXPECT_TRUE(text().contains(u"Identificar os sites abertos no <b>Chromium</b> & Cia?"_s));
    EXPECT_EQ(buttons(), (QStringList{u"Não permitir"_s, u"Permitir"_s}));
    prompt->reject(); // Escape, or its window closed.
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(done.isEmpty());
    for (const auto& [answer, expected] :
         {std::pair(u"Não permitir"_s, u"refused"_s), {u"Permitir"_s, u"agreed"_s}}) {
        show();
        click(prompt, answer);
        EXPECT_FALSE(isOpen());
        EXPECT_EQ(done, QStringList{expected});
    }
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
    for (const auto& [preparation, said, expected] : rows) {
        show(preparation);
        click(prompt, u"Permitir"_s);
        EXPECT_TRUE(isOpen());
        EXPECT_TRUE(text().contains(said)) << qPrintable(text());
        for (const QLabel* label : visible<QLabel>(prompt)) {
            EXPECT_EQ(label->textFormat(), Qt::PlainText);
        }
        EXPECT_EQ(buttons(), expected);
        click(prompt, u"OK"_s);
        EXPECT_FALSE(isOpen());
        EXPECT_EQ(done, QStringList{u"agreed"_s});
    }
}

} // namespace

} // namespace orvanta
