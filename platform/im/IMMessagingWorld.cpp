#include "platform/im/IMMessagingWorld.h"

#include "platform/im/IMAccountController.h"
#include "platform/im/IMDaemonController.h"
#include "platform/im/IMHandleRegistrar.h"
#include "platform/im/IMService.h"
#include "platform/im/IMServiceAgent.h"

namespace platform {

void IMResetMessagingWorld() {
  IMDaemonController::resetSharedController();
  IMAccountController::resetSharedInstance();
  IMService::removeAllServices();
  IMServiceAgent::resetSharedAgent();
  IMHandleRegistrar::resetSharedInstance();
}

}  // namespace platform
