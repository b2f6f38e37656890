// The machines that failing calls befall: a packet of three INFs with everything around it that a
// run may meet.
#pragma once

#include "support/torture.h"

namespace torture {

// "-i" with this [INSTALL] section. Success means that every INF of the packet is in the store.
Scenario Staging(const std::string& name, const std::wstring& install);
// "-i" in the direct mode, from the CD-ROM on. Success means that every function of the modem has
// the driver of its INF.
Scenario DirectInstall();
// "-u" after an installation. Success without a line about a failure means that nothing of the
// packet is left.
Scenario Uninstall();
// The staging alone, with this value of MODE.
Scenario StagingAlone(int mode);

} // namespace torture
