#pragma once

#include <functional>
#include <string>

#include "platform/core/AssertionHandler.h"

namespace kibhost {

// The program's assertion handler: it reports each failure to a callback and
// returns, so the failing operation goes on (a status bar keeps running).
class ReturningAssertionHandler final : public platform::AssertionHandler {
 public:
  using Report = std::function<void(const std::string& method, const platform::Object* object, const std::string& file,
                                    int line, const std::string& description)>;

  explicit ReturningAssertionHandler(Report report) : report_(std::move(report)) {}

  void handleFailureInMethod(const std::string& method, const platform::Object* object, const std::string& file,
                             int line, const std::string& description) override;

 private:
  Report report_;
};

}  // namespace kibhost
