#include "StoreFolder.h"

using namespace orvanta;

using SiteKeysTest = StoreFolder;

TEST_F(SiteKeysTest, HostsThatWereNotAsciiAreOneWithThoseThatAreOnceAStore) {
    open();
    write("INSERT INTO ZACTIVITY (Z_PK, Z_ENT, Z_OPT, ZKEY, ZNAME, ZCATEGORYVALUE, ZSECONDS, "
          "ZLASTUSEDAT, ZPREVIOUSCATEGORYVALUE) VALUES "
          "(1, 1, 1, 'site:münchen.example', 'münchen.example', 'ignored', 10, 200, 'pending'),"
          "(2, 1, 1, 'site:xn--mnchen-3ya.example', 'xn', 'production', 5, 100, NULL),"
          "(3, 1, 1, 'site:пример.example', 'p', 'consumption', 1, NULL, NULL),"
          "(4, 1, 1, 'app:münchen', 'app', 'pending', 7, NULL, NULL),"
          "(5, 1, 1, 'site:bücher.example', 'b', 'neutral', 2, NULL, NULL),"
          "(6, 1, 1, 'site:xn--bcher-kva.example', 'xb', 'production', 3, 5, NULL);"
          "INSERT INTO ZDAYACTIVITY (Z_PK, Z_ENT, Z_OPT, ZDAY, ZID, ZKEY, ZSECONDS) VALUES "
          "(1, 2, 1, '2024-03-05', '2024-03-05|site:münchen.example', 'site:münchen.example', 10),"
          "(2, 2, 1, '2024-03-05', '2024-03-05|site:xn--mnchen-3ya.example', "
          "'site:xn--mnchen-3ya.example', 4),"
          "(3, 2, 1, '2024-03-04', '2024-03-04|site:münchen.example', 'site:münchen.example', 6);"
          "PRAGMA user_version = 0");
    const char* const records = "SELECT ZKEY, ZNAME, ZCATEGORYVALUE, ZPREVIOUSCATEGORYVALUE, "
                                "ZSECONDS, ZLASTUSEDAT FROM ZACTIVITY ORDER BY Z_PK";
    const QByteArray after = "site:xn--mnchen-3ya.example|xn|ignored|pending|15.0|200\n"
                             "site:xn--e1afmkfd.example|p|consumption|NULL|1.0|NULL\n"
                             "app:münchen|app|pending|NULL|7.0|NULL\n"
                             "site:xn--bcher-kva.example|xb|production|NULL|5.0|5";
    for (int time = 0; time < 2; ++time) {
        open();
        EXPECT_EQ(read(records), after);
        EXPECT_EQ(read("SELECT ZID, ZKEY, ZSECONDS FROM ZDAYACTIVITY ORDER BY ZDAY"),
                  "2024-03-04|site:xn--mnchen-3ya.example|site:xn--mnchen-3ya.example|6.0\n"
                  "2024-03-05|site:xn--mnchen-3ya.example|site:xn--mnchen-3ya.example|14.0");
    }

    write("UPDATE ZACTIVITY SET ZKEY = 'site:é.example' WHERE Z_PK = 3");
    open();
    EXPECT_EQ(read("SELECT ZKEY FROM ZACTIVITY WHERE Z_PK = 3"), "site:é.example")
        << "it is not looked at again";
}
