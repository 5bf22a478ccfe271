#include "host/PluginBundle.h"

#include <dlfcn.h>

#include <vector>

#include "host/SharedLibraryFile.h"
#include "platform/core/Log.h"

namespace kibhost {
namespace {

// Opens the bundle folder, keeping what the platform logs about a failure.
platform::BundlePtr openBundle(const std::filesystem::path& folder, std::string& error) {
  std::vector<std::string> complaints;
  auto previous = platform::Log::setSink([&](platform::Log::Channel channel, const std::string& line) {
    if (channel == platform::Log::Channel::System) complaints.push_back(line);
  });
  auto bundle = platform::Bundle::bundleWithPath(folder.string());
  platform::Log::setSink(previous);
  if (!bundle) error = complaints.empty() ? "not a bundle" : complaints.front();
  return bundle;
}

}  // namespace

std::shared_ptr<PluginBundle> PluginBundle::load(const std::filesystem::path& folder, std::string& error) {
  const std::string where = "bundle " + folder.string() + ": ";
  std::error_code ignored;
  if (!std::filesystem::is_directory(folder, ignored)) {
    error = where + "no such folder";
    return nullptr;
  }
  auto bundle = openBundle(folder, error);
  if (!bundle) {
    if (error.find(folder.string()) == std::string::npos) error = where + error;
    return nullptr;
  }
  const std::string className = bundle->principalClassName();
  if (className.empty()) {
    error = where + "Info.json names no principalClass";
    return nullptr;
  }
  const std::string library = bundle->executablePath();
  if (library.empty()) {
    error = where + "Info.json names no executable, or the executable is missing";
    return nullptr;
  }
  if (auto problem = SharedLibraryFile::problem(library); !problem.empty()) {
    error = where + "cannot load " + library + ": " + problem;
    return nullptr;
  }
  void* handle = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle) {
    const char* reason = dlerror();
    error = where + "cannot load " + library + ": " + (reason ? reason : "unknown error");
    return nullptr;
  }
  auto lookup = reinterpret_cast<platform::MenuExtraClassLookup>(dlsym(handle, platform::kMenuExtraClassLookupSymbol));
  if (!lookup) {
    error = where + library + " does not export " + platform::kMenuExtraClassLookupSymbol;
    return nullptr;
  }
  const platform::MenuExtraClass* extraClass = lookup(className.c_str());
  if (!extraClass || !extraClass->initWithBundle) {
    error = where + library + " defines no class " + className;
    return nullptr;
  }
  if (extraClass->pluginVersion != platform::kMenuExtraPluginVersion) {
    error = where + className + " was built for plug-in version " + std::to_string(extraClass->pluginVersion) +
            ", this program loads version " + std::to_string(platform::kMenuExtraPluginVersion);
    return nullptr;
  }
  return std::make_shared<PluginBundle>(std::move(bundle), extraClass);
}

std::shared_ptr<platform::MenuExtra> PluginBundle::instantiate() const { return class_->initWithBundle(bundle_); }

}  // namespace kibhost
