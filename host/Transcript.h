#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

namespace kibhost {

// A transcript: one JSON object per line, each starting with the time "t"
// (seconds since the transcript began, on the current clock, to a tenth of a
// millisecond) and its "type", followed by the fields of that type.
class Transcript {
 public:
  using Fields = nlohmann::ordered_json;

  // Times are measured from the clock's now.
  explicit Transcript(std::ostream& out);

  void write(const std::string& type, Fields fields = Fields::object());
  // The line write(type, {{key, [element(0), …, element(count - 1)]}}) writes, without holding the
  // whole array unless a line observer takes it: a menu of many people has tens of thousands of items.
  // key is neither "t" nor "type".
  void writeWithArray(const std::string& type, const std::string& key, std::size_t count,
                      const std::function<Fields(std::size_t)>& element);
  double elapsed() const;
  // Also hands every line to the observer (the terminal's list of what happened).
  void setLineObserver(std::function<void(const Fields& line)> observer) { observer_ = std::move(observer); }
  // The time since the transcript began, rounded as the lines print it.
  static double rounded(double seconds);

 private:
  Fields lineStart(const std::string& type) const;

  std::ostream& out_;
  double start_;
  std::function<void(const Fields& line)> observer_;
};

}  // namespace kibhost
