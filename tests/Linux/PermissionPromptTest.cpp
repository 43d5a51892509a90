#include "Linux/BrowserBridge/PermissionPrompt.h"

#include "Testing.h"
#include "Widgets.h"

namespace orvanta {

namespace {

using Next = PermissionPrompt::Preparation::Next;

TEST(PermissionPromptTest, EachAnswerIsGivenOnceAndWhatIsLeftToDoIsSaid) {
    const QString restart = u"Reinicie o <b>Chromium</b> & Cia para concluir."_s;
    const struct {
        QString click;
        PermissionPrompt::Preparation preparation;
        QString said; ///< nothing, and it is closed
        QStringList buttons;
    } rows[] = {
        {u"Não permitir"_s, {}, {}, {}},
        {u"Permitir"_s, {}, {}, {}},
        {u"Permitir"_s, {Next::Restart, {}, {}}, restart, {u"OK"_s}},
        {u"Permitir"_s, {Next::Confirm, {}, {}}, u"pergunta no próprio menu"_s, {u"OK"_s}},
        {u"Permitir"_s,
         {Next::Unpacked, u"/usr/share/orvanta"_s, {}},
         u"sem compactação esta pasta:\n/usr/share/orvanta"_s,
         {u"OK"_s, u"Abrir a pasta"_s}},
        {u"Permitir"_s,
         {Next::Temporary, u"/usr/share/orvanta"_s, {}},
         u"manifest.json desta pasta. Vale até o navegador ser fechado.\n/usr/share/orvanta"_s,
         {u"OK"_s, u"Abrir a pasta"_s}},
        {u"Permitir"_s, {Next::Failed, {}, u"Sem espaço"_s}, u"Sem espaço"_s, {u"OK"_s}},
    };
    for (const auto& [answer, preparation, said, buttons] : rows) {
        QStringList done;
        const auto agree = [&, next = preparation] {
            return done.append(u"Permitir"_s), next;
        };
        auto* prompt =
            new PermissionPrompt(u"<b>Chromium</b> & Cia"_s, {agree, [&] {
                                                                  done.append(u"Não permitir"_s);
                                                              }});
        prompt->show();
        EXPECT_EQ(texts<QLabel>(prompt)[0],
                  u"Identificar os sites abertos no <b>Chromium</b> & Cia?"_s);
        click(prompt, answer);
        EXPECT_EQ(done, QStringList{answer});
        if (!said.isEmpty()) {
            EXPECT_TRUE(texts<QLabel>(prompt).join(u'\n').contains(said));
            for (const QLabel* label : visible<QLabel>(prompt)) {
                EXPECT_EQ(label->textFormat(), Qt::PlainText);
            }
            EXPECT_THAT(texts<QPushButton>(prompt), testing::UnorderedElementsAreArray(buttons));
            click(prompt, u"OK"_s);
        }
        EXPECT_FALSE(shown<PermissionPrompt>());
        QCoreApplication::sendPostedEvents(prompt, QEvent::DeferredDelete);
    }
}

} // namespace

} // namespace orvanta
