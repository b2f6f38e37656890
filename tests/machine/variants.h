// What differs between versions of Windows, or is not known of it. The program must do right
// whichever of these values a machine has.
#pragma once

#include <string_view>

namespace machine {

struct Variants {
    // SetupDiGetDriverInfoDetailW without a buffer: 122 as the functions of its family, success as
    // its ANSI twin, or 1784 as that one on Windows 10 1809.
    enum class SizeQuery { TooSmall, Succeeds, BadBuffer };
    SizeQuery DriverDetail = SizeQuery::TooSmall;

    // The order of a device information set.
    enum class Order { ById, ByArrival, Reversed };
    Order Devices = Order::ById;

    // The last error after a set-up function that succeeded: 0, what it was before, or what some
    // call within the function left.
    enum class LastError { Zero, Kept, Stray };
    LastError AfterSuccess = LastError::Zero;

    // Lists of compatible drivers leave out the INFs of other classes than the device's.
    bool CompatibleListsOfOneClass = false;

    // SetupUninstallOEMInfW also deletes the driver files that the INF copies.
    bool UninstallDeletesFiles = false;

    // An INF of the same content keeps the name in the store that it got under another name.
    bool EqualInfKeepsItsName = true;

    // "devices=arrival", "devices=reversed", "detail=succeeds", "detail=1784", "last-error=kept",
    // "last-error=stray", "lists=one-class", "uninstall=files", "equal-inf=new-name", separated by
    // blanks. Throws for another word.
    static Variants From(std::string_view words);
    // What the environment variable SETUP_TESTS_WINDOWS says: the whole tests can be run with a
    // variant.
    static Variants FromEnvironment();
};

} // namespace machine
