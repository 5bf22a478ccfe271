// The self-test harness: scripted menu actions for an outside timing driver.
// Each test lays its actions on one shared time line of delayed messages to
// the extra and returns; the actions then run on the run loop and choose menu
// items by title as the user would. Progress goes to the test log.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "MenuExtra/VelmoKibExtra.h"
#include "platform/core/Clock.h"
#include "platform/core/Date.h"
#include "platform/core/Format.h"
#include "platform/core/Log.h"
#include "platform/core/RunLoop.h"
#include "platform/core/TextServices.h"
#include "platform/im/IMFramework.h"

using namespace platform;

namespace {

// The time line every test is laid on, in seconds; one per process.
double timeLineOffset = 0.0;

struct SelfTest {
  std::uint32_t number;
  const char* name;
  void (VelmoKibExtra::*operation)();
  double duration;
};

const SelfTest kSelfTests[] = {
    {1, "Change Status Test", &VelmoKibExtra::changeStatus, 15.0},
    {2, "Start Chat With Test", &VelmoKibExtra::startChatWith, 12.0},
    {3, "Change Buddy List Test", &VelmoKibExtra::showBuddyList, 12.0},
    {4, "Screen Sharing Test", &VelmoKibExtra::screenSharing, 4.0},
};

// Test 0 runs the tests above in turn; it has no entry of its own.
constexpr std::uint32_t kAllTests = 0;
constexpr std::uint32_t kEndOfAllTests = 5;

const SelfTest* selfTestNumbered(std::uint32_t number) {
  for (const auto& test : kSelfTests)
    if (test.number == number) return &test;
  return nullptr;
}

constexpr const char* kSubNetSeparator = "/sep";

// "first/seplast" → {"first", "last"}; a missing part is empty.
std::pair<std::string, std::string> splitPersonName(const std::string& buddy) {
  auto at = buddy.find(kSubNetSeparator);
  if (at == std::string::npos) return {buddy, ""};
  auto rest = buddy.substr(at + std::char_traits<char>::length(kSubNetSeparator));
  return {buddy.substr(0, at), rest.substr(0, rest.find(kSubNetSeparator))};
}

// The seed is the absolute time truncated to whole seconds (never below zero).
unsigned randomSeed() {
  double now = CFAbsoluteTimeGetCurrent();
  return static_cast<unsigned>(now > 0 ? static_cast<std::uint64_t>(now) : 0);
}

}  // namespace

double VelmoKibExtra::selfTestTimeLineOffset() { return timeLineOffset; }

void VelmoKibExtra::setSelfTestTimeLineOffset(double offset) { timeLineOffset = offset; }

// Running tests.

void VelmoKibExtra::runSelfTestDuration(std::uint32_t test, double duration) {
  // The duration is not used: each test's length is fixed by its own schedule.
  (void)duration;
  const auto start = Date::now();
  timeLineOffset = 0.0;
  srandom(randomSeed());

  int iteration = 0;
  std::uint32_t current = test;
  while (true) {
    if (test != kAllTests) {
      timeLineOffset = 0.0;
    } else if (++current == kEndOfAllTests) {
      break;
    }
    if (!setupTesting(current)) break;
    CFLogTest(0, "RealDuration: %f", 0.0);
    CFLogTest(0, "Duration: %f", 0.0);

    const SelfTest* selfTest = selfTestNumbered(current);
    if (!selfTest) break;
    ++iteration;
    CFLogTest(0, "Iteration:%d Message: Running test %d [%@]", iteration, current, selfTest->name);
    (this->*selfTest->operation)();
    CFLogTest(0, "Time interval since start: %f", Date::now()->timeIntervalSinceDate(*start));

    // A clock that went backwards runs the round again.
    if (0.0 > Date::now()->timeIntervalSinceDate(*start)) continue;
    if (test != kAllTests) break;
  }
}

double VelmoKibExtra::durationOfTest(std::uint32_t test) const {
  const SelfTest* selfTest = selfTestNumbered(test);
  return selfTest ? selfTest->duration : 0.0;
}

// Preconditions.

bool VelmoKibExtra::setupTesting(std::uint32_t test) {
  const bool usesEveryService = test == 2 || test == 3;
  if (usesEveryService) {
    for (const auto& service : IMService::allServices()) {
      if (!service->isEnabled() || service->status() < kIMPersonStatusAway) {
        CFLogTest(0,
                  "Ending Self-Test: %@ is not logged in. You need to be logged in at least one account per service "
                  "for this test.",
                  service);
        return false;
      }
    }
  }
  if (test != 2) return true;
  return isBuddyAvailableOnService(SelfTestAIMScreenName, "AIM") &&
         isBuddyAvailableOnService(format("%@/sep%@", SelfTestPersonFirstName, SelfTestPersonLastName),
                                   IMServiceNameSubNet) &&
         isBuddyAvailableOnService(SelfTestJabberAddress, "Jabber");
}

