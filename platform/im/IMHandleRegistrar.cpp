#include "platform/im/IMHandleRegistrar.h"

#include "platform/im/IMService.h"

namespace platform {
namespace {

IMHandleRegistrarPtr& sharedSlot() {
  static IMHandleRegistrarPtr shared = std::make_shared<IMHandleRegistrar>();
  return shared;
}

}  // namespace

const IMHandleRegistrarPtr& IMHandleRegistrar::sharedInstance() { return sharedSlot(); }

void IMHandleRegistrar::resetSharedInstance() { sharedSlot() = std::make_shared<IMHandleRegistrar>(); }

void IMHandleRegistrar::setNameStyle(std::uint32_t style) {
  if (style == nameStyle_) return;
  nameStyle_ = style;
  IMService::notificationCenter().postNotificationName(IMPersonInfoChangedNotification);
}

}  // namespace platform
