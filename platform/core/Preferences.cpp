#include "platform/core/Preferences.h"

#include <fcntl.h>
#include <pwd.h>
#include <signal.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/core/InputFile.h"
#include "platform/core/JSONSerialization.h"
#include "platform/core/Log.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

// What tells a file apart from its earlier versions without reading it.
struct FileIdentity {
  dev_t device;
  ino_t inode;
  off_t size;
  timespec modified;
  timespec changed;

  // Nullopt also while the file's times are too recent to tell two writes
  // apart: the kernel stamps files with a coarse clock, so a file rewritten
  // in place within one tick and at the same size would look unchanged.
  static std::optional<FileIdentity> of(const fs::path& file) {
    struct stat info {};
    if (::stat(file.c_str(), &info) != 0) return std::nullopt;
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    auto nanoseconds = [](const timespec& t) { return static_cast<long double>(t.tv_sec) * 1e9L + t.tv_nsec; };
    constexpr long double kSettled = 50e6L;  // 50 ms
    if (nanoseconds(now) - nanoseconds(info.st_mtim) < kSettled) return std::nullopt;
    return FileIdentity{info.st_dev, info.st_ino, info.st_size, info.st_mtim, info.st_ctim};
  }
  bool operator==(const FileIdentity& other) const {
    auto same = [](const timespec& a, const timespec& b) { return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec; };
    return device == other.device && inode == other.inode && size == other.size && same(modified, other.modified) &&
           same(changed, other.changed);
  }
};

// What this process knows of one domain.
struct DomainState {
  std::optional<FileIdentity> diskIdentity;           // the file as it was when last parsed
  bool temporariesChecked = false;                    // stale temporary files were looked for
  std::string diskText;                               // the bytes last parsed
  json diskValues = json::object();                   // and what they hold
  std::map<std::string, std::optional<json>> pending;  // unsynchronized changes; nullopt removes
  bool writeBlocked = false;                          // the file on disk must not be replaced
  std::string lastReport;                             // so that a lasting problem is reported once
};

struct Store {
  std::mutex mutex;
  fs::path directory;
  std::map<std::string, DomainState> domains;
  Preferences::WriteObserver observer;
  std::vector<std::string> reports;  // written to the log once the lock is released
  std::uint64_t diskReads = 0;
};

Store& store() {
  static Store* instance = new Store;  // never destroyed: used until the very end of the program
  return *instance;
}

// Holds the store's lock; the log lines queued meanwhile go out after it is
// released, so that a log sink may use the preferences itself.
class LockedStore {
 public:
  LockedStore() : lock_(store().mutex) {}
  ~LockedStore() {
    std::vector<std::string> lines = std::move(store().reports);
    store().reports.clear();
    lock_.unlock();
    for (const auto& line : lines) Log::write(Log::Channel::System, line);
  }
  Store* operator->() const { return &store(); }

 private:
  std::unique_lock<std::mutex> lock_;
};

// Only called with the store locked.
void report(const std::string& line) { store().reports.push_back(line); }

void reportOnce(DomainState& state, const std::string& line) {
  if (state.lastReport == line) return;
  state.lastReport = line;
  report(line);
}

std::string errorText(int error) { return std::strerror(error); }

bool isValidDomain(const std::string& domain) {
  return !domain.empty() && domain != "." && domain != ".." && domain.find('/') == std::string::npos &&
         domain.find('\0') == std::string::npos;
}

bool checkDomain(const std::string& domain) {
  if (isValidDomain(domain)) return true;
  Log::write(Log::Channel::System, "Invalid preferences domain \"" + domain + "\": it must be a file name");
  return false;
}

fs::path homeDirectory() {
  if (const char* home = std::getenv("HOME"); home && *home) return home;
  if (const passwd* entry = getpwuid(getuid()); entry && entry->pw_dir) return entry->pw_dir;
  return fs::temp_directory_path();
}

bool writeAll(int fd, const std::string& text) {
  std::size_t written = 0;
  while (written < text.size()) {
    ssize_t count = ::write(fd, text.data() + written, text.size() - written);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    written += static_cast<std::size_t>(count);
  }
  return true;
}

void syncDirectory(const fs::path& directory) {
  int fd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ::fsync(fd);
  ::close(fd);
}

