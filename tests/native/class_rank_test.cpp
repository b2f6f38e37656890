#include "install/direct/class_rank.h"

#include "support/doctest_support.h"

TEST_CASE("Classes are ranked PORTS, MODEM, NET, MEDIA, none") {
    CHECK(RankOfClass(L"PORTS") == 1);
    CHECK(RankOfClass(L"MODEM") == 2);
    CHECK(RankOfClass(L"NET") == 3);
    CHECK(RankOfClass(L"MEDIA") == 4);
    CHECK(RankOfClass(L"") == 5);
    CHECK(RankOfUnreadableClass == 5);
}

TEST_CASE("Every other class ranks before all others") {
    CHECK(RankOfClass(L"IMAGE") == 0);
    CHECK(RankOfClass(L"Ports") == 0);
    CHECK(RankOfClass(L"PORTS ") == 0);
}
