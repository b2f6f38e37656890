// Making a plan of a packet by rehearsing the program with it.
#pragma once

#include "plan/plan.h"
#include "reading/generations.h"
#include "rehearsal/stage.h"

namespace plan {

struct Order {
    // The folder with Setup.ini and the generations' folders, without a final backslash.
    std::wstring Folder;
    // The folder that the packet is installed from; where it lies now, unless given.
    std::wstring At;
    Generation For;
    bool IsInstall = true;
    // Shared with other rehearsals of the same packet; may be null.
    std::shared_ptr<rehearsal::FileCache> Files{};
};

Plan MakePlan(const Order& order);

} // namespace plan
