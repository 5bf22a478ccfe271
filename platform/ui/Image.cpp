#include "platform/ui/Image.h"

#include <filesystem>
#include <map>
#include <system_error>

#include "platform/ui/ImageHeaderReader.h"

namespace platform {
namespace {

struct Registry {
  std::map<std::string, ImagePtr> images;
  std::vector<std::string> directories;
};

Registry& registry() {
  static Registry shared;
  return shared;
}

const char* const kImageExtensions[] = {".pdf", ".png", ".tif", ".tiff", ".gif", ".jpg", ".jpeg"};

std::string findSystemImage(const std::string& name) {
  if (name.empty() || name.find('/') != std::string::npos) return "";
  std::error_code ignored;
  for (const auto& directory : registry().directories) {
    std::filesystem::path base = std::filesystem::path(directory) / name;
    if (base.has_extension() && std::filesystem::is_regular_file(base, ignored)) return base.string();
    for (const char* extension : kImageExtensions) {
      std::filesystem::path candidate = base;
      candidate += extension;
      if (std::filesystem::is_regular_file(candidate, ignored)) return candidate.string();
    }
  }
  return "";
}

}  // namespace

ImagePtr Image::initByReferencingFile(std::string path) { return std::make_shared<Image>(std::move(path), std::nullopt); }

ImagePtr Image::initWithSize(Size size) { return std::make_shared<Image>("", size); }

ImagePtr Image::imageNamed(const std::string& name) {
  auto& images = registry().images;
  if (auto found = images.find(name); found != images.end()) return found->second;
  std::string path = findSystemImage(name);
  if (path.empty()) return nullptr;
  auto image = initByReferencingFile(path);
  image->setName(name);
  return image;
}

void Image::setSystemImageDirectories(std::vector<std::string> directories) {
  registry().directories = std::move(directories);
}

const std::vector<std::string>& Image::systemImageDirectories() { return registry().directories; }

void Image::resetNamedImages() {
  for (auto& [name, image] : registry().images) image->name_.clear();
  registry().images.clear();
  registry().directories.clear();
}

Image::Image(std::string path, std::optional<Size> size) : path_(std::move(path)), size_(size), valid_(size.has_value()) {}

bool Image::setName(const std::string& name) {
  auto self = std::static_pointer_cast<Image>(weak_from_this().lock());
  if (!self) return false;
  auto& images = registry().images;
  if (!name.empty()) {
    auto found = images.find(name);
    if (found != images.end() && found->second != self) return false;
  }
  if (!name_.empty()) images.erase(name_);
  name_ = name;
  if (!name.empty()) images[name] = self;
  return true;
}

std::string Image::displayName() const {
  if (!name_.empty()) return name_;
  return path_.empty() ? "" : std::filesystem::path(path_).filename().string();
}

Size Image::size() const {
  load();
  return *size_;
}

bool Image::isValid() const {
  load();
  return valid_;
}

std::string Image::description() const {
  std::string shown = displayName();
  return shown.empty() ? "blank " + toString(size()) : shown;
}

void Image::load() const {
  if (size_) return;
  auto result = ImageHeaderReader::readSize(path_);
  valid_ = result.size.has_value();
  size_ = result.size.value_or(Size{});
  error_ = result.error;
}

}  // namespace platform
