// The test bundle's exported class lookup.
#include <cstring>

#include "platform/ui/MenuExtraPlugin.h"
#include "tests/host/TestExtra/TestExtra.h"

namespace {

void runSelfTest(platform::MenuExtra& extra, std::uint32_t test, double duration) {
  static_cast<kibtest::TestExtra&>(extra).runSelfTestDuration(test, duration);
}

double durationOfTest(platform::MenuExtra& extra, std::uint32_t test) {
  return static_cast<kibtest::TestExtra&>(extra).durationOfTest(test);
}

const platform::MenuExtraClass kTestExtraClass{platform::kMenuExtraPluginVersion, "TestExtra",
                                               &kibtest::TestExtra::initWithBundle, &runSelfTest, &durationOfTest};

}  // namespace

extern "C" __attribute__((visibility("default"))) const platform::MenuExtraClass* kib_menu_extra_class_named(
    const char* className) {
  return className && std::strcmp(className, kTestExtraClass.name) == 0 ? &kTestExtraClass : nullptr;
}
