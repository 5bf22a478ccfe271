#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/core/Object.h"
#include "platform/im/IMForward.h"

namespace platform {

// The daemon connection as a listener sees it: the local audio/video
// capabilities and the daemon's persistent properties, read from the backend.
class IMDaemonListener final : public Object {
 public:
  explicit IMDaemonListener(std::weak_ptr<IMDaemonController> controller) : controller_(std::move(controller)) {}

  // kIMVCCapability... bits; 0 without a backend.
  std::uint64_t vcCapabilities() const;
  // nil without a backend or for an unknown key.
  ObjectPtr valueOfPersistentProperty(const std::string& key) const;

  std::string className() const override { return "IMDaemonListener"; }

 private:
  std::weak_ptr<IMDaemonController> controller_;  // owns the listener
};

}  // namespace platform
