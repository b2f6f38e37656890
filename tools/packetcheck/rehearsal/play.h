// The program's own sequences, played on a stage.
#pragma once

#include "rehearsal/stage.h"

namespace rehearsal {

// "Setup.exe -i", "Setup.exe -u", and the rollback that follows a failed install. Each sets the
// scene anew; what the scripts wrote into the registry stays. The rollback knows the device that
// the install before it matched.
Recording PlayInstall(Stage& stage);
Recording PlayUninstall(Stage& stage);
Recording PlayRollback(Stage& stage);

} // namespace rehearsal
