#include "platform/im/IMConstants.h"

namespace platform {

// Notification names and keys read as their own names, which keeps transcripts and
// stored values self-explanatory.
const char* const IMHandleCapabilitiesChangedNotification = "IMHandleCapabilitiesChangedNotification";
const char* const IMHandleStatusChangedNotification = "IMHandleStatusChangedNotification";
const char* const IMHandlePictureChangedNotification = "IMHandlePictureChangedNotification";
const char* const IMHandleInfoChangedNotification = "IMHandleInfoChangedNotification";
const char* const IMHandleGroupsChangedNotification = "IMHandleGroupsChangedNotification";
const char* const IMHandleExtraPropertiesChangedNotification = "IMHandleExtraPropertiesChangedNotification";
const char* const IMHandleIsMobileChangedNotification = "IMHandleIsMobileChangedNotification";
const char* const IMHandleSortOrderChangedNotification = "IMHandleSortOrderChangedNotification";
const char* const IMServiceStatusChangedNotification = "IMServiceStatusChangedNotification";
const char* const IMPersonStatusChangedNotification = "IMPersonStatusChangedNotification";
const char* const IMPersonInfoChangedNotification = "IMPersonInfoChangedNotification";
const char* const IMCustomStatusMessagesChangedNotification = "IMCustomStatusMessagesChangedNotification";
const char* const IMStatusImagesChangedAppearanceNotification = "IMStatusImagesChangedAppearanceNotification";
const char* const IMDisplayStatusTextNotification = "IMDisplayStatusTextNotification";
const char* const IMAccountLoginStatusChangedNotification = "IMAccountLoginStatusChangedNotification";
const char* const IMAccountActivatedNotification = "IMAccountActivatedNotification";
const char* const IMAccountDeactivatedNotification = "IMAccountDeactivatedNotification";
const char* const IMAccountInvisibilityChangedNotification = "IMAccountInvisibilityChangedNotification";
const char* const IMMeStatusChangedNotification = "IMMeStatusChangedNotification";
const char* const IMAccountControllerUpdatedNotification = "IMAccountControllerUpdatedNotification";
const char* const IMPeopleChangedNotification = "IMPeopleChangedNotification";
const char* const IMDaemonDidConnectNotification = "IMDaemonDidConnectNotification";
const char* const IMDaemonDidDisconnectNotification = "IMDaemonDidDisconnectNotification";
const char* const IMPeopleListChangedNotification = "IMPeopleListChangedNotification";
const char* const kKBParloScreenSharingStartedNotification = "kKBParloScreenSharingStartedNotification";
const char* const kKBParloScreenSharingEndedNotification = "kKBParloScreenSharingEndedNotification";
const char* const kKBParloScreenSharingShouldTerminateNotification = "kKBParloScreenSharingShouldTerminateNotification";
const char* const IMPersonFirstNameKey = "IMPersonFirstNameKey";
const char* const IMPersonLastNameKey = "IMPersonLastNameKey";
const char* const IMPersonScreenNameKey = "IMPersonScreenNameKey";
const char* const IMPersonStatusKey = "IMPersonStatusKey";
const char* const IMPersonServiceNameKey = "IMPersonServiceNameKey";
const char* const kKBGroupSupportsAdd = "kKBGroupSupportsAdd";
const char* const kKBGroupSupportsRemove = "kKBGroupSupportsRemove";
const char* const kKBGroupSupportsReorder = "kKBGroupSupportsReorder";
const char* const kKBGroupSupportsRename = "kKBGroupSupportsRename";
const char* const kKBGroupSupportsMemberReorder = "kKBGroupSupportsMemberReorder";
const char* const kKBGroupMaxMembers = "kKBGroupMaxMembers";
const char* const kKBGroupLocalizableKey = "kKBGroupLocalizableKey";
const char* const kKBDaemonPropertyNowPlayingFormatString = "kKBDaemonPropertyNowPlayingFormatString";

const char* const kKBAppBundleIdentifier = "com.velmo.Parlo";
const char* const IMServiceNameSubNet = "SubNet";
const char* const IMServiceNameVistel = "Vistel";

bool IMVCCapabilitiesAllowVideo(std::uint64_t caps) {
  return (caps & kIMVCCapabilityCamera) && (caps & (kIMVCCapabilityConference | kIMVCCapabilityMultiway));
}

bool IMVCCapabilitiesAllowAudio(std::uint64_t caps) {
  return (caps & kIMVCCapabilityMicrophone) && (caps & kIMVCCapabilityConference);
}

}  // namespace platform
