#include "host/Transcript.h"

#include <cmath>

#include "platform/core/Clock.h"

namespace kibhost {
namespace {

std::string dumped(const Transcript::Fields& json) {
  return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace

Transcript::Transcript(std::ostream& out) : out_(out), start_(platform::Clock::current().now()) {}

double Transcript::elapsed() const { return platform::Clock::current().now() - start_; }

double Transcript::rounded(double seconds) {
  double value = std::round(seconds * 1e4) / 1e4;
  return value == 0 ? 0.0 : value;  // no "-0.0"
}

Transcript::Fields Transcript::lineStart(const std::string& type) const {
  Fields line = Fields::object();
  line["t"] = rounded(elapsed());
  line["type"] = type;
  return line;
}

void Transcript::write(const std::string& type, Fields fields) {
  Fields line = lineStart(type);
  for (auto field = fields.begin(); field != fields.end(); ++field) line[field.key()] = std::move(field.value());
  out_ << dumped(line) << '\n';
  out_.flush();
  if (observer_) observer_(line);
}

void Transcript::writeWithArray(const std::string& type, const std::string& key, std::size_t count,
                                const std::function<Fields(std::size_t)>& element) {
  if (observer_) {
    auto array = Fields::array();
    for (std::size_t index = 0; index < count; ++index) array.push_back(element(index));
    Fields fields = Fields::object();
    fields[key] = std::move(array);
    write(type, std::move(fields));
    return;
  }
  // The compact dump has no white space, so the line is its start with the array left open,
  // the elements one by one, and the closing brackets.
  Fields line = lineStart(type);
  line[key] = Fields::array();
  auto start = dumped(line);
  start.resize(start.size() - 2);  // "]}"
  out_ << start;
  for (std::size_t index = 0; index < count; ++index) {
    if (index > 0) out_ << ',';
    out_ << dumped(element(index));
  }
  out_ << "]}\n";
  out_.flush();
}

}  // namespace kibhost
