#pragma once

// Names of the people model's notifications and the user-info key that names
// the handle responsible for a presence notification.
namespace kib {

// Posted by a KibPresence to its direct observers; the object is the presence.
inline constexpr const char* kKibPresenceStatusChangedNotification = "__kkPresenceStatusChangedNotification";
inline constexpr const char* kKibPresenceCapabilitiesChangedNotification = "__kkPresenceCapabilitiesChangedNotification";
inline constexpr const char* kKibPresencePictureChangedNotification = "__kkPresencePictureChangedNotification";
inline constexpr const char* kKibPresenceInfoChangedNotification = "__kkPresenceInfoChangedNotification";
inline constexpr const char* kKibPresenceGroupsChangedNotification = "__kkPresenceGroupsChangedNotification";
inline constexpr const char* kKibPresenceExtraPropsChangedNotification = "__kkPresenceExtraPropsChangedNotification";
inline constexpr const char* kKibPresenceMobileChangedNotification = "__kkPresenceMobileChangedNotification";
inline constexpr const char* kKibPresenceCertsChangedNotification = "__kkPresenceCertsChangedNotification";
inline constexpr const char* kKibPresenceSortOrderChangedNotification = "__kkPresenceSortOrderChangedNotification";

// User-info key of presence notifications: the IMHandle that caused them.
inline constexpr const char* kKibIMHandleResponsibleKey = "__kkIMHandleResponsible";

// Posted by a KibPeopleListItem to its direct observers; the object is the item.
inline constexpr const char* kKibPeopleListItemNeedsUpdatingNotification =
    "__kKibPeopleListItemNeedsUpdatingNotification";
inline constexpr const char* kKibPeopleListItemSortOrderChangedNotification =
    "__kKibPeopleListItemSortOrderChangedNotification";
inline constexpr const char* kKibPeopleListItemNeedsGroupChangeNotification =
    "__kKibPeopleListItemNeedsGroupChangeNotification";
inline constexpr const char* kKibPeopleListItemAnimationStateChangedNotification =
    "__kKibPeopleListItemAnimationStateChangedNotification";
inline constexpr const char* kKibPeopleListItemNeedsSortingNotification =
    "__kKibPeopleListItemNeedsSortingNotification";

// Posted by a KibPeopleList through the default centre when its items changed.
inline constexpr const char* kKibPeopleListDidUpdateNotification = "__kKibPeopleListDidUpdateNotification";

// The log category of the people model's diagnostic lines.
inline constexpr const char* kKibPeopleListLogCategory = "KibPeopleList";

}  // namespace kib
