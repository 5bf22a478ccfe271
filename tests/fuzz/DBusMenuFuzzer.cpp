// Menus as the panel's dbusmenu export sees them: rows of any title, action,
// tag, state, key equivalent and alternate, separators in runs and at the
// ends, rebuilt again and again, and then looked up by ids a panel may send
// (unknown, negative, removed). The exported tree must stay whole.
#include <cstdlib>
#include <set>

#include "host/panel/DBusMenuLayout.h"
#include "platform/ui/Menu.h"
#include "platform/ui/MenuItem.h"
#include "tests/fuzz/FuzzInput.h"

namespace {

// Reads the input front to back; an exhausted input reads as zeros.
class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
  bool empty() const { return at_ >= size_; }
  std::uint8_t byte() { return at_ < size_ ? data_[at_++] : 0; }
  std::int32_t int32() {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8 | byte();
    return static_cast<std::int32_t>(value);
  }
  std::string text() {
    std::string out;
    for (std::size_t n = byte() % 24; n > 0 && !empty(); --n) out += static_cast<char>(byte());
    return out;
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t at_ = 0;
};

platform::MenuPtr menuFrom(Bytes& in) {
  auto menu = platform::Menu::initWithTitle("");
  for (std::size_t rows = in.byte() % 40; rows > 0 && !in.empty(); --rows) {
    const std::uint8_t kind = in.byte();
    if (kind % 5 == 0) {
      menu->addItem(platform::MenuItem::separatorItem());
      continue;
    }
    static const char* const kActions[] = {"", ":", "selectMenuItem:", "openChat:"};
    auto item = platform::MenuItem::initWithTitleActionKeyEquivalent(in.text(), kActions[kind % 4], in.text());
    item->setTag(static_cast<std::int8_t>(in.byte()));
    item->setState(static_cast<int>(in.byte() % 4) - 1);
    item->setAlternate(kind & 0x80);
    item->setKeyEquivalentModifierMask(static_cast<std::uint64_t>(in.byte()) << 16);
    menu->addItem(item);
  }
  return menu;
}

// Every child names an entry whose parent is the one that lists it, and every
// entry is reached from the root exactly once.
void checkTree(const kibhost::DBusMenuLayout& layout) {
  std::set<std::int32_t> seen;
  for (auto id : layout.ids()) {
    const auto* entry = layout.entry(id);
    if (!entry || !seen.insert(id).second) std::abort();
    for (auto child : entry->children) {
      const auto* inner = layout.entry(child);
      if (!inner || inner->parent != id) std::abort();
    }
  }
  if (!layout.entry(0)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kibfuzz::silenceLog();
  Bytes in(data, size);
  kibhost::DBusMenuLayout layout([](const platform::ImagePtr&) { return std::vector<std::uint8_t>{}; });
  for (int round = 0; round < 4 && !in.empty(); ++round) {
    const auto before = layout.revision();
    const auto changes = layout.rebuild(in.byte() % 7 == 0 ? nullptr : menuFrom(in));
    if ((layout.revision() != before) != changes.any()) std::abort();
    checkTree(layout);
    for (int lookups = in.byte() % 8; lookups > 0; --lookups) (void)layout.entry(in.int32());
    (void)kibhost::DBusMenuLayout::labelFor(in.text());
    (void)kibhost::DBusMenuLayout::shortcutFor(in.text(), static_cast<std::uint64_t>(in.int32()));
  }
  return 0;
}
