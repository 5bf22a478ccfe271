#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Source/BuddyList/KibBuddyListPresence.h"
#include "Source/BuddyList/KibItemSearchCache.h"
#include "Source/BuddyList/KibItemSortCache.h"
#include "platform/core/Date.h"
#include "platform/core/Dictionary.h"
#include "platform/core/Notification.h"
#include "platform/core/Prefetch.h"
#include "platform/core/String.h"
#include "platform/im/IMDirectlyObservableObject.h"
#include "platform/im/IMDirectlyObservableObjectObserver.h"
#include "platform/im/IMForward.h"
#include "platform/im/IMPersonStatus.h"

namespace kib {

class KibPeopleListGroup;
struct KibSortParameters;
class KibPeopleListItem;
using KibPeopleListItemPtr = std::shared_ptr<KibPeopleListItem>;

// One row of the people list: a person, backed by a buddy-list presence, or a
// group header standing for a group. A person item observes its presence,
// caches what was last shown, and runs timed status transitions (2.0 s) and
// pulses (4.0 s) whose progress the drawing code reads as an alpha value. It
// tells its direct observers (the list) what must happen to the row through
// the kKibPeopleListItem… notifications.
//
// The delegate and the group are not owned; the class clears them on every
// live person item with clearAllWeakReferencesTo / clearAllWeakGroupReferencesTo.
// Group items are not in that registry.
class KibPeopleListItem : public platform::IMDirectlyObservableObject,
                          public platform::IMDirectlyObservableObjectObserver {
  PLATFORM_SELECTORS(KibPeopleListItem, platform::IMDirectlyObservableObject)

 public:
  // A person item; a nil presence is reported to the assertion handler.
  static KibPeopleListItemPtr initWithBuddyListPresenceInGroup(const KibBuddyListPresencePtr& presence,
                                                              KibPeopleListGroup* group);
  // A group header; a nil group is reported to the assertion handler.
  static KibPeopleListItemPtr initAsGroup(KibPeopleListGroup* group);

  // A bare item for the initialisers below; lists drop and make items by the
  // thousand, so their memory is recycled (platform::RecyclingAllocator).
  static KibPeopleListItemPtr make();

  KibPeopleListItem() = default;
  ~KibPeopleListItem() override;

  // The initialisers' work on an item made elsewhere (a subclass's factory).
  void initialiseWithBuddyListPresenceInGroup(const KibBuddyListPresencePtr& presence, KibPeopleListGroup* group);
  void initialiseAsGroup(KibPeopleListGroup* group);

  // Answers the receiver. (Equality is identity.)
  KibPeopleListItemPtr copy();

  // Accessors.
  platform::Object* delegate() const { return _delegate; }
  void setDelegate(platform::Object* delegate);
  const KibBuddyListPresencePtr& buddyListPresence() const { return _presence; }
  void setBuddyListPresence(const KibBuddyListPresencePtr& presence);
  KibPeopleListGroup* peopleListGroup() const { return _group; }
  void setPeopleListGroup(KibPeopleListGroup* group) { _group = group; }
  bool isGroup() const { return _isGroup; }
  bool isIMHandle() const { return _presence != nullptr; }
  // The presence's most available handle.
  platform::IMHandlePtr imHandle() const;
  // The presence's group name, else the group's name; "" for none.
  std::string group() const;
  std::uint32_t sortOrder() const;
  platform::StringPtr tooltipString() const { return nullptr; }
  platform::IMPersonStatus currentStatus() const { return _currentStatus; }
  platform::IMPersonStatus previousStatus() const { return _previousStatus; }
  bool inStatusTransition() const { return _inTransition; }
  bool isPulseTransition() const;

  // The status to draw: during a transition the previous status stands in for
  // one that is not online, so a person going offline keeps showing until the end.
  platform::IMPersonStatus effectiveStatus() const;

  // Display text.
  platform::StringPtr displayName() const;
  // Cached until clearAttributedStatusMessageCache; an idle person without a
  // status URL shows the handle's idle text.
  platform::StringPtr displayStatusMessage();
  void clearAttributedStatusMessageCache();
  static platform::StringPtr displayNameForString(const std::string& string);
  // Newlines become spaces, then surrounding white space goes.
  static platform::StringPtr displayStatusMessageForString(const std::string& string);

  // Transitions.
  // A 4.0 s pulse, when the item may transition.
  void startPulse();
  void stopTransition();
  // Seconds since the last status change; 99999.0 when there was none.
  double timeSinceStatusChanged() const;
  // 0.0 to 1.0 through the running transition; 1.0 outside one.
  double transitionPhase(double throbs) const;
  // The alpha to draw with: from `from` to `to` through a transition, down and
  // back up through a pulse (to equal to from).
  double transitionAlphaToFromThrobs(double to, double from, std::uint64_t throbs) const;

  // Ordering (KibPeopleListItemOrdering.cpp): -1 when the receiver comes
  // first, 1 when the other does, 0 for a tie. Group headers lead their
  // members; groups are ordered among themselves, the Offline group last.
  // The comparator moves parameters->currentKey while it works.
  std::int64_t compareWithKibSortParameters(const KibPeopleListItem& other, KibSortParameters* parameters) const;
  // Two persons by the sort keys from parameters->currentKey on (or by manual order).
  std::int64_t _compareIMHandlesWithWithKibSortParameters(const KibPeopleListItem& other,
                                                           KibSortParameters* parameters) const;

  // The presence notifications an item listens to and their handlers, paired by position.
  static const std::vector<std::string>& notifications();
  static const std::vector<std::string>& selectors();

  // The registry of live person items.
  static void clearAllWeakReferencesTo(const platform::Object* delegate);
  static void clearAllWeakGroupReferencesTo(const KibPeopleListGroup* group);
  static void removeObserverFromEveryItem(platform::IMDirectlyObservableObjectObserver* observer);
  static bool isRegistered(const KibPeopleListItem* item);

  void objectDidPostDirectNotification(const platform::NotificationPtr& notification) override;
  // The presence about to change: the item's observers are told in turn.
  void objectWillChange(platform::IMDirectlyObservableObject& presence) override;
  // True while the item tells its observers that only its own status and
  // transition (effectiveStatus) are about to change, nothing of its presence.
  bool isChangingOnlyItsStatus() const { return _changingOnlyItsStatus; }

  std::string className() const override { return "KibPeopleListItem"; }
  std::string description() const override;

  // Kept for the list's sorter; no behaviour of the item depends on it.
  KibItemSortCache& sortCache() const { return _sortCache; }
  // Start loading what a rebuild and a sort read of the item / its delegate,
  // for loops over many items.
  void prefetchRowState() const;
  void prefetchDelegate() const { platform::prefetch(&_delegate); }
  KibItemSearchCache& searchCache() const {
    if (!_searchCache) _searchCache = std::make_unique<KibItemSearchCache>();
    return *_searchCache;
  }

 protected:
  // Presence handlers, by selector.
  void _presenceCapabilitiesChanged(const platform::ObjectPtr& notification);
  void _presenceStatusChanged(const platform::ObjectPtr& notification);
  void _presencePictureChanged(const platform::ObjectPtr& notification);
  void _presenceInfoChanged(const platform::ObjectPtr& notification);
  void _presenceGroupsChanged(const platform::ObjectPtr& notification);
  void _presenceMobileChanged(const platform::ObjectPtr& notification);
  void _presenceCertsChanged(const platform::ObjectPtr& notification);
  void _presenceSortOrderChanged(const platform::ObjectPtr& notification);

  void _observePresence(const KibBuddyListPresencePtr& presence);
  void _unobservePresence(const KibBuddyListPresencePtr& presence);

  // State cache.
  bool _updateCurrentStatus();
  void _cacheCurrentState();
  bool _currentInfoDiffersFromCache() const;
  bool _currentStatusDiffersFromCache() const;

  // Records a status change (nil: now) and starts a transition when online-ness changed.
  void _setWhenStatusChanged(const platform::DatePtr& date);
  bool canTransition() const;
  // The spelling is historical; true starts a status transition, false a pulse.
  void _startAnimationPusling(bool statusTransition);
  void _startStatusTransition();
  void _startPulse();

  void _postNotificationNamedUserInfo(const std::string& name, const platform::DictionaryPtr& userInfo);
  // The same for a name that outlives the notification (platform::constantName).
  void _postConstantNamedUserInfo(const std::string& constantName, const platform::DictionaryPtr& userInfo);

 private:
  // Tells the observers that effectiveStatus may be about to change.
  void willChangeOwnStatus();
  // The delayed stopTransition arrives here.
  void stopTransitionPerformed(const platform::ObjectPtr& argument);
  std::int32_t currentMinutesIdle() const;

  static constexpr std::size_t kNotRegistered = static_cast<std::size_t>(-1);

  platform::Object* _delegate = nullptr;
  KibBuddyListPresencePtr _presence;
  std::optional<double> _whenStatusChanged;  // seconds since the reference date
  KibPeopleListGroup* _group = nullptr;
  platform::StringPtr _attributedStatusMessage;
  std::optional<std::string> _statusMessage;
  std::optional<std::string> _displayName;
  platform::DatePtr _transitionStartTime;  // kept for layout; nothing reads it
  double _currentTransitionTime = 0.0;
  platform::IMPersonStatus _currentStatus = 0;
  platform::IMPersonStatus _previousStatus = 0;
  std::int32_t _minutesIdle = 0;
  bool _inTransition = false;
  bool _isGroup = false;
  bool _changingOnlyItsStatus = false;
  mutable KibItemSortCache _sortCache;
  // Made by the first search: most items are never searched.
  mutable std::unique_ptr<KibItemSearchCache> _searchCache;
  std::size_t _registrySlot = kNotRegistered;  // in the registry of live person items
  bool _hasScheduledPerforms = false;  // a transition's end was ever scheduled
};

}  // namespace kib
