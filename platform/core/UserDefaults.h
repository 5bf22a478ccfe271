#pragma once

#include <memory>
#include <string>

#include "platform/core/Object.h"

namespace platform {

// The standard user defaults: the preferences domain of the running program
// (the main bundle's identifier, "com.velmo.kibbar" when it has none), with
// the usual typed accessors. Changes are kept in memory and written by
// synchronize (also at exit of the program's run, by the host).
class UserDefaults final : public Object {
 public:
  static UserDefaults& standardUserDefaults();

  explicit UserDefaults(std::string domain) : domain_(std::move(domain)) {}
  const std::string& domain() const { return domain_; }

  ObjectPtr objectForKey(const std::string& key) const;
  void setObjectForKey(const ObjectPtr& value, const std::string& key);
  void removeObjectForKey(const std::string& key);
  // The value when it is of the type, else nil.
  std::shared_ptr<class String> stringForKey(const std::string& key) const;
  std::shared_ptr<class Array> arrayForKey(const std::string& key) const;
  bool synchronize();

  std::string className() const override { return "UserDefaults"; }

 private:
  std::string domain_;
};

}  // namespace platform
