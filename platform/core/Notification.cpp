#include "platform/core/Notification.h"

#include "platform/core/Format.h"

namespace platform {

std::string Notification::description() const {
  return format("Notification %@ object %@ userInfo %@", *name_, object_, userInfo_);
}

}  // namespace platform
