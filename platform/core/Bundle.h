#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "platform/core/Object.h"

namespace platform {

// A bundle: a folder holding its metadata ("Info.json": {"identifier": …,
// "principalClass": …, "executable": …}, each optional, each a string), its
// resources ("Resources/") and, for a plug-in, its shared library. Strings
// tables are "Resources/<lang>.lproj/<table>.strings" in the platform's
// strings-file format (StringsTable); a malformed one is reported once on the
// system log, with its path and line, and read as empty.
class Bundle final : public Object {
 public:
  // Nil, with the reason on the system log, when the folder or its metadata
  // is missing or unreadable, or the metadata is not a JSON object of strings.
  static std::shared_ptr<Bundle> bundleWithPath(const std::string& path);
  // The running program's bundle: a bundle with no folder (every lookup
  // answers its default) until one is set. The reference stays valid until
  // the next setMainBundle.
  static Bundle& mainBundle();
  // Installs the main bundle; nil restores the bundle with no folder.
  static void setMainBundle(std::shared_ptr<Bundle> bundle);

  Bundle(std::string path, std::string identifier, std::string principalClass, std::string executable);

  const std::string& bundlePath() const { return path_; }
  // "<bundle>/Resources", or "" for a bundle with no folder.
  std::string resourcePath() const;
  const std::string& bundleIdentifier() const { return identifier_; }
  const std::string& principalClassName() const { return principalClass_; }
  // Full path of the shared library (the metadata's executable, relative to
  // the bundle folder), or "" when there is none or the file is missing.
  std::string executablePath() const;

  // The path of an image resource by name, whatever its image extension
  // (pdf, png, tif, tiff, jpg, jpeg, gif, svg, icns); a name that already has
  // an extension is tried as it stands first. "" when there is none.
  std::string pathForImageResource(const std::string& name) const;
  // The path of "<name>.<type>" (or "<name>" when type is empty) in the resources, or "".
  std::string pathForResource(const std::string& name, const std::string& type) const;

  // Looks the key up in the table ("Localizable" when empty) for the preferred
  // language, then in English. A missing entry answers the value when it is
  // non-empty, else the key. Keys are compared exactly as written, so a key
  // ending in the six characters \U2026 is looked up literally.
  std::string localizedStringForKey(const std::string& key, const std::string& value,
                                    const std::string& table) const;

  // The language of the first of LC_ALL, LC_MESSAGES, LANGUAGE (its first
  // entry) and LANG that is set and not empty ("de_DE.UTF-8" → "de"); "en"
  // when none is, or for the "C" and "POSIX" locales.
  static std::string preferredLanguage();

  std::string className() const override { return "Bundle"; }
  std::string description() const override;

 private:
  using Table = std::map<std::string, std::string>;
  // The table of the language, loaded on first use; nil when it is missing or malformed.
  const Table* table(const std::string& language, const std::string& name) const;

  std::string path_;
  std::string identifier_;
  std::string principalClass_;
  std::string executable_;
  mutable std::mutex tablesMutex_;
  mutable std::map<std::string, std::unique_ptr<Table>> tables_;  // "<lang>/<table>" → entries
};

using BundlePtr = std::shared_ptr<Bundle>;

}  // namespace platform
