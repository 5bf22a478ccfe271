#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "platform/core/Object.h"

namespace platform {

// Raised by the default assertion handler.
class AssertionFailure : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

// Where programming errors are reported. The default handler raises
// AssertionFailure; a handler that returns lets the failing operation go on.
class AssertionHandler {
 public:
  virtual ~AssertionHandler() = default;

  virtual void handleFailureInMethod(const std::string& method, const Object* object, const std::string& file,
                                     int line, const std::string& description);

  static AssertionHandler& current();
  // Installs a handler (nil restores the default); answers the previous one.
  static std::shared_ptr<AssertionHandler> setCurrent(std::shared_ptr<AssertionHandler> handler);
};

// Reports "Invalid parameter not satisfying: <condition>" when the condition fails.
// Answers the condition.
bool assertParameter(bool condition, const char* conditionText, const std::string& method, const Object* object,
                     const std::string& file, int line);

}  // namespace platform
