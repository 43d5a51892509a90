#include "Views/Text/StatusText.h"

#include "Fakes/QtPrinters.h"

#include <gtest/gtest.h>

using namespace orvanta;

TEST(StatusTextTest, SaysTheSharesAsAnArrowAndInWords) {
    using Tone = StatusTitle::Tone;
    struct Row {
        StatusTotals totals;
        bool paused;
        const char* title;
        Tone tone;
        const char* toolTip;
    };
    for (const Row& row :
         {Row{{150, 50, 0},
              false,
              "↑ 75/25",
              Tone::production,
              "orvanta · Produção 75% · Consumo 25% · 3:20 · Clique direito para Ajustes"},
          {{49, 51, 3600},
           false,
           "↓ 49/51",
           Tone::consumption,
           "orvanta · Produção 49% · Consumo 51% · 1:01:40 · Clique direito para Ajustes"},
          {{50, 50, 0},
           false,
           "↑ 50/50",
           Tone::production,
           "orvanta · Produção 50% · Consumo 50% · 1:40 · Clique direito para Ajustes"},
          {{62.5, 37.5, 0},
           false,
           "↑ 62/38",
           Tone::production,
           "orvanta · Produção 62% · Consumo 38% · 1:40 · Clique direito para Ajustes"},
          {{49.9, 50.1, 0},
           false,
           "↓ 50/50",
           Tone::consumption,
           "orvanta · Produção 50% · Consumo 50% · 1:40 · Clique direito para Ajustes"},
          {{7, 0, 0},
           false,
           "↑ 100/0",
           Tone::production,
           "orvanta · Produção 100% · Consumo 0% · 0:07 · Clique direito para Ajustes"},
          {{0, 0, 65},
           false,
           "↑ —/—",
           Tone::secondary,
           "orvanta · Sem dados classificados · 1:05 · Clique direito para Ajustes"},
          {{0, 0, 0},
           true,
           "Ⅱ —/—",
           Tone::secondary,
           "orvanta · Sem dados classificados · 0:00 · Pausado · Clique direito para Ajustes"},
          {{10, 90, 0},
           true,
           "Ⅱ 10/90",
           Tone::secondary,
           "orvanta · Produção 10% · Consumo 90% · 1:40 · Pausado · Clique direito para "
           "Ajustes"}}) {
        const StatusTitle title = statusTitle(row.totals, row.paused);
        EXPECT_EQ(title.text(), QString::fromUtf8(row.title));
        EXPECT_EQ(title.tone, row.tone) << row.title;
        EXPECT_EQ(statusToolTip(row.totals, row.paused), QString::fromUtf8(row.toolTip));
    }
}
