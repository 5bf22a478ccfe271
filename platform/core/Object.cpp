#include "platform/core/Object.h"

#include <cxxabi.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <typeinfo>

namespace platform {

std::string Object::className() const {
  const char* mangled = typeid(*this).name();
  int status = 0;
  char* demangled = abi::__cxa_demangle(mangled, nullptr, nullptr, &status);
  std::string name = status == 0 && demangled ? demangled : mangled;
  std::free(demangled);
  auto colon = name.rfind("::");
  return colon == std::string::npos ? name : name.substr(colon + 2);
}

std::string Object::description() const {
  char address[32];
  std::snprintf(address, sizeof address, "%p", static_cast<const void*>(this));
  return "<" + className() + ": " + address + ">";
}

std::size_t Object::hash() const { return std::hash<const void*>()(this); }

bool Object::respondsToSelector(std::string_view) const { return false; }

bool Object::performSelector(std::string_view, const ObjectPtr&) { return false; }

bool isEqual(const Object* a, const Object* b) {
  if (a == b) return true;
  if (!a || !b) return false;
  return a->isEqual(b);
}

std::string describe(const Object* object) { return object ? object->description() : "(null)"; }

}  // namespace platform
