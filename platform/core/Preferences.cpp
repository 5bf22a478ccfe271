#include "platform/core/Preferences.h"

// Placeholder until the preferences store lands.
namespace platform {
void Preferences::setDirectory(const std::filesystem::path&) {}
}  // namespace platform
