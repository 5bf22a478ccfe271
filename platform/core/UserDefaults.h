#pragma once

#include <memory>
#include <string>

#include "platform/core/Object.h"

namespace platform {

// The standard user defaults: the preferences domain of the running program
// (the main bundle's identifier, "com.velmo.kibbar" when it has none), with
// the usual typed accessors. A view on Preferences: changes are kept in memory
// there and written by synchronize (also at exit of the program's run, by the
// host); reads see what another process wrote.
class UserDefaults final : public Object {
 public:
  static constexpr const char* kDefaultDomain = "com.velmo.kibbar";

  // The defaults of the current main bundle's domain. There is one instance per
  // domain for the life of the program; it holds nothing but its domain, so
  // installing another main bundle (Bundle::setMainBundle) simply selects another.
  static UserDefaults& standardUserDefaults();

  explicit UserDefaults(std::string domain) : domain_(std::move(domain)) {}
  const std::string& domain() const { return domain_; }

  // A copy of the stored value, or nil.
  ObjectPtr objectForKey(const std::string& key) const;
  // Nil removes the key.
  void setObjectForKey(const ObjectPtr& value, const std::string& key);
  void removeObjectForKey(const std::string& key);
  // The value when it is of the type, else nil.
  std::shared_ptr<class String> stringForKey(const std::string& key) const;
  std::shared_ptr<class Array> arrayForKey(const std::string& key) const;
  // Writes the changes; false when they could not be written (see Preferences).
  bool synchronize();

  std::string className() const override { return "UserDefaults"; }

 private:
  std::string domain_;
};

}  // namespace platform
