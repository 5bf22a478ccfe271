#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace platform {

class Object;
using ObjectPtr = std::shared_ptr<Object>;

// The root of every class the system passes around as "an object".
// Objects are owned through std::shared_ptr; back-references are raw pointers
// that their owners clear. Selectors are spelled as the system's code spells
// them ("selectMenuItem:") and dispatched through per-class tables.
class Object : public std::enable_shared_from_this<Object> {
 public:
  Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object() = default;

  // The class name without namespaces ("KibPeopleListItem").
  virtual std::string className() const;
  // What "%@" prints for this object.
  virtual std::string description() const;
  // Equality; identity unless a class compares contents.
  virtual bool isEqual(const Object* other) const { return this == other; }
  virtual std::size_t hash() const;

  virtual bool respondsToSelector(std::string_view selector) const;
  // Performs the selector with the argument; false when the class has no such selector.
  virtual bool performSelector(std::string_view selector, const ObjectPtr& argument);
};

// Null-safe equality: two nils are equal, nil never equals an object.
bool isEqual(const Object* a, const Object* b);
inline bool isEqual(const ObjectPtr& a, const ObjectPtr& b) { return isEqual(a.get(), b.get()); }

// Null-safe description: "(null)" for nil.
std::string describe(const Object* object);
inline std::string describe(const ObjectPtr& object) { return describe(object.get()); }

// Maps selector spellings to member functions of one class. Each class that is
// driven by selector keeps one static table and chains to its base class.
template <class T>
class SelectorTable {
 public:
  using Method = void (T::*)(const ObjectPtr&);

  SelectorTable(std::initializer_list<std::pair<std::string_view, Method>> entries) {
    for (const auto& [name, method] : entries) methods_.emplace(name, method);
  }

  bool contains(std::string_view selector) const { return methods_.count(selector) != 0; }

  bool perform(T& receiver, std::string_view selector, const ObjectPtr& argument) const {
    auto found = methods_.find(selector);
    if (found == methods_.end()) return false;
    (receiver.*(found->second))(argument);
    return true;
  }

 private:
  std::unordered_map<std::string_view, Method> methods_;
};

}  // namespace platform

// Declares the selector plumbing of a class: a static table (defined by the
// class as `const platform::SelectorTable<Class>& Class::selectorTable()`) and
// the two overrides that consult it before the base class.
#define PLATFORM_SELECTORS(Class, Base)                                                        \
 public:                                                                                       \
  static const ::platform::SelectorTable<Class>& selectorTable();                              \
  bool respondsToSelector(std::string_view selector) const override {                         \
    return selectorTable().contains(selector) || Base::respondsToSelector(selector);           \
  }                                                                                            \
  bool performSelector(std::string_view selector, const ::platform::ObjectPtr& arg) override { \
    return selectorTable().perform(*this, selector, arg) || Base::performSelector(selector, arg); \
  }
