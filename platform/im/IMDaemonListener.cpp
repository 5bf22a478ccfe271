#include "platform/im/IMDaemonListener.h"

#include "platform/im/IMDaemonController.h"

namespace platform {

std::uint64_t IMDaemonListener::vcCapabilities() const {
  auto controller = controller_.lock();
  return controller ? controller->vcCapabilities() : 0;
}

ObjectPtr IMDaemonListener::valueOfPersistentProperty(const std::string& key) const {
  auto controller = controller_.lock();
  return controller ? controller->valueOfPersistentProperty(key) : nullptr;
}

}  // namespace platform
