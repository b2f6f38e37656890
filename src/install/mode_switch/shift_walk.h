// The way to the device that is to be switched.
#pragma once

#include "install/mode_switch/shift_order.h"

// Sends the order to the first present device that it is for. False with a "ShiftDevice: ..." line
// when a system call fails; a device that is not there is logged and true.
bool SendToFirstMatch(const ShiftOrder& order);
