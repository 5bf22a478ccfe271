#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/core/Object.h"
#include "platform/ui/Geometry.h"

namespace platform {

class Image;
using ImagePtr = std::shared_ptr<Image>;

// An image that refers to a file and reads it only when it is needed (its size
// asked for): a missing or malformed file is noticed then, and the image is
// then empty (size zero, not valid) with the reason in loadError(). Or a blank,
// fully transparent image of a given size.
//
// The named-image registry maps names to shared images. imageNamed() answers a
// registered image, else looks for a file of that name in the system image
// directories and registers what it finds. Main thread only.
class Image final : public Object {
 public:
  // Never nil: the file is not touched until it is needed.
  static ImagePtr initByReferencingFile(std::string path);
  // A blank, fully transparent image.
  static ImagePtr initWithSize(Size size);

  static ImagePtr imageNamed(const std::string& name);
  // Where imageNamed() looks for names that are not registered (for a name
  // without extension: name.pdf, .png, .tif, .tiff, .gif, .jpg, .jpeg, in that
  // order per directory).
  static void setSystemImageDirectories(std::vector<std::string> directories);
  static const std::vector<std::string>& systemImageDirectories();
  // Empties the registry and forgets the system image directories (tests).
  static void resetNamedImages();

  Image(std::string path, std::optional<Size> size);

  // Registers the image under the name (an empty name unregisters it). Answers
  // NO when another image already holds the name or the image is not shared.
  bool setName(const std::string& name);
  // The registered name, "" when there is none.
  const std::string& name() const { return name_; }
  // The referenced file, "" for a blank image.
  const std::string& filePath() const { return path_; }
  // The registered name, else the file's base name ("MenuExtra.pdf"), else "".
  std::string displayName() const;

  // Template images are tinted by the host for the menu bar.
  bool isTemplate() const { return template_; }
  void setTemplate(bool isTemplate) { template_ = isTemplate; }

  // Reads the file's header on first use; zero when it cannot be read.
  Size size() const;
  // Whether the image can be drawn (reads the file like size()).
  bool isValid() const;
  // Whether the file has been read yet (always true for a blank image).
  bool isLoaded() const { return size_.has_value(); }
  // Why the file could not be read, "" when it could (or has not been read).
  const std::string& loadError() const { return error_; }

  std::string className() const override { return "Image"; }
  // The display name, or "blank {w, h}" for an unnamed blank image.
  std::string description() const override;

 private:
  void load() const;

  std::string path_;
  std::string name_;
  bool template_ = false;
  mutable std::optional<Size> size_;
  mutable bool valid_ = false;
  mutable std::string error_;
};

}  // namespace platform
