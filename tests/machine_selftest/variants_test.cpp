// What differs between versions of Windows, as switches of the machine.
#include "machine/machine.h"
#include "support/doctest_support.h"

#include <stdexcept>

using namespace machine;

TEST_CASE("Variants are named by words") {
    const Variants none = Variants::From("");
    CHECK(none.Devices == Variants::Order::ById);
    CHECK(none.DriverDetail == Variants::SizeQuery::TooSmall);
    const Variants some = Variants::From("devices=reversed detail=1784 equal-inf=new-name");
    CHECK(some.Devices == Variants::Order::Reversed);
    CHECK(some.DriverDetail == Variants::SizeQuery::BadBuffer);
    CHECK_FALSE(some.EqualInfKeepsItsName);
    CHECK(some.AfterSuccess == Variants::LastError::Zero);
    CHECK_THROWS_AS(Variants::From("devices=any"), std::invalid_argument);
}

TEST_CASE("Each machine begins with the variants that the environment names") {
    {
        Machine m;
        m.Windows().UninstallDeletesFiles = true;
    }
    Machine m;
    CHECK(m.Windows().UninstallDeletesFiles == Variants::FromEnvironment().UninstallDeletesFiles);
}
