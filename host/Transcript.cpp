#include "host/Transcript.h"

#include <cmath>

#include "platform/core/Clock.h"

namespace kibhost {

Transcript::Transcript(std::ostream& out) : out_(out), start_(platform::Clock::current().now()) {}

double Transcript::elapsed() const { return platform::Clock::current().now() - start_; }

double Transcript::rounded(double seconds) {
  double value = std::round(seconds * 1e4) / 1e4;
  return value == 0 ? 0.0 : value;  // no "-0.0"
}

void Transcript::write(const std::string& type, const Fields& fields) {
  Fields line = Fields::object();
  line["t"] = rounded(elapsed());
  line["type"] = type;
  for (const auto& [key, value] : fields.items()) line[key] = value;
  out_ << line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
  out_.flush();
  if (observer_) observer_(line);
}

}  // namespace kibhost