// Replaces the file with the text so that a reader sees either the old file or the new one.
bool writeAtomically(const fs::path& file, const std::string& text, std::string* error) {
  std::error_code ignored;
  fs::create_directories(file.parent_path(), ignored);
  fs::path temporary = file;
  temporary += ".tmp-" + std::to_string(::getpid());
  int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (fd < 0) {
    *error = "cannot create " + temporary.string() + ": " + errorText(errno);
    return false;
  }
  bool written = writeAll(fd, text) && ::fsync(fd) == 0;
  int writeError = errno;
  if (::close(fd) != 0 && written) {
    written = false;
    writeError = errno;
  }
  if (!written) {
    *error = "cannot write " + temporary.string() + ": " + errorText(writeError);
  } else if (::rename(temporary.c_str(), file.c_str()) != 0) {
    *error = "cannot rename " + temporary.string() + " to " + file.string() + ": " + errorText(errno);
    written = false;
  }
  if (!written) {
    ::unlink(temporary.c_str());
    return false;
  }
  syncDirectory(file.parent_path());
  return true;
}

// Moves a damaged file to the first free "<file>.corrupt[-N]" name; never replaces an earlier copy.
std::optional<fs::path> keepAside(const fs::path& file, int* error) {
  for (int n = 0; n < 1000; ++n) {
    fs::path aside = file;
    aside += n == 0 ? std::string(".corrupt") : ".corrupt-" + std::to_string(n);
    if (::link(file.c_str(), aside.c_str()) == 0) {
      ::unlink(file.c_str());
      return aside;
    }
    if (errno == EEXIST) continue;
    // Some file systems have no hard links: fall back to a rename onto a free name.
    std::error_code ec;
    if (!fs::exists(aside, ec) && ::rename(file.c_str(), aside.c_str()) == 0) return aside;
    *error = errno;
    return std::nullopt;
  }
  *error = EEXIST;
  return std::nullopt;
}

// The JSON object the text holds, or nullopt with the reason it does not hold one.
std::optional<json> parseObject(const std::string& text, std::string* reason) {
  auto parsed = JSONSerialization::parse(text, reason);
  if (parsed && !parsed->is_object()) {
    *reason = std::string("it holds a JSON ") + parsed->type_name() + ", not an object";
    return std::nullopt;
  }
  return parsed;
}

void setDiskState(DomainState& state, std::string text, json values) {
  state.diskIdentity.reset();
  state.diskText = std::move(text);
  state.diskValues = std::move(values);
  state.writeBlocked = false;
  state.lastReport.clear();
}

void setAsideCorruptFile(DomainState& state, const fs::path& file, const std::string& text, const std::string& reason) {
  int error = 0;
  if (auto aside = keepAside(file, &error)) {
    setDiskState(state, "", json::object());
    report("Preferences file " + file.string() + " is corrupt (" + reason + "); moved it to " + aside->string() +
           " and read it as empty");
    return;
  }
  state.diskText = text;
  state.diskValues = json::object();
  state.writeBlocked = true;
  reportOnce(state, "Preferences file " + file.string() + " is corrupt (" + reason + ") and cannot be moved aside (" +
                        errorText(error) + "); reading it as empty and leaving it untouched");
}

// Removes the temporary files that writers which no longer run left behind
// (a write killed between creating its temporary file and the rename).
void removeStaleTemporaries(const fs::path& file) {
  const std::string prefix = file.filename().string() + ".tmp-";
  std::error_code error;
  for (fs::directory_iterator entry(file.parent_path(), error), end; !error && entry != end; entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    if (name.rfind(prefix, 0) != 0) continue;
    const std::string digits = name.substr(prefix.size());
    if (digits.empty() || digits.size() > 9 || digits.find_first_not_of("0123456789") != std::string::npos) continue;
    const pid_t writer = static_cast<pid_t>(std::stol(digits));
    if (writer != ::getpid() && ::kill(writer, 0) != 0 && errno == ESRCH) ::unlink(entry->path().c_str());
  }
}

