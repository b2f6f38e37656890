#include "config/packet_folder.h"

#include "native/random_text.h"
#include "support/doctest_support.h"

TEST_CASE("The packet's folder of WIN7 and WIN10 has no bitness in its name") {
    CHECK(PacketFolderName(L"WIN7", L"64") == L"WIN7\\");
    CHECK(PacketFolderName(L"WIN10", L"64") == L"WIN10\\");
    CHECK(PacketFolderName(L"win7", L"64") == L"win7\\");
}

TEST_CASE("The packet's folder of every other generation ends in the bitness") {
    CHECK(PacketFolderName(L"VISTA", L"64") == L"VISTA64\\");
    CHECK(PacketFolderName(L"WINXP", L"64") == L"WINXP64\\");
    CHECK(PacketFolderName(L"WIN70", L"64") == L"WIN7064\\");
    CHECK(PacketFolderName(L"", L"64") == L"64\\");
}

TEST_CASE("The packet's folder always begins with the generation and ends in a backslash") {
    RandomText random(L"WIN7WIN10win");
    for (int i = 0; i < RandomTexts; ++i) {
        const std::wstring name = random.Text(6);
        const std::wstring folder = PacketFolderName(name, L"64");
        REQUIRE(folder.starts_with(name));
        REQUIRE((folder == name + L"\\" || folder == name + L"64\\"));
    }
}
