#pragma once

#include <cstdint>

// Names, keys and constants of the messaging client library. Their string
// values are defined once, in IMConstants.cpp; code compares and posts them
// through these names only.
namespace platform {

// Handle notifications, posted by an IMHandle to its direct observers; the object is the handle.
extern const char* const IMHandleCapabilitiesChangedNotification;
extern const char* const IMHandleStatusChangedNotification;
extern const char* const IMHandlePictureChangedNotification;
extern const char* const IMHandleInfoChangedNotification;
extern const char* const IMHandleGroupsChangedNotification;
extern const char* const IMHandleExtraPropertiesChangedNotification;
extern const char* const IMHandleIsMobileChangedNotification;
extern const char* const IMHandleSortOrderChangedNotification;

// Service centre (IMService::notificationCenter()).
extern const char* const IMServiceStatusChangedNotification;           // object: the service
extern const char* const IMPersonStatusChangedNotification;            // object: the handle
extern const char* const IMPersonInfoChangedNotification;              // object: the handle (nil: everyone)
extern const char* const IMCustomStatusMessagesChangedNotification;    // object: nil
extern const char* const IMStatusImagesChangedAppearanceNotification;  // object: nil
// Also posted on the distributed centre; the object is the text (a String).
extern const char* const IMDisplayStatusTextNotification;

// Default centre.
extern const char* const IMAccountLoginStatusChangedNotification;   // object: the account
extern const char* const IMAccountActivatedNotification;            // object: the account
extern const char* const IMAccountDeactivatedNotification;          // object: the account
extern const char* const IMAccountInvisibilityChangedNotification;  // object: the account
extern const char* const IMMeStatusChangedNotification;             // object: the account
extern const char* const IMAccountControllerUpdatedNotification;    // object: the controller
extern const char* const IMPeopleChangedNotification;               // object: the people collection
extern const char* const IMDaemonDidConnectNotification;            // object: the daemon controller
extern const char* const IMDaemonDidDisconnectNotification;         // object: the daemon controller

// Posted by IMPeople lists to their direct observers (the collections) when
// their membership changes.
extern const char* const IMPeopleListChangedNotification;

// Distributed notifications of the messaging application.
extern const char* const kKBParloScreenSharingStartedNotification;          // object: partner name or nil
extern const char* const kKBParloScreenSharingEndedNotification;            // object: nil
extern const char* const kKBParloScreenSharingShouldTerminateNotification;  // object: nil

// The messaging application's bundle identifier (workspace termination notices).
extern const char* const kKBAppBundleIdentifier;

// Person-info dictionary keys (IMService::infoForScreenName and infoForAllScreenNames).
extern const char* const IMPersonFirstNameKey;    // String
extern const char* const IMPersonLastNameKey;     // String
extern const char* const IMPersonScreenNameKey;   // String, the handle's ID
extern const char* const IMPersonStatusKey;       // Number, the person status
extern const char* const IMPersonServiceNameKey;  // String, the service's name

// Group-property keys (values are Numbers; the localizable key's value a String).
extern const char* const kKBGroupSupportsAdd;
extern const char* const kKBGroupSupportsRemove;
extern const char* const kKBGroupSupportsReorder;
extern const char* const kKBGroupSupportsRename;
extern const char* const kKBGroupSupportsMemberReorder;
extern const char* const kKBGroupMaxMembers;
extern const char* const kKBGroupLocalizableKey;

// Daemon persistent-property keys (IMDaemonListener::valueOfPersistentProperty).
extern const char* const kKBDaemonPropertyNowPlayingFormatString;

// Listener capabilities, passed to addListenerIDCapabilities.
inline constexpr std::uint32_t kKBListenerCapManageStatus = 0x1;
inline constexpr std::uint32_t kKBListenerCapBuddyList = 0x2;
inline constexpr std::uint32_t kKBListenerCapChats = 0x4;

// Account capability bits (IMAccount::capabilities).
inline constexpr std::uint64_t kIMAccountCapabilityTextChat = 0x1;
inline constexpr std::uint64_t kIMAccountCapabilityFileTransfer = 0x2;
inline constexpr std::uint64_t kIMAccountCapabilityBuddyList = 0x8000;
inline constexpr std::uint64_t kIMAccountCapabilityInvisibleLogin = 0x4000000000ULL;  // bit 38

// Local audio/video capability bits of the daemon listener (IMDaemonListener::vcCapabilities).
inline constexpr std::uint64_t kIMVCCapabilityConference = 0x20000;  // one-to-one conferencing engine
inline constexpr std::uint64_t kIMVCCapabilityCamera = 0x40000;      // a camera to send video
inline constexpr std::uint64_t kIMVCCapabilityMicrophone = 0x80000;  // a microphone to send audio
inline constexpr std::uint64_t kIMVCCapabilityMultiway = 0x200000;   // multi-party video engine

// Video chats need a camera and a conferencing engine; audio chats a microphone
// and the one-to-one engine.
bool IMVCCapabilitiesAllowVideo(std::uint64_t vcCapabilities);
bool IMVCCapabilitiesAllowAudio(std::uint64_t vcCapabilities);

// Account login states (IMAccount::loginStatus); below 2 is not logged in.
inline constexpr std::uint32_t kIMAccountLoginStatusOffline = 0;
inline constexpr std::uint32_t kIMAccountLoginStatusConnecting = 1;
inline constexpr std::uint32_t kIMAccountLoginStatusConnected = 2;

// Handle authorization-request states (IMHandle::authRequestStatus).
inline constexpr std::uint32_t kIMAuthRequestNone = 0;
inline constexpr std::uint32_t kIMAuthRequestPending = 1;

// Name styles of the handle registrar.
inline constexpr std::uint32_t kIMNameStyleFullName = 0;
inline constexpr std::uint32_t kIMNameStyleShortName = 1;
inline constexpr std::uint32_t kIMNameStyleScreenName = 2;

// Names of the two special services.
extern const char* const IMServiceNameSubNet;  // the local-network service
extern const char* const IMServiceNameVistel;  // the video-calling service

// How long after its log-in an account counts as just logged in (seconds).
inline constexpr double kIMAccountJustLoggedInInterval = 5.0;

}  // namespace platform
