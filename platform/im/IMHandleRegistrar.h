#pragma once

#include <cstdint>
#include <memory>

#include "platform/core/Object.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMForward.h"

namespace platform {

// Keeper of handle-wide settings: the name style that IMHandle::name follows.
class IMHandleRegistrar final : public Object {
 public:
  static const IMHandleRegistrarPtr& sharedInstance();
  static void resetSharedInstance();

  // kIMNameStyleFullName (default), kIMNameStyleShortName or kIMNameStyleScreenName.
  std::uint32_t nameStyle() const { return nameStyle_; }
  // Posts IMPersonInfoChangedNotification (object nil) on the service centre when it changes.
  void setNameStyle(std::uint32_t style);

  std::string className() const override { return "IMHandleRegistrar"; }

 private:
  std::uint32_t nameStyle_ = kIMNameStyleFullName;
};

}  // namespace platform
