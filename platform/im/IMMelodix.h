#pragma once

#include "platform/core/String.h"

namespace platform {

// Whether the music player's current track can be used as a status message.
bool IMMelodixInteropAvailable();
// The status-message format that stands for the current track; the daemon
// replaces its "%@" with the track. The same String object on every call.
const StringPtr& IMMelodixMessageFormat();

}  // namespace platform
