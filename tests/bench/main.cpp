// How the cost of an install run grows with the packet, the store and the devices. Prints a table
// and growth exponents for both ways; asserts nothing but that the runs succeed.
#include "bench/install_run.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <string_view>
#include <tuple>
#include <vector>

namespace {

using bench::Cost;
using bench::Size;

struct Axes {
    std::vector<int> PacketInfs;
    std::vector<int> OemInfs;
    std::vector<int> Devices;
};

using Table = std::map<std::tuple<int, int, int>, Cost>;

const char* NameOf(int mode) {
    return mode == 0 ? "staging, MODE 0" : "direct, MODE 1";
}

Table Measure(int mode, const Axes& axes) {
    std::printf("\n%s\n%7s %6s %8s | %9s %12s %10s %12s\n", NameOf(mode), "packet", "OEM",
                "devices", "processor", "parser", "INFs", "all");
    std::printf("%7s %6s %8s | %9s %12s %10s %12s\n", "INFs", "INFs", "", "ms", "calls", "opened",
                "calls");
    Table table;
    for (const int packet : axes.PacketInfs) {
        for (const int oem : axes.OemInfs) {
            for (const int devices : axes.Devices) {
                const Cost cost = bench::MeasureInstall(mode, Size{packet, oem, devices});
                table[{packet, oem, devices}] = cost;
                std::printf("%7d %6d %8d | %9.0f %12lld %10lld %12lld%s\n", packet, oem, devices,
                            cost.Seconds * 1000, static_cast<long long>(cost.ParserCalls),
                            static_cast<long long>(cost.InfReadings),
                            static_cast<long long>(cost.AllCalls),
                            cost.Succeeded ? "" : "  (the run failed)");
                std::fflush(stdout);
            }
        }
    }
    return table;
}

// The e in "cost grows like n to the power of e" between two measurements.
double Exponent(double from, double to, int smaller, int larger) {
    return from <= 0 || to <= 0 ? 0 : std::log(to / from) / std::log(double(larger) / smaller);
}

void PrintStep(const char* axis, int smaller, int larger, const Cost& from, const Cost& to) {
    std::printf("  %-11s %5d -> %5d | time %5.2f  parser calls %5.2f  all calls %5.2f\n", axis,
                smaller, larger, Exponent(from.Seconds, to.Seconds, smaller, larger),
                Exponent(double(from.ParserCalls), double(to.ParserCalls), smaller, larger),
                Exponent(double(from.AllCalls), double(to.AllCalls), smaller, larger));
}

// Along each axis with the two others at their largest.
void PrintExponents(const Table& table, const Axes& axes) {
    const int packet = axes.PacketInfs.back();
    const int oem = axes.OemInfs.back();
    const int devices = axes.Devices.back();
    std::printf("growth exponents (1 = in proportion)\n");
    for (std::size_t i = 1; i < axes.PacketInfs.size(); ++i) {
        const int low = axes.PacketInfs[i - 1];
        const int high = axes.PacketInfs[i];
        PrintStep("packet INFs", low, high, table.at({low, oem, devices}),
                  table.at({high, oem, devices}));
    }
    for (std::size_t i = 1; i < axes.OemInfs.size(); ++i) {
        const int low = axes.OemInfs[i - 1];
        const int high = axes.OemInfs[i];
        PrintStep("OEM INFs", low, high, table.at({packet, low, devices}),
                  table.at({packet, high, devices}));
    }
    for (std::size_t i = 1; i < axes.Devices.size(); ++i) {
        const int low = axes.Devices[i - 1];
        const int high = axes.Devices[i];
        PrintStep("devices", low, high, table.at({packet, oem, low}),
                  table.at({packet, oem, high}));
    }
}

bool AllSucceeded(const Table& table) {
    return std::ranges::all_of(table, [](const auto& row) { return row.second.Succeeded; });
}

Axes AxesFor(std::string_view option) {
    if (option == "--full") {
        return {{1, 4, 16, 64}, {10, 100, 1000}, {10, 100, 1000}};
    }
    return option == "--smallest" ? Axes{{1}, {10}, {10}} : Axes{{1, 4, 16}, {10, 100}, {10, 100}};
}

} // namespace

int main(int count, char** arguments) {
    const Axes axes = AxesFor(count > 1 ? arguments[1] : "");
    bool succeeded = true;
    std::printf(
        "Processor time includes the simulated machine's own and the INF parser's; waits are\n"
        "virtual and cost nothing. Its resolution is 10 ms.\n");
    for (const int mode : {0, 1}) {
        const Table table = Measure(mode, axes);
        PrintExponents(table, axes);
        succeeded = succeeded && AllSucceeded(table);
    }
    std::printf(
        "\nWhere it grows by rule: nothing that was read is kept. Each INF of the packet reads\n"
        "every OEM INF of the store anew (packet x OEM), each section asks the parser for the "
        "file\n"
        "three times, and the direct installation looks for a device's INF in the whole packet at "
        "each\n"
        "try (packet x packet). Each INF of the packet walks all USB devices (packet x "
        "devices).\n");
    return succeeded ? 0 : 1;
}
