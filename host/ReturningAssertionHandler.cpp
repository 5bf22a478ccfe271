#include "host/ReturningAssertionHandler.h"

namespace kibhost {

void ReturningAssertionHandler::handleFailureInMethod(const std::string& method, const platform::Object* object,
                                                      const std::string& file, int line,
                                                      const std::string& description) {
  if (report_) report_(method, object, file, line, description);
}

}  // namespace kibhost