// Brings the domain's view of the disk up to date; a file that has not changed
// since it was last parsed is not read again.
void refresh(DomainState& state, const fs::path& file) {
  if (!state.temporariesChecked) {
    state.temporariesChecked = true;
    removeStaleTemporaries(file);
  }
  auto identity = FileIdentity::of(file);
  if (identity && state.diskIdentity && *identity == *state.diskIdentity) return;
  InputFile::Contents contents = InputFile::read(file);
  ++store().diskReads;
  switch (contents.status) {
    case InputFile::Status::Missing:
      setDiskState(state, "", json::object());
      return;
    case InputFile::Status::Folder:
    case InputFile::Status::Unreadable:
      state.diskIdentity.reset();
      state.diskText.clear();
      state.diskValues = json::object();
      state.writeBlocked = true;
      reportOnce(state, "Cannot read preferences file " + file.string() + ": " + contents.problem() +
                            "; reading it as empty and leaving it untouched");
      return;
    case InputFile::Status::TooLarge:
      setAsideCorruptFile(state, file, "", "it " + contents.problem());
      return;
    case InputFile::Status::Read:
      break;
  }
  if (contents.text == state.diskText && !state.diskText.empty()) {
    state.diskIdentity = identity;
    return;
  }
  std::string reason;
  if (auto values = parseObject(contents.text, &reason)) {
    setDiskState(state, contents.text, std::move(*values));
    state.diskIdentity = identity;
  } else {
    setAsideCorruptFile(state, file, contents.text, reason);
  }
}

json mergedValues(const DomainState& state) {
  json values = state.diskValues;
  for (const auto& [key, value] : state.pending) {
    if (value)
      values[key] = *value;
    else
      values.erase(key);
  }
  return values;
}

enum class SyncResult { Failed, NothingToWrite, Written };

// Writes the domain's pending changes merged into the file as it is now.
SyncResult synchronizeLocked(DomainState& state, const fs::path& file) {
  refresh(state, file);
  if (state.pending.empty()) return SyncResult::NothingToWrite;
  if (state.writeBlocked) {
    report("Not writing preferences file " + file.string() + ": it holds data that could not be read");
    return SyncResult::Failed;
  }
  json merged = mergedValues(state);
  if (merged == state.diskValues) {
    state.pending.clear();
    return SyncResult::NothingToWrite;
  }
  std::string text = merged.dump(2) + "\n";
  std::string error;
  if (!writeAtomically(file, text, &error)) {
    report("Cannot save preferences: " + error);
    return SyncResult::Failed;
  }
  setDiskState(state, std::move(text), std::move(merged));
  state.diskIdentity = FileIdentity::of(file);
  state.pending.clear();
  return SyncResult::Written;
}

}  // namespace

fs::path Preferences::directory() {
  {
    LockedStore s;
    if (!s->directory.empty()) return s->directory;
  }
  if (const char* dir = std::getenv("KIBBAR_CONFIG_DIR"); dir && *dir) return dir;
  if (const char* config = std::getenv("XDG_CONFIG_HOME"); config && *config == '/') return fs::path(config) / "kibbar";
  return homeDirectory() / ".config" / "kibbar";
}

void Preferences::setDirectory(const fs::path& directory) {
  LockedStore s;
  s->directory = directory;
  s->domains.clear();
}

fs::path Preferences::fileForDomain(const std::string& domain) { return directory() / (domain + ".json"); }

ObjectPtr Preferences::copyAppValue(const std::string& key, const std::string& domain) {
  if (!checkDomain(domain)) return nullptr;
  fs::path file = fileForDomain(domain);
  LockedStore s;
  DomainState& state = s->domains[domain];
  if (auto found = state.pending.find(key); found != state.pending.end())
    return found->second ? JSONSerialization::objectWithJSON(*found->second) : nullptr;
  refresh(state, file);
  auto found = state.diskValues.find(key);
  return found == state.diskValues.end() ? nullptr : JSONSerialization::objectWithJSON(*found);
}

void Preferences::setAppValue(const std::string& key, const ObjectPtr& value, const std::string& domain) {
  if (!checkDomain(domain)) return;
  std::string error;
  auto converted = JSONSerialization::JSONWithObject(value, &error);
  if (!converted) {
    Log::write(Log::Channel::System, "Cannot set preference \"" + key + "\" in " + domain + ": " + error);
    return;
  }
  LockedStore s;
  s->domains[domain].pending[key] = value ? std::optional<json>(std::move(*converted)) : std::nullopt;
}

bool Preferences::appSynchronize(const std::string& domain) {
  if (!checkDomain(domain)) return false;
  fs::path file = fileForDomain(domain);
  WriteObserver observer;
  {
    LockedStore s;
    SyncResult result = synchronizeLocked(s->domains[domain], file);
    if (result == SyncResult::Failed) return false;
    if (result == SyncResult::Written) observer = s->observer;
  }
  if (observer) observer(domain, file);
  return true;
}

std::uint64_t Preferences::diskReadCount() {
  LockedStore s;
  return s->diskReads;
}

void Preferences::setWriteObserver(WriteObserver observer) {
  LockedStore s;
  s->observer = std::move(observer);
}

}  // namespace platform
