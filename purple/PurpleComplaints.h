#pragma once

#include <set>
#include <string>

namespace kibpurple {

// Warns about what a libpurple client got wrong, each distinct problem once,
// so a client that keeps answering nonsense does not flood the log.
class PurpleComplaints {
 public:
  // Answers whether the line was written (false: said before).
  bool complain(const std::string& problem);
  std::size_t count() const { return said_.size(); }
  void forget() { said_.clear(); }

 private:
  std::set<std::string> said_;
};

}  // namespace kibpurple
