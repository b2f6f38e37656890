// The program's process-wide state, as it is when a process starts. The program itself never resets
// it: a process makes one run. Every new Machine does.
#pragma once

void ResetProgramState();
