#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "MenuExtra/StatusBannerView.h"
#include "MenuExtra/StatusBannerViewDelegate.h"
#include "platform/core/Bundle.h"
#include "platform/core/Dictionary.h"
#include "platform/core/Notification.h"
#include "platform/core/String.h"
#include "platform/core/Timer.h"
#include "platform/im/IMDirectlyObservableObjectObserver.h"
#include "platform/im/IMForward.h"
#include "platform/im/IMPersonStatus.h"
#include "platform/ui/Image.h"
#include "platform/ui/Menu.h"
#include "platform/ui/MenuExtra.h"
#include "platform/ui/MenuItem.h"

namespace kib {
class KibPeopleList;
class KibPeopleListItem;
}  // namespace kib

// The menu-bar extra of the messaging client: the bundle's principal class.
//
// Construction is cheap: the banner view, the people model and three
// distributed observers. The rest (status images, the daemon listener, the
// account, service and person observers) waits for _finishStartup, one second
// later or at the first menu request. The menu is built on demand, cached,
// and dropped whenever the user's status, the services, the accounts or the
// people list change.
//
// The operations live in one file per concern: VelmoKibExtra.cpp (start-up,
// shutdown, notifications, images, the menu), VelmoKibExtraOwnStatus.cpp,
// VelmoKibExtraStatusSection.cpp, VelmoKibExtraBuddies.cpp,
// VelmoKibExtraControls.cpp, VelmoKibExtraScreenSharing.cpp and
// VelmoKibExtraSelfTest.cpp.
class VelmoKibExtra final : public platform::MenuExtra,
                            public StatusBannerViewDelegate,
                            public platform::IMDirectlyObservableObjectObserver {
  PLATFORM_SELECTORS(VelmoKibExtra, platform::MenuExtra)

 public:
  // Status item tags of the status section; every other item has tag 0.
  static constexpr std::int64_t HeaderTag = 1;
  static constexpr std::int64_t AvailableTag = 2;
  static constexpr std::int64_t AwayTag = 3;
  static constexpr std::int64_t OfflineTag = 4;
  static constexpr std::int64_t InvisibleTag = 5;

  // The bundle identifier and the daemon listener ID.
  static constexpr const char* kListenerID = "com.velmo.menuextra.Parlo";
  // The strings table of every title.
  static constexpr const char* kStringsTable = "MenuExtraLocalizable";
  // The selector of label items: nothing answers it, so they show disabled.
  static constexpr const char* kLabelAction = ":";

  // Nil when the base status item cannot be made (no bundle).
  static std::shared_ptr<VelmoKibExtra> initWithBundle(platform::BundlePtr bundle);
  ~VelmoKibExtra() override;

  // ---- Start-up and shutdown (VelmoKibExtra.cpp) ----

  // Runs once; later calls return at once. The argument is ignored (delayed perform).
  void _finishStartup(const platform::ObjectPtr& ignored = nullptr);
  void _initImages();
  bool convertedForNewUI() const override { return true; }
  // Starts up first if needed, then the cached menu or a new one.
  platform::MenuPtr menu() override;
  // Drops the cached menu; the argument is ignored.
  void invalidateMenu(const platform::ObjectPtr& ignored = nullptr);
  void willUnload() override;

  // Notification handlers (the argument is the notification, ignored unless said).
  void myStatusChanged(const platform::ObjectPtr& notification = nullptr);
  void serviceStatusChanged(const platform::ObjectPtr& notification = nullptr);
  void accountsUpdated(const platform::ObjectPtr& notification = nullptr);
  void peopleChanged(const platform::ObjectPtr& notification = nullptr);
  // The people list changed.
  void objectDidPostDirectNotification(const platform::NotificationPtr& notification) override;

  // A bundle image by resource name, registered under that name; nil when missing.
  platform::ImagePtr imageNamed(const std::string& name);
  // The blank spacer "Empty Image", sized like the first image asked for.
  platform::ImagePtr emptyImageFromName(const std::string& name);
  // The platform's status image for a person status.
  static platform::ImagePtr imageForStatus(platform::IMPersonStatus status);

  // ---- Own status and the menu-bar title (VelmoKibExtraOwnStatus.cpp) ----

  // The active accounts without video-calling ones.
  std::vector<platform::IMAccountPtr> _activeAccounts() const;
  platform::IMAccountPtr _bestAccountForStatus() const;
  // Offline (1) unless the best account is logged in; then its status.
  platform::IMPersonStatus _myStatus() const;
  bool _hasConnectedAccounts() const;
  // More connected available accounts are invisible than visible.
  bool _overallStatusIsInvisible() const;
  // The chosen service while it has a connected account, else nil.
  platform::IMServicePtr activeService();
  // Icon and dimming for the status; idle leaves the icon as it is.
  void updateMenuTitleStatus(platform::IMPersonStatus status);
  // The notification's object is the text: shown in the banner, or, when
  // empty, the banner collapses.
  void displayStatusText(const platform::ObjectPtr& notification);
  void statusBannerViewFinishedRevealAnimation(StatusBannerView& view, bool revealed) override;
  void statusBannerViewBannerFinishedScrollCycle(StatusBannerView& view, std::int32_t cycles) override;

  // ---- The status section (VelmoKibExtraStatusSection.cpp) ----

  void _appendStatus(const platform::MenuPtr& menu);
  // One block: the title item, an item per message, a separator, and for the
  // available block the music item when the player can be used.
  void _appendStatusMessagesTagTitleTagTitleImageMenu(const std::vector<std::string>& messages, std::int32_t tag,
                                                      const std::string& title, bool tagTitle,
                                                      const platform::ImagePtr& image, const platform::MenuPtr& menu);
  // Marks the current choice (a dash instead of a check while some enabled
  // services are offline). An empty message stands for none.
  void _updateStatusSelectionMessageMenu(platform::IMPersonStatus status, const std::string& message,
                                         const platform::MenuPtr& menu);
  // The index of the first item with the tag whose represented object is the message, or -1.
  std::int32_t _menuItemWithTagMessageMenu(std::int64_t tag, const std::string& message,
                                           const platform::MenuPtr& menu) const;
  void _unselectAllStatusItems(const platform::MenuPtr& menu);
  // Re-marks the cached menu, if any, and updates the icon.
  void _setMyStatusMenuStateStatusMessage(platform::IMPersonStatus status, const std::string& message);
  // Action of the status items: sets the status of every account.
  void selectMenuItem(const platform::ObjectPtr& sender);

  // ---- Buddies section and chat actions (VelmoKibExtraBuddies.cpp) ----

  // Makes the people collection and the people list (flat, available people
  // only) and observes the list; the constructor's first step.
  void _setUpPeopleModel();
  void _rebuildPeopleCollection();
  void _rebuildPeopleList();
  void _appendBuddies(const platform::MenuPtr& menu);
  platform::MenuItemPtr _menuItemForPersonNamedIsAlternate(const std::shared_ptr<kib::KibPeopleListItem>& item,
                                                           const std::string& name, bool isAlternate);
  platform::ImagePtr menuImageForPerson(const platform::IMHandlePtr& handle);
  void messagePerson(const platform::ObjectPtr& sender);
  void textMessagePerson(const platform::ObjectPtr& sender);
  void _messagePersonForceText(const platform::MenuItemPtr& item, bool forceText);
  // An address-book style record (IMPersonFirstNameKey, IMPersonLastNameKey, IMPersonScreenNameKey).
  static std::string displayNameForPerson(const platform::DictionaryPtr& record);

  // ---- Controls section and the default service (VelmoKibExtraControls.cpp) ----

  void _appendControls(const platform::MenuPtr& menu);
  // The whole menu while the daemon is not connected.
  void _appendOpenParlo(const platform::MenuPtr& menu);
  void switchService(const platform::ObjectPtr& sender);
  // Re-reads the "DefaultServiceName" preference at every call.
  platform::IMServicePtr defaultService();
  void setDefaultService(const platform::IMServicePtr& service);
  void openBuddyList(const platform::ObjectPtr& sender);

  // ---- Screen-sharing indicator (VelmoKibExtraScreenSharing.cpp) ----

  // The notification's object is the partner's name or nil.
  void screenSharingStarted(const platform::ObjectPtr& notification);
  void screenSharingEnded(const platform::ObjectPtr& notification);
  // The pulse timer's action (the argument is the timer).
  void screenSharingPulse(const platform::ObjectPtr& timer);
  void applicationDidTerminate(const platform::ObjectPtr& notification);
  void endScreenSharing(const platform::ObjectPtr& sender);
  bool isScreenSharing() const { return _screenSharingPulse != nullptr; }
  void _appendScreenSharingControls(const platform::MenuPtr& menu);

  // ---- Self-test harness (VelmoKibExtraSelfTest.cpp) ----

  // The test deployment's identities: an AIM screen name, a person on the
  // local-network service (by first and last name) and a Jabber address.
  static constexpr const char* SelfTestAIMScreenName = "selftest.aim";
  static constexpr const char* SelfTestPersonFirstName = "Tess";
  static constexpr const char* SelfTestPersonLastName = "Tester";
  static constexpr const char* SelfTestJabberAddress = "selftest@jabber.velmo.example";

  void runSelfTestDuration(std::uint32_t test, double duration);
  double durationOfTest(std::uint32_t test) const;
  bool setupTesting(std::uint32_t test);
  bool isBuddyAvailableOnService(const std::string& buddy, const std::string& serviceName);
  // The argument is the title (a String); also the delayed message the tests schedule.
  void execMenuItemWithTitle(const platform::ObjectPtr& title);
  void changeStatus();
  void startChatWith();
  void showBuddyList();
  void screenSharing();
  // The time line the tests are laid on: one per process, in seconds.
  static double selfTestTimeLineOffset();
  static void setSelfTestTimeLineOffset(double offset);

  // ---- Read access for hosts and tests ----

  const StatusBannerViewPtr& bannerView() const { return _bannerView; }
  const std::vector<platform::ImagePtr>& images() const { return _images; }
  bool finishedLoading() const { return _finishedLoading; }
  const platform::TimerPtr& screenSharingPulseTimer() const { return _screenSharingPulse; }
  bool isShowingScreenSharingIcon() const { return _isShowingScreenSharingIcon; }
  const platform::StringPtr& screenSharingName() const { return _screenSharingName; }
  const platform::IMPeopleCollectionPtr& peopleCollection() const { return _peopleCollection; }
  const std::shared_ptr<kib::KibPeopleList>& peopleList() const { return _peopleList; }
  const platform::IMServicePtr& selectedService() const { return _selectedService; }

  std::string className() const override { return "VelmoKibExtra"; }

 private:
  VelmoKibExtra() = default;

  // A title from the extra's strings table (the key itself when missing).
  std::string localized(const std::string& key) const;
  // "<resource path>/<file>".
  std::string resourceFile(const std::string& file) const;
  platform::MenuItemPtr labelItem(const std::string& title);
  void removeFromAllCentres();
  void stopScreenSharingPulse();

  StatusBannerViewPtr _bannerView;
  std::vector<platform::ImagePtr> _images;
  platform::DictionaryPtr _sortDefaults;  // never assigned; stays nil
  bool _finishedLoading = false;
  platform::TimerPtr _screenSharingPulse;
  bool _isShowingScreenSharingIcon = false;
  platform::StringPtr _screenSharingName;
  platform::IMPeopleCollectionPtr _peopleCollection;
  std::shared_ptr<kib::KibPeopleList> _peopleList;
  platform::IMServicePtr _selectedService;
};

using VelmoKibExtraPtr = std::shared_ptr<VelmoKibExtra>;
