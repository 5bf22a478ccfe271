#include "platform/core/AssertionHandler.h"

#include "platform/core/Format.h"

namespace platform {
namespace {

std::shared_ptr<AssertionHandler>& installed() {
  static std::shared_ptr<AssertionHandler> handler = std::make_shared<AssertionHandler>();
  return handler;
}

}  // namespace

void AssertionHandler::handleFailureInMethod(const std::string& method, const Object*, const std::string& file,
                                             int line, const std::string& description) {
  throw AssertionFailure(format("*** Assertion failure in %s, %s:%d: %s", method, file, line, description));
}

AssertionHandler& AssertionHandler::current() { return *installed(); }

std::shared_ptr<AssertionHandler> AssertionHandler::setCurrent(std::shared_ptr<AssertionHandler> handler) {
  auto previous = installed();
  installed() = handler ? std::move(handler) : std::make_shared<AssertionHandler>();
  return previous;
}

bool assertParameter(bool condition, const char* conditionText, const std::string& method, const Object* object,
                     const std::string& file, int line) {
  if (!condition)
    AssertionHandler::current().handleFailureInMethod(method, object, file, line,
                                                      format("Invalid parameter not satisfying: %s", conditionText));
  return condition;
}

}  // namespace platform
