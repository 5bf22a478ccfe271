#include "purple/PurpleComplaints.h"

#include "platform/core/Log.h"

namespace kibpurple {

// Problems beyond this many are not remembered (nor written) any more.
constexpr std::size_t kMaximumRemembered = 1000;

bool PurpleComplaints::complain(const std::string& problem) {
  if (said_.size() >= kMaximumRemembered || !said_.insert(problem).second) return false;
  platform::IMWarn("libpurple client: %s (skipped)", problem);
  return true;
}

}  // namespace kibpurple
