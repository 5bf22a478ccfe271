#pragma once

#include <memory>

// Forward declarations and owning-pointer names of the messaging library's classes.
namespace platform {

class IMAccount;
class IMAccountController;
class IMDaemonController;
class IMDaemonListener;
class IMHandle;
class IMHandleRegistrar;
class IMPeople;
class IMPeopleCollection;
class IMPerson;
class IMService;
class IMServiceAgent;

using IMAccountPtr = std::shared_ptr<IMAccount>;
using IMAccountControllerPtr = std::shared_ptr<IMAccountController>;
using IMDaemonControllerPtr = std::shared_ptr<IMDaemonController>;
using IMDaemonListenerPtr = std::shared_ptr<IMDaemonListener>;
using IMHandlePtr = std::shared_ptr<IMHandle>;
using IMHandleRegistrarPtr = std::shared_ptr<IMHandleRegistrar>;
using IMPeoplePtr = std::shared_ptr<IMPeople>;
using IMPeopleCollectionPtr = std::shared_ptr<IMPeopleCollection>;
using IMPersonPtr = std::shared_ptr<IMPerson>;
using IMServicePtr = std::shared_ptr<IMService>;
using IMServiceAgentPtr = std::shared_ptr<IMServiceAgent>;

// The service class under its implementation name, as the people model's filters spell it.
using IMServiceImpl = IMService;
using IMServiceImplPtr = IMServicePtr;

}  // namespace platform
