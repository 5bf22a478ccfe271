#include "platform/im/IMMelodix.h"

#include "platform/im/IMServiceAgent.h"

namespace platform {

bool IMMelodixInteropAvailable() { return IMServiceAgent::sharedAgent()->melodixInteropAvailable(); }

const StringPtr& IMMelodixMessageFormat() {
  static const StringPtr format = makeString("\u266B %@");
  return format;
}

}  // namespace platform
