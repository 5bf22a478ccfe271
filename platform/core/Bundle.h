#pragma once

#include <map>
#include <memory>
#include <string>

#include "platform/core/Object.h"

namespace platform {

// A bundle: a folder holding its metadata ("Info.json": identifier,
// principalClass, executable), its resources ("Resources/") and, for a
// plug-in, its shared library. Strings tables are "Resources/<lang>.lproj/
// <table>.strings" in the platform's strings-file format.
class Bundle final : public Object {
 public:
  // Nil when the folder or its metadata is missing or unreadable.
  static std::shared_ptr<Bundle> bundleWithPath(const std::string& path);
  // The running program's bundle (a bundle without resources until one is set).
  static Bundle& mainBundle();
  static void setMainBundle(std::shared_ptr<Bundle> bundle);

  Bundle(std::string path, std::string identifier, std::string principalClass, std::string executable);

  const std::string& bundlePath() const { return path_; }
  std::string resourcePath() const;
  const std::string& bundleIdentifier() const { return identifier_; }
  const std::string& principalClassName() const { return principalClass_; }
  // Full path of the shared library, or "" when there is none.
  std::string executablePath() const;

  // The path of an image resource by name, whatever its image extension
  // (pdf, png, tif, tiff, jpg, jpeg, gif, svg, icns); a name that already has
  // an extension is tried as it stands first. "" when there is none.
  std::string pathForImageResource(const std::string& name) const;
  // The path of "<name>.<type>" (or "<name>" when type is empty) in the resources, or "".
  std::string pathForResource(const std::string& name, const std::string& type) const;

  // Looks the key up in the table ("Localizable" when empty) for the preferred
  // language, then in English. A missing entry answers the value when it is
  // non-empty, else the key.
  std::string localizedStringForKey(const std::string& key, const std::string& value,
                                    const std::string& table) const;

  // The language from LC_ALL, LC_MESSAGES, LANGUAGE or LANG ("de_DE.UTF-8" → "de"), "en" when none.
  static std::string preferredLanguage();

  std::string className() const override { return "Bundle"; }
  std::string description() const override;

 private:
  const std::map<std::string, std::string>* table(const std::string& language, const std::string& name) const;

  std::string path_;
  std::string identifier_;
  std::string principalClass_;
  std::string executable_;
  mutable std::map<std::string, std::unique_ptr<std::map<std::string, std::string>>> tables_;
};

using BundlePtr = std::shared_ptr<Bundle>;

}  // namespace platform
