#include "platform/im/IMDaemonListener.h"

#include "platform/im/IMDaemonController.h"

namespace platform {

std::uint64_t IMDaemonListener::vcCapabilities() const { return controller_ ? controller_->vcCapabilities() : 0; }

ObjectPtr IMDaemonListener::valueOfPersistentProperty(const std::string& key) const {
  return controller_ ? controller_->valueOfPersistentProperty(key) : nullptr;
}

}  // namespace platform
