// What the registry says about device nodes.
#pragma once

#include "system.h"

// An open element of a device information set, or an empty text.
std::wstring InstanceIdOf(HDEVINFO set, SP_DEVINFO_DATA* device);

bool NodeExists(const std::wstring& instanceId);

// A node of the virtual modem's bus is present while it has the key Control, which the driver makes
// and removes. Nodes of other buses (Wine's own ROOT nodes) count as present.
bool NodeIsPresent(const std::wstring& instanceId);

// The hardware ids, then the compatible ids.
std::vector<std::wstring> IdsOf(HDEVINFO set, SP_DEVINFO_DATA* device);
