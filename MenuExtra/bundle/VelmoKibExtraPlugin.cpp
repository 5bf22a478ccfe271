// The bundle's exported class lookup: the status-bar program finds the
// principal class VelmoKibExtra through it.
#include <cstring>

#include "MenuExtra/VelmoKibExtra.h"
#include "platform/ui/MenuExtraPlugin.h"

namespace {

std::shared_ptr<platform::MenuExtra> initWithBundle(const platform::BundlePtr& bundle) {
  return VelmoKibExtra::initWithBundle(bundle);
}

#if KIB_EXTRA_HAS_SELF_TEST
void runSelfTestDuration(platform::MenuExtra& extra, std::uint32_t test, double duration) {
  static_cast<VelmoKibExtra&>(extra).runSelfTestDuration(test, duration);
}

double durationOfTest(platform::MenuExtra& extra, std::uint32_t test) {
  return static_cast<VelmoKibExtra&>(extra).durationOfTest(test);
}

const platform::MenuExtraClass kVelmoKibExtraClass{platform::kMenuExtraPluginVersion, "VelmoKibExtra", &initWithBundle,
                                                   &runSelfTestDuration, &durationOfTest};
#else
const platform::MenuExtraClass kVelmoKibExtraClass{platform::kMenuExtraPluginVersion, "VelmoKibExtra", &initWithBundle,
                                                   nullptr, nullptr};
#endif

}  // namespace

extern "C" __attribute__((visibility("default"))) const platform::MenuExtraClass* kib_menu_extra_class_named(
    const char* className) {
  return className && std::strcmp(className, kVelmoKibExtraClass.name) == 0 ? &kVelmoKibExtraClass : nullptr;
}
