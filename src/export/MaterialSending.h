#pragma once

#include "export/MaterialSendJob.h"
#include "link/IpcInterface.h"

namespace quellix {

// Converts a prepared record's textures and sends it as one command. Any thread of an export.
void SendMaterialJob(IpcInterface& link, const MaterialSendJob& job);

}  // namespace quellix
