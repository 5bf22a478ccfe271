#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "platform/core/Bundle.h"
#include "platform/ui/MenuExtra.h"
#include "platform/ui/MenuExtraPlugin.h"

namespace kibhost {

// A menu-extra bundle whose shared library is loaded and whose principal class
// was found through the library's exported class lookup. The library stays
// loaded for the rest of the process: timers, delayed performs and observers
// that the extra leaves behind may still point into its code.
class PluginBundle {
 public:
  // Nil, with a one-line reason in error, when the folder is not a bundle, its
  // metadata names no principal class or executable, the library cannot be
  // loaded, exports no class lookup, or does not define the principal class.
  static std::shared_ptr<PluginBundle> load(const std::filesystem::path& folder, std::string& error);

  const platform::BundlePtr& bundle() const { return bundle_; }
  const platform::MenuExtraClass& principalClass() const { return *class_; }
  // The principal class's initWithBundle with this bundle; nil when it refuses.
  std::shared_ptr<platform::MenuExtra> instantiate() const;
  bool hasSelfTest() const { return class_->runSelfTestDuration && class_->durationOfTest; }

  PluginBundle(platform::BundlePtr bundle, const platform::MenuExtraClass* extraClass)
      : bundle_(std::move(bundle)), class_(extraClass) {}

 private:
  platform::BundlePtr bundle_;
  const platform::MenuExtraClass* class_;
};

}  // namespace kibhost
