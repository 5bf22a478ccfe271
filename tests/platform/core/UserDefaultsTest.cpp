#include "platform/core/UserDefaults.h"

#include "platform/core/Array.h"
#include "platform/core/Bundle.h"
#include "platform/core/Number.h"
#include "platform/core/Preferences.h"
#include "platform/core/String.h"
#include "tests/support/PlatformTest.h"

using namespace platform;

namespace {

class UserDefaultsTest : public kibtest::PlatformTest {
 protected:
  void TearDown() override {
    Bundle::setMainBundle(nullptr);
    PlatformTest::TearDown();
  }
};

TEST_F(UserDefaultsTest, TheStandardDefaultsUseTheMainBundlesIdentifier) {
  EXPECT_EQ(UserDefaults::standardUserDefaults().domain(), "com.velmo.kibbar");

  Bundle::setMainBundle(std::make_shared<Bundle>("", "com.example.host", "", ""));
  UserDefaults& defaults = UserDefaults::standardUserDefaults();
  EXPECT_EQ(defaults.domain(), "com.example.host");
  EXPECT_EQ(&defaults, &UserDefaults::standardUserDefaults()) << "one instance per domain";

  defaults.setObjectForKey(makeString("x"), "k");
  ASSERT_TRUE(defaults.synchronize());
  EXPECT_TRUE(std::filesystem::exists(Preferences::fileForDomain("com.example.host")));
  EXPECT_EQ(stringValue(Preferences::copyAppValue("k", "com.example.host")), "x");

  Bundle::setMainBundle(nullptr);
  EXPECT_EQ(UserDefaults::standardUserDefaults().domain(), "com.velmo.kibbar");
}

TEST_F(UserDefaultsTest, TypedAccessorsAnswerNilForAnotherType) {
  UserDefaults defaults("com.example.defaults");
  auto collapsed = std::make_shared<Array>(std::vector<ObjectPtr>{makeString("Offline"), makeString("Work")});
  defaults.setObjectForKey(collapsed, "CollapsedGroups");
  defaults.setObjectForKey(makeString("Buddies"), "Name");

  ASSERT_TRUE(defaults.arrayForKey("CollapsedGroups"));
  EXPECT_TRUE(isEqual(defaults.arrayForKey("CollapsedGroups"), collapsed));
  EXPECT_EQ(defaults.arrayForKey("Name"), nullptr);
  EXPECT_EQ(defaults.stringForKey("CollapsedGroups"), nullptr);
  EXPECT_EQ(defaults.stringForKey("Name")->value(), "Buddies");
  EXPECT_EQ(defaults.arrayForKey("Missing"), nullptr);

  ASSERT_TRUE(defaults.synchronize());
  Preferences::setDirectory(tempDir / "prefs");  // a fresh process
  EXPECT_TRUE(isEqual(defaults.objectForKey("CollapsedGroups"), collapsed));
  defaults.removeObjectForKey("CollapsedGroups");
  ASSERT_TRUE(defaults.synchronize());
  Preferences::setDirectory(tempDir / "prefs");
  EXPECT_EQ(defaults.objectForKey("CollapsedGroups"), nullptr);
  EXPECT_EQ(defaults.stringForKey("Name")->value(), "Buddies");
}

}  // namespace
