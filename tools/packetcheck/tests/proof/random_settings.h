// A Setup.ini at random.
#pragma once

#include "proof/dice.h"

namespace proof {

std::wstring MakeSettings(Dice& dice);

} // namespace proof
