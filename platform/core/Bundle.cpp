#include "platform/core/Bundle.h"

#include <cstdlib>
#include <filesystem>
#include <vector>

#include "platform/core/InputFile.h"
#include "platform/core/JSONSerialization.h"
#include "platform/core/Log.h"
#include "platform/core/StringsTable.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr const char* kImageExtensions[] = {"pdf", "png", "tif", "tiff", "jpg", "jpeg", "gif", "svg", "icns"};

void report(const std::string& line) { Log::write(Log::Channel::System, line); }

bool isFile(const fs::path& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored);
}

// The folder without a trailing separator ("a/b/" → "a/b").
fs::path folderPath(const std::string& path) {
  fs::path folder = fs::path(path).lexically_normal();
  return folder.has_filename() || folder == folder.root_path() ? folder : folder.parent_path();
}

// The metadata's string field, "" when absent; nullopt when it is there but not a string.
std::optional<std::string> stringField(const nlohmann::json& info, const char* name) {
  auto found = info.find(name);
  if (found == info.end()) return std::string();
  if (!found->is_string()) return std::nullopt;
  return found->get<std::string>();
}

struct MainBundleSlot {
  std::mutex mutex;
  BundlePtr bundle;
};

MainBundleSlot& mainBundleSlot() {
  static auto* slot = new MainBundleSlot;  // outlives static teardown, like the other shared instances
  return *slot;
}

BundlePtr bundleWithNoFolder() { return std::make_shared<Bundle>("", "", "", ""); }

}  // namespace

Bundle::Bundle(std::string path, std::string identifier, std::string principalClass, std::string executable)
    : path_(std::move(path)),
      identifier_(std::move(identifier)),
      principalClass_(std::move(principalClass)),
      executable_(std::move(executable)) {}

BundlePtr Bundle::bundleWithPath(const std::string& path) {
  fs::path folder = folderPath(path);
  fs::path infoPath = folder / "Info.json";
  auto file = InputFile::read(infoPath);
  if (!file.ok()) {
    report("No bundle at " + folder.string() + ": " + infoPath.string() + " " + file.problem());
    return nullptr;
  }
  std::string error = "it is not a JSON object";
  auto info = JSONSerialization::parse(file.text, &error);
  if (!info || !info->is_object()) {
    report("Bundle metadata " + infoPath.string() + " is unreadable: " + error);
    return nullptr;
  }
  auto identifier = stringField(*info, "identifier");
  auto principalClass = stringField(*info, "principalClass");
  auto executable = stringField(*info, "executable");
  if (!identifier || !principalClass || !executable) {
    report("Bundle metadata " + infoPath.string() +
           " is unreadable: identifier, principalClass and executable must be strings");
    return nullptr;
  }
  return std::make_shared<Bundle>(folder.string(), *identifier, *principalClass, *executable);
}

Bundle& Bundle::mainBundle() {
  auto& slot = mainBundleSlot();
  std::lock_guard lock(slot.mutex);
  if (!slot.bundle) slot.bundle = bundleWithNoFolder();
  return *slot.bundle;
}

void Bundle::setMainBundle(BundlePtr bundle) {
  auto& slot = mainBundleSlot();
  std::lock_guard lock(slot.mutex);
  slot.bundle = bundle ? std::move(bundle) : bundleWithNoFolder();
}

std::string Bundle::resourcePath() const { return path_.empty() ? std::string() : path_ + "/Resources"; }

std::string Bundle::executablePath() const {
  if (path_.empty() || executable_.empty()) return "";
  fs::path executable = fs::path(path_) / executable_;
  return isFile(executable) ? executable.string() : "";
}

std::string Bundle::pathForImageResource(const std::string& name) const {
  if (path_.empty() || name.empty()) return "";
  fs::path base = fs::path(resourcePath()) / name;
  if (base.has_extension() && isFile(base)) return base.string();
  for (const char* extension : kImageExtensions) {
    fs::path candidate = base;
    candidate += std::string(".") + extension;
    if (isFile(candidate)) return candidate.string();
  }
  return "";
}

std::string Bundle::pathForResource(const std::string& name, const std::string& type) const {
  if (path_.empty() || name.empty()) return "";
  fs::path candidate = fs::path(resourcePath()) / name;
  if (!type.empty()) candidate += (type.front() == '.' ? "" : ".") + type;
  return isFile(candidate) ? candidate.string() : "";
}

std::string Bundle::localizedStringForKey(const std::string& key, const std::string& value,
                                          const std::string& table) const {
  const std::string name = table.empty() ? "Localizable" : table;
  std::vector<std::string> languages{preferredLanguage()};
  if (languages.front() != "en") languages.push_back("en");
  for (const std::string& language : languages) {
    const Table* entries = this->table(language, name);
    if (!entries) continue;
    if (auto found = entries->find(key); found != entries->end()) return found->second;
  }
  return value.empty() ? key : value;
}

const Bundle::Table* Bundle::table(const std::string& language, const std::string& name) const {
  std::lock_guard lock(tablesMutex_);
  const std::string cacheKey = language + "/" + name;
  if (auto cached = tables_.find(cacheKey); cached != tables_.end()) return cached->second.get();
  std::unique_ptr<Table>& entry = tables_[cacheKey];
  if (path_.empty()) return nullptr;
  fs::path file = fs::path(resourcePath()) / (language + ".lproj") / (name + ".strings");
  if (!isFile(file)) return nullptr;
  std::string error;
  if (auto loaded = StringsTable::load(file.string(), &error))
    entry = std::make_unique<Table>(std::move(*loaded));
  else
    report("Ignoring malformed strings file " + error);
  return entry.get();
}

std::string Bundle::preferredLanguage() {
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANGUAGE", "LANG"}) {
    const char* value = std::getenv(variable);
    if (!value) continue;
    std::string locale(value);
    locale = locale.substr(0, locale.find(':'));
    if (locale.empty()) continue;
    if (locale == "C" || locale == "POSIX" || locale.rfind("C.", 0) == 0) return "en";
    std::string language = locale.substr(0, locale.find_first_of("_.@"));
    if (!language.empty()) return language;
  }
  return "en";
}

std::string Bundle::description() const {
  return "Bundle <" + path_ + "> (" + (identifier_.empty() ? std::string("no identifier") : identifier_) + ")";
}

}  // namespace platform
