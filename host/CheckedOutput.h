#pragma once

#include <ostream>
#include <streambuf>
#include <string>

namespace kibhost {

// An output stream that passes everything to another stream's buffer and keeps
// the first error the system reported (a full disk, a closed pipe), so that
// the program can say so and end with a failure instead of losing output
// silently.
class CheckedOutput : public std::ostream {
 public:
  explicit CheckedOutput(std::ostream& destination);

  bool failed() const { return buffer_.failed(); }
  // "No space left on device"
  std::string problem() const;

 private:
  class Buffer : public std::streambuf {
   public:
    explicit Buffer(std::streambuf* inner) : inner_(inner) {}
    bool failed() const { return failed_; }
    int error() const { return error_; }

   protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* text, std::streamsize count) override;
    int sync() override;

   private:
    int_type fail();

    std::streambuf* inner_;
    bool failed_ = false;
    int error_ = 0;
  };

  Buffer buffer_;
};

}  // namespace kibhost
