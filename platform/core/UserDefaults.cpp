#include "platform/core/UserDefaults.h"

#include <map>
#include <mutex>

#include "platform/core/Array.h"
#include "platform/core/Bundle.h"
#include "platform/core/Preferences.h"
#include "platform/core/String.h"

namespace platform {

UserDefaults& UserDefaults::standardUserDefaults() {
  static std::mutex mutex;
  static auto* instances = new std::map<std::string, std::unique_ptr<UserDefaults>>;  // outlives static teardown
  std::string domain = Bundle::mainBundle().bundleIdentifier();
  if (domain.empty()) domain = kDefaultDomain;
  std::lock_guard lock(mutex);
  auto& instance = (*instances)[domain];
  if (!instance) instance = std::make_unique<UserDefaults>(domain);
  return *instance;
}

ObjectPtr UserDefaults::objectForKey(const std::string& key) const { return Preferences::copyAppValue(key, domain_); }

void UserDefaults::setObjectForKey(const ObjectPtr& value, const std::string& key) {
  Preferences::setAppValue(key, value, domain_);
}

void UserDefaults::removeObjectForKey(const std::string& key) { Preferences::setAppValue(key, nullptr, domain_); }

std::shared_ptr<String> UserDefaults::stringForKey(const std::string& key) const {
  return std::dynamic_pointer_cast<String>(objectForKey(key));
}

std::shared_ptr<Array> UserDefaults::arrayForKey(const std::string& key) const {
  return std::dynamic_pointer_cast<Array>(objectForKey(key));
}

bool UserDefaults::synchronize() { return Preferences::appSynchronize(domain_); }

}  // namespace platform