bool VelmoKibExtra::isBuddyAvailableOnService(const std::string& buddy, const std::string& serviceName) {
  DictionaryPtr info;
  if (auto service = IMService::serviceWithName(serviceName)) {
    if (TextServices::compare(service->name(), IMServiceNameSubNet) != 0) {
      info = service->infoForScreenName(buddy);
    } else {
      // Local-network buddies are found by name; the last match wins.
      const auto [firstName, lastName] = splitPersonName(buddy);
      for (const auto& entry : service->infoForAllScreenNames()) {
        if (stringValue(entry->objectForKey(IMPersonFirstNameKey)) == firstName &&
            stringValue(entry->objectForKey(IMPersonLastNameKey)) == lastName)
          info = entry;
      }
    }
  }
  // Known to the service is enough: the buddy's status is not looked at.
  if (info) return true;
  CFLogTest(0, "Ending Self-Test: %@ is not available. You need to have %@ available as a %@ buddy for this test.",
            buddy, buddy, serviceName);
  return false;
}

// Actions.

void VelmoKibExtra::execMenuItemWithTitle(const ObjectPtr& title) {
  auto menu = this->menu();
  // A title that is not in the menu is passed on as the not-found index.
  auto text = asString(title);
  menu->performActionForItemAtIndex(text ? menu->indexOfItemWithTitle(text->value()) : -1);
  CFLogTest(0, "Performed action on item with title: %@", title);
}

namespace {

void scheduleOnTimeLine(VelmoKibExtra& extra, const char* selector, const ObjectPtr& argument, double delay) {
  RunLoop::current().performSelectorAfterDelay(extra.shared_from_this(), selector, argument, timeLineOffset + delay);
}

void scheduleMenuItem(VelmoKibExtra& extra, ObjectPtr title, double delay) {
  scheduleOnTimeLine(extra, "execMenuItemWithTitle:", title, delay);
}

void scheduleMenuItem(VelmoKibExtra& extra, const std::string& title, double delay) {
  scheduleMenuItem(extra, makeString(title), delay);
}

}  // namespace

void VelmoKibExtra::changeStatus() {
  // The titles are the status items' as the menu shows them now.
  auto menu = this->menu();
  auto titleOfItemWithTag = [&menu](std::int64_t tag) -> ObjectPtr {
    auto item = menu->itemWithTag(tag);
    return item ? makeString(item->title()) : nullptr;
  };
  scheduleMenuItem(*this, titleOfItemWithTag(OfflineTag), 1);
  scheduleMenuItem(*this, titleOfItemWithTag(AvailableTag), 3);
  scheduleMenuItem(*this, titleOfItemWithTag(AwayTag), 11);
  scheduleMenuItem(*this, titleOfItemWithTag(OfflineTag), 13);
  scheduleMenuItem(*this, titleOfItemWithTag(AvailableTag), 15);
  timeLineOffset += 15;
}

void VelmoKibExtra::startChatWith() {
  CFLogTest(0, "In start chat with");
  scheduleMenuItem(*this, "Display AIM Buddies", 2);
  scheduleMenuItem(*this, SelfTestAIMScreenName, 4);
  scheduleMenuItem(*this, "Display Ambrel Buddies", 6);
  scheduleMenuItem(*this, format("%@ %@", SelfTestPersonFirstName, SelfTestPersonLastName), 8);
  scheduleMenuItem(*this, "Display Jabber Buddies", 10);
  scheduleMenuItem(*this, SelfTestJabberAddress, 12);
  timeLineOffset += 12;
}

void VelmoKibExtra::showBuddyList() {
  scheduleMenuItem(*this, "Display AIM Buddies", 2);
  scheduleMenuItem(*this, "Show AIM Buddy List\u2026", 4);
  scheduleMenuItem(*this, "Display Ambrel Buddies", 6);
  scheduleMenuItem(*this, "Show Ambrel Buddy List\u2026", 8);
  scheduleMenuItem(*this, "Display Jabber Buddies", 10);
  scheduleMenuItem(*this, "Show Jabber Buddy List\u2026", 12);
  timeLineOffset += 12;
}

void VelmoKibExtra::screenSharing() {
  scheduleOnTimeLine(*this, "screenSharingStarted:", nullptr, 2);
  scheduleOnTimeLine(*this, "screenSharingEnded:", nullptr, 6);
  // Less than the last delay: the session ends two seconds into the next test.
  timeLineOffset += 4;
}
