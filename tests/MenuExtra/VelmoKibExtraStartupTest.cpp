#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "MenuExtra/VelmoKibExtra.h"
#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/NotificationCenter.h"
#include "platform/core/RunLoop.h"
#include "platform/im/IMFramework.h"
#include "platform/ui/Image.h"
#include "platform/ui/Workspace.h"
#include "tests/MenuExtra/ExtraTestSupport.h"

using namespace platform;

namespace {

class VelmoKibExtraStartupTest : public kibtest::ExtraTest {
 protected:
  // Observer counts of the four centres the extra registers with.
  struct CentreCounts {
    std::size_t workspace, service, distributed, local;
    bool operator==(const CentreCounts&) const = default;
  };
  static CentreCounts centreCounts() {
    return {Workspace::sharedWorkspace().notificationCenter().observerCount(),
            IMService::notificationCenter().observerCount(),
            DistributedNotificationCenter::defaultCenter().observerCount(),
            NotificationCenter::defaultCenter().observerCount()};
  }
  static const std::map<std::string, std::uint32_t>& listeners() {
    return IMDaemonController::sharedController()->listeners();
  }
  // Whether the cached menu survives posting the notification.
  bool keepsCachedMenuAfter(NotificationCenter& centre, const char* name) {
    auto cached = Menu::initWithTitle("cached");
    extra->setMenu(cached);
    centre.postNotificationName(name, nullptr);
    drain();
    return extra->MenuExtra::menu() == cached;
  }
};

TEST_F(VelmoKibExtraStartupTest, ConstructionShowsTheDimmedGlyphAndDefersTheRest) {
  makeDefaultWorld();
  const auto before = centreCounts();
  makeExtra();

  auto view = extra->bannerView();
  ASSERT_TRUE(view);
  EXPECT_EQ(extra->view(), view);
  EXPECT_EQ(view->frame().width, 24.0);
  EXPECT_EQ(view->frame().height, 22.0);
  EXPECT_EQ(view->autoresizingMask(), kViewWidthSizable);
  EXPECT_EQ(view->delegate(), extra.get());
  EXPECT_EQ(extra->length(), 24.0);
  EXPECT_EQ(view->maxRevealWidth(), 150.0f);
  EXPECT_FALSE(view->revealed());
  EXPECT_TRUE(view->isCollapsed());
  ASSERT_TRUE(view->image());
  EXPECT_EQ(view->image()->displayName(), "MenuExtra.pdf");
  EXPECT_TRUE(view->image()->isTemplate());
  EXPECT_TRUE(view->dimmed()) << "dimmed although the user is online";

  EXPECT_FALSE(extra->finishedLoading());
  EXPECT_TRUE(extra->images().empty());
  EXPECT_TRUE(listeners().empty());
  EXPECT_FALSE(IMServiceAgent::sharedAgent()->isLaunched());
  ASSERT_TRUE(extra->peopleCollection());
  EXPECT_FALSE(extra->peopleCollection()->shouldHidePeople());
  EXPECT_TRUE(extra->convertedForNewUI());
  auto after = centreCounts();
  EXPECT_EQ(after.distributed, before.distributed + 3);
  EXPECT_EQ(after.service, before.service);
  EXPECT_EQ(after.local, before.local);

  advance(0.99);
  EXPECT_FALSE(extra->finishedLoading());
  advance(0.02);
  EXPECT_TRUE(extra->finishedLoading());
  EXPECT_EQ(listeners().at(VelmoKibExtra::kListenerID), kKBListenerCapManageStatus);
  EXPECT_TRUE(IMServiceAgent::sharedAgent()->isLaunched());
  after = centreCounts();
  EXPECT_EQ(after.service, before.service + 6);
  EXPECT_EQ(after.local, before.local + 10) << "every default-centre notification, the people list's included";
  EXPECT_FALSE(view->dimmed()) << "the user is available";
  EXPECT_EQ(view->image(), extra->images()[0]);

  EXPECT_EQ(VelmoKibExtra::initWithBundle(nullptr), nullptr);
}

TEST_F(VelmoKibExtraStartupTest, AnEarlyMenuRequestRunsStartupOnce) {
  makeDefaultWorld();
  kibtest::DaemonRequestLog requests;
  makeExtra();
  advance(0.2);
  EXPECT_FALSE(extra->finishedLoading());

  auto menu = extra->menu();
  EXPECT_TRUE(extra->finishedLoading());
  ASSERT_TRUE(menu);
  EXPECT_EQ(extra->menu(), menu) << "cached";
  ASSERT_FALSE(menu->itemArray().empty());
  EXPECT_EQ(menu->itemAtIndex(0)->tag(), VelmoKibExtra::HeaderTag) << "the status section comes first";
  const auto counts = centreCounts();

  // The images: three files, the first one again at index 3, all templates.
  const auto& images = extra->images();
  ASSERT_EQ(images.size(), 4u);
  EXPECT_EQ(images[0]->displayName(), "MenuExtra.pdf");
  EXPECT_EQ(images[1]->displayName(), "MenuExtra-.pdf");
  EXPECT_EQ(images[2]->displayName(), "MenuExtra!.pdf");
  EXPECT_EQ(images[3], images[0]);
  for (const auto& image : images) EXPECT_TRUE(image->isTemplate());

  advance(1.0);  // the deferred start-up comes and finds nothing to do
  EXPECT_EQ(centreCounts(), counts);
  EXPECT_EQ(extra->images(), images);
  EXPECT_EQ(requests.commands, std::vector<std::string>{"addListenerID:capabilities: \"com.velmo.menuextra.Parlo\" 0x1"});
  EXPECT_EQ(RunLoop::main().pendingPerformCount(extra.get(), "_finishStartup"), 0u);
}

TEST_F(VelmoKibExtraStartupTest, NotificationsObservedBeforeAndAfterStartup) {
  makeDefaultWorld();
  makeExtra();
  auto& services = IMService::notificationCenter();
  auto& local = NotificationCenter::defaultCenter();
  const std::vector<const char*> serviceNames{IMServiceStatusChangedNotification, IMPersonStatusChangedNotification,
                                              IMPersonInfoChangedNotification, IMCustomStatusMessagesChangedNotification,
                                              IMStatusImagesChangedAppearanceNotification};
  const std::vector<const char*> menuNames{IMMeStatusChangedNotification, IMAccountInvisibilityChangedNotification};

  // Constructed: only the distributed notifications are honoured.
  for (const char* name : serviceNames) EXPECT_TRUE(keepsCachedMenuAfter(services, name)) << name;
  for (const char* name : menuNames) EXPECT_TRUE(keepsCachedMenuAfter(local, name)) << name;
  DistributedNotificationCenter::defaultCenter().postNotificationName(IMDisplayStatusTextNotification,
                                                                      makeString("Early"));
  services.postNotificationName(IMDisplayStatusTextNotification, makeString("Not yet"));
  drain();
  ASSERT_TRUE(extra->bannerView()->bannerString());
  EXPECT_EQ(extra->bannerView()->bannerString()->value(), "Early");

  advance(1.0);
  ASSERT_TRUE(extra->finishedLoading());
  for (const char* name : serviceNames) EXPECT_FALSE(keepsCachedMenuAfter(services, name)) << name;
  for (const char* name : menuNames) EXPECT_FALSE(keepsCachedMenuAfter(local, name)) << name;
  EXPECT_TRUE(keepsCachedMenuAfter(local, "SomeOtherNotification"));

  auto cached = Menu::initWithTitle("cached");
  extra->setMenu(cached);
  extra->objectDidPostDirectNotification(Notification::make("__kKibPeopleListItemNeedsSortingNotification"));
  EXPECT_EQ(extra->MenuExtra::menu(), nullptr) << "the people list changed";

  services.postNotificationName(IMDisplayStatusTextNotification, makeString("From the service centre"));
  EXPECT_EQ(extra->bannerView()->bannerString()->value(), "From the service centre");

  // A status change reaches the icon through the me-status notification.
  for (const char* account : {"aim", "ambrel", "jabber"}) world->account(account)->setMyStatus(kIMPersonStatusAway, "");
  EXPECT_EQ(extra->bannerView()->image(), extra->images()[1]);
}

TEST_F(VelmoKibExtraStartupTest, WillUnloadTearsDownAndLateNotificationsDoNothing) {
  makeDefaultWorld();
  const auto before = centreCounts();
  makeStartedExtra();
  kibtest::DaemonRequestLog requests;
  auto view = extra->bannerView();
  DistributedNotificationCenter::defaultCenter().postNotificationName(IMDisplayStatusTextNotification,
                                                                      makeString("Hello"));
  advance(0.5);
  ASSERT_GT(RunLoop::main().pendingPerformCount(view.get()), 0u) << "mid-reveal";
  auto oldCollection = extra->peopleCollection();

  extra->willUnload();
  EXPECT_EQ(RunLoop::main().pendingPerformCount(view.get()), 0u) << "the reveal was stopped";
  EXPECT_EQ(centreCounts(), before);
  EXPECT_TRUE(listeners().empty());
  EXPECT_EQ(requests.commands, std::vector<std::string>{"removeListenerID: \"com.velmo.menuextra.Parlo\""});
  ASSERT_TRUE(extra->peopleCollection());
  EXPECT_NE(extra->peopleCollection(), oldCollection);
  EXPECT_TRUE(extra->peopleCollection()->collectedIMPeople().empty());
  EXPECT_EQ(extra->peopleList(), nullptr);
  EXPECT_EQ(extra->selectedService(), nullptr);
  EXPECT_EQ(extra->screenSharingPulseTimer(), nullptr);
  EXPECT_TRUE(extra->finishedLoading());
  EXPECT_EQ(extra->bannerView(), view);
  EXPECT_EQ(extra->images().size(), 4u);
  EXPECT_EQ(extra->host(), nullptr);

  // Late notifications find nobody; a late people change talks to no list.
  const double length = extra->length();
  DistributedNotificationCenter::defaultCenter().postNotificationName(IMDisplayStatusTextNotification,
                                                                      makeString("Late"));
  NotificationCenter::defaultCenter().postNotificationName(IMPeopleChangedNotification, nullptr);
  for (const char* account : {"aim", "ambrel", "jabber"}) world->account(account)->setMyStatus(kIMPersonStatusAway, "");
  extra->peopleChanged(nullptr);
  advance(2.0);
  EXPECT_EQ(view->bannerString()->value(), "Hello");
  EXPECT_EQ(extra->length(), length);
  EXPECT_EQ(view->image(), extra->images()[0]) << "the icon no longer follows the status";

  std::weak_ptr<VelmoKibExtra> gone = extra;
  extra = nullptr;
  EXPECT_TRUE(gone.expired()) << "nothing else holds the extra";
  EXPECT_EQ(requests.commands.size(), 2u) << "teardown leaves the daemon once more";
  EXPECT_EQ(requests.commands.back(), "removeListenerID: \"com.velmo.menuextra.Parlo\"");
}

TEST_F(VelmoKibExtraStartupTest, UnloadBeforeStartupLeavesNothingBehind) {
  makeDefaultWorld();
  const auto before = centreCounts();
  makeExtra();
  std::weak_ptr<VelmoKibExtra> weak = extra;
  advance(0.2);
  unloadExtra();
  EXPECT_FALSE(weak.expired()) << "the pending start-up holds the extra";

  // The start-up still runs (the host already let go); releasing afterwards
  // unregisters everything it registered.
  advance(1.0);
  EXPECT_TRUE(weak.expired());
  EXPECT_EQ(centreCounts(), before);
  EXPECT_TRUE(listeners().empty());
  EXPECT_EQ(RunLoop::main().nextDueTime(kDefaultRunLoopMode), std::numeric_limits<double>::infinity());
}

TEST_F(VelmoKibExtraStartupTest, ImagesByNameAndTheBlankSpacer) {
  makeDefaultWorld();
  addPNGResource("small-glyph.png", 16, 16);
  addPNGResource("large-glyph.png", 32, 32);
  makeExtra();

  auto small = extra->imageNamed("small-glyph");
  ASSERT_TRUE(small);
  EXPECT_EQ(small->name(), "small-glyph");
  EXPECT_EQ(small->filePath(), (resourcesDir() / "small-glyph.png").string());
  EXPECT_EQ(extra->imageNamed("small-glyph"), small) << "registered";
  EXPECT_EQ(Image::imageNamed("small-glyph"), small);
  EXPECT_EQ(extra->imageNamed("no-such-image"), nullptr);

  auto blank = extra->emptyImageFromName("small-glyph");
  ASSERT_TRUE(blank);
  EXPECT_EQ(blank->name(), "Empty Image");
  EXPECT_EQ(blank->filePath(), "");
  EXPECT_EQ(blank->size().width, 16.0);
  EXPECT_EQ(blank->size().height, 16.0);
  auto again = extra->emptyImageFromName("large-glyph");
  EXPECT_EQ(again, blank) << "the first size wins";
  EXPECT_EQ(again->size().width, 16.0);
  EXPECT_EQ(Image::imageNamed("large-glyph"), nullptr) << "never needed, so never loaded";

  EXPECT_EQ(VelmoKibExtra::imageForStatus(kIMPersonStatusOffline)->displayName(), "status-offline");
  EXPECT_EQ(VelmoKibExtra::imageForStatus(kIMPersonStatusIdle)->displayName(), "status-idle");
  EXPECT_EQ(VelmoKibExtra::imageForStatus(kIMPersonStatusAway)->displayName(), "status-away");
  EXPECT_EQ(VelmoKibExtra::imageForStatus(kIMPersonStatusAvailable)->displayName(), "status-available");
  EXPECT_EQ(VelmoKibExtra::imageForStatus(kIMPersonStatusAvailable),
            VelmoKibExtra::imageForStatus(kIMPersonStatusAvailable));
}

}  // namespace
