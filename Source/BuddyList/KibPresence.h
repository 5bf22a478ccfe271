#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Source/BuddyList/FastIMHandleCompareAdditions.h"
#include "platform/core/Notification.h"
#include "platform/core/SmallVector.h"
#include "platform/im/IMDirectlyObservableObject.h"
#include "platform/im/IMDirectlyObservableObjectObserver.h"
#include "platform/im/IMForward.h"
#include "platform/im/IMPersonStatus.h"

namespace kib {

class KibPresence;
using KibPresencePtr = std::shared_ptr<KibPresence>;

// The aggregate presence of one person over several handles. It keeps the
// handles in the order they were added, follows the most available one,
// records the status and status message it last saw, forwards the person's
// properties to the most available handle and reposts the handles' change
// notifications to its own direct observers, naming the responsible handle
// under kKibIMHandleResponsibleKey.
//
// A quiet presence neither observes its handles nor posts anything.
class KibPresence : public platform::IMDirectlyObservableObject,
                    public platform::IMDirectlyObservableObjectObserver {
  PLATFORM_SELECTORS(KibPresence, platform::IMDirectlyObservableObject)

 public:
  static KibPresencePtr init();

  KibPresence();
  ~KibPresence() override;

  // Handles.
  // Whether the handle may join; always true here, subclasses filter.
  virtual bool canAddIMHandle(const platform::IMHandlePtr& handle) const;
  // False when refused (or nil); true when added or already held (then nothing changes).
  bool addIMHandle(const platform::IMHandlePtr& handle);
  // Ignores a handle that is not held.
  void removeIMHandle(const platform::IMHandlePtr& handle);
  // Identity, not equality.
  bool containsIMHandle(const platform::IMHandle* handle) const;
  bool containsIMHandle(const platform::IMHandlePtr& handle) const { return containsIMHandle(handle.get()); }
  std::int32_t numberOfIMHandles() const;
  // The handles in the order they were added (the live array).
  using Handles = platform::SmallVector<platform::IMHandlePtr, 2>;
  const Handles& imHandles() const { return _imHandles; }
  // Built on first use after a change: only entry comparisons ask for it.
  const IMHandleSet& imHandleSet() const;
  const platform::IMHandlePtr& mostAvailableIMHandle() const { return _mostAvailableIMHandle; }

  // Recorded status.
  platform::IMPersonStatus status() const { return _status; }
  platform::IMPersonStatus previousStatus() const { return _previousStatus; }

  // Set before adding handles: observation is decided when handles come and go.
  bool isQuiet() const { return _quiet; }
  void setIsQuiet(bool quiet) { _quiet = quiet; }

  // Delivers a notification with the presence as object to the direct
  // observers, with the handle (when given) in the user info. Nothing when quiet.
  void postNotificationNamedForIMHandle(const std::string& name, const platform::IMHandlePtr& handle);

  // Forwarded to the most available handle; zero values without one.
  double timeSinceStatusChanged() const;
  double timeSinceWentOffline() const;
  std::string mobileDeviceName() const;
  bool isMobile() const;
  std::string nameOfStatus() const;
  std::string previousStatusMessage() const;
  // Read live from the handle (the recorded message only detects changes).
  std::string statusMessage() const;
  std::string nameAndEmail() const;
  std::string displayName() const;  // the handle's name
  std::string shortName() const;    // the handle's uniqueName
  std::string fullName() const;
  std::string lastName() const;
  std::string firstName() const;
  // The handle's buddy-list group names; nil without a handle. Subclasses may answer other sets.
  virtual std::optional<std::set<std::string>> groups() const;

  // The handle notifications the presence listens to, and the handlers paired
  // with them by position. The handler list is one longer than the name list:
  // the sort-order notification lands on the certificate handler and
  // "_imHandleSortOrderChanged:" is never reached by dispatch.
  static const std::vector<std::string>& notifications();
  static const std::vector<std::string>& selectors();

  // Handle notifications arrive here and go to the handler paired with their name.
  void objectDidPostDirectNotification(const platform::NotificationPtr& notification) override;
  // A handle about to change may change what the presence answers: passed on.
  void objectWillChange(platform::IMDirectlyObservableObject& handle) override;

  std::string className() const override { return "KibPresence"; }
  std::string description() const override;

 protected:
  // Picks the most available handle and records status and message; answers
  // whether a status notification was posted.
  bool _fullRecache();
  void _setMostAvailableIMHandle(const platform::IMHandlePtr& handle);
  void _observeIMHandle(const platform::IMHandlePtr& handle);
  void _unobserveIMHandle(const platform::IMHandlePtr& handle);

  // Handlers, by selector (argument: the handle's notification).
  void _imHandleCapabilitiesChanged(const platform::ObjectPtr& notification);
  void _imHandleStatusChanged(const platform::ObjectPtr& notification);
  void _imHandlePictureChanged(const platform::ObjectPtr& notification);
  void _imHandleInfoChanged(const platform::ObjectPtr& notification);
  void _imHandleGroupsChanged(const platform::ObjectPtr& notification);
  void _imHandleExtraPropsChanged(const platform::ObjectPtr& notification);
  void _imHandleMobileChanged(const platform::ObjectPtr& notification);
  void _imHandleCertsChanged(const platform::ObjectPtr& notification);
  void _imHandleSortOrderChanged(const platform::ObjectPtr& notification);

 private:
  // The notifications the presence posts itself, with names that outlive them (platform::constantName).
  void postConstantNamedForIMHandle(const std::string& constantName, const platform::IMHandlePtr& handle);
  void postForNotifyingHandle(const std::string& constantName, const platform::ObjectPtr& notification);
  static platform::DictionaryPtr userInfoForIMHandle(const platform::IMHandlePtr& handle);

  platform::IMHandlePtr _mostAvailableIMHandle;
  Handles _imHandles;  // most people have a handle or two
  mutable std::unique_ptr<IMHandleSet> _imHandlesSet;  // made when first asked for
  mutable bool _imHandlesSetIsCurrent = true;
  std::string _statusMessage;
  bool _quiet = false;
  platform::IMPersonStatus _previousStatus = 0;
  platform::IMPersonStatus _status = 0;
};

}  // namespace kib
