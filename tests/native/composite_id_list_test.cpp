#include "install/composite/composite_id_list.h"

#include "common/text.h"
#include "native/random_text.h"
#include "support/doctest_support.h"

#include <set>

namespace {

struct CompositeIds {
    TextList Ids;
    bool ExactMatchFound = false;
};

CompositeIds CompositeIdsOf(const TextList& hardwareIds) {
    CompositeIds result;
    AddCompositeIds(hardwareIds, result.Ids, result.ExactMatchFound);
    return result;
}

} // namespace

TEST_CASE("Composite IDs: exact ones in front, the last met first, derived ones behind") {
    const CompositeIds ids =
        CompositeIdsOf({L"USB\\VID_3A9D&PID_9001&MI_00", L"USB\\VID_3A9D&PID_9001&MI_02",
                        L"usb\\vid_3a9d&pid_9002", L"USB\\VID_3A9D&PID_9003"});
    CHECK(ids.Ids == TextList{L"USB\\VID_3A9D&PID_9003", L"USB\\VID_3A9D&PID_9002",
                              L"USB\\VID_3A9D&PID_9001"});
    CHECK(ids.ExactMatchFound);
}

TEST_CASE("A packet of interface IDs only has no exact composite ID") {
    const CompositeIds ids = CompositeIdsOf({L"usb\\vid_1&mi_00", L"USB\\VID_2&MI_00"});
    CHECK(ids.Ids == TextList{L"USB\\VID_1", L"USB\\VID_2"});
    CHECK_FALSE(ids.ExactMatchFound);
}

TEST_CASE("An exact ID that an interface already stands for is no second entry but is noted") {
    const CompositeIds ids = CompositeIdsOf({L"USB\\VID_1&MI_00", L"USB\\VID_1"});
    CHECK(ids.Ids == TextList{L"USB\\VID_1"});
    CHECK(ids.ExactMatchFound);
}

TEST_CASE("A composite ID is cut at the first interface part") {
    CHECK(CompositeIdsOf({L"USB\\VID_1&MI_00&MI_01"}).Ids == TextList{L"USB\\VID_1"});
    CHECK(CompositeIdsOf({}).Ids.empty());
    CHECK(CompositeIdsOf({L""}).Ids == TextList{L""});
}

TEST_CASE("Composite IDs are upper-case, distinct and never longer than a buffer") {
    RandomText random(L"ab&MImi_");
    for (int i = 0; i < RandomTexts; ++i) {
        TextList listed(random.UpTo(12));
        for (std::wstring& id : listed) {
            id = random.UpTo(9) == 0 ? random.Text(230) : random.Text(8);
        }
        const CompositeIds result = CompositeIdsOf(listed);
        REQUIRE(result.Ids.size() <= listed.size());
        REQUIRE(std::set<std::wstring>(result.Ids.begin(), result.Ids.end()).size() ==
                result.Ids.size());
        for (const std::wstring& id : result.Ids) {
            REQUIRE(id.size() <= 199);
            REQUIRE(id == UpperCase(id));
            REQUIRE_FALSE(Contains(id, L"&MI_"));
        }
    }
}

TEST_CASE("Composite IDs join what the list holds already") {
    TextList ids{L"USB\\VID_1", L"usb\\vid_9"};
    bool exactMatchFound = true;
    AddCompositeIds({L"usb\\vid_1&mi_00", L"usb\\vid_2&mi_00", L"USB\\VID_9"}, ids,
                    exactMatchFound);
    CHECK(ids == TextList{L"USB\\VID_1", L"usb\\vid_9", L"USB\\VID_2"});
    CHECK(exactMatchFound);
    AddCompositeIds({L"USB\\VID_3"}, ids, exactMatchFound);
    CHECK(ids.front() == L"USB\\VID_3");
}

TEST_CASE("Derived composite IDs leave the exact-match flag as the caller had it") {
    TextList ids;
    bool exactMatchFound = false;
    AddCompositeIds({L"USB\\VID_1&MI_00"}, ids, exactMatchFound);
    CHECK_FALSE(exactMatchFound);
    exactMatchFound = true;
    AddCompositeIds({L"USB\\VID_1&MI_00"}, ids, exactMatchFound);
    CHECK(exactMatchFound);
}
