#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/core/Notification.h"
#include "platform/core/RecyclingAllocator.h"

using namespace platform;

namespace {

struct Counted {
  static inline int alive = 0;
  explicit Counted(std::string text) : text(std::move(text)) { ++alive; }
  ~Counted() { --alive; }
  std::string text;
  char padding[200] = {};
};

std::shared_ptr<Counted> makeCounted(const std::string& text) {
  return std::allocate_shared<Counted>(RecyclingAllocator<Counted>(), text);
}

TEST(RecyclingAllocatorTest, ObjectsLiveAndDieAsWithMakeShared) {
  std::vector<std::shared_ptr<Counted>> objects;
  for (int round = 0; round < 3; ++round) {
    for (int i = 0; i < 100; ++i) objects.push_back(makeCounted("object " + std::to_string(i)));
    EXPECT_EQ(Counted::alive, 100);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(objects[static_cast<std::size_t>(i)]->text, "object " + std::to_string(i));
    objects.clear();
    EXPECT_EQ(Counted::alive, 0);
  }
  // A weak reference outliving the object keeps the block until it goes.
  std::weak_ptr<Counted> weak = makeCounted("brief");
  EXPECT_TRUE(weak.expired());
  EXPECT_EQ(Counted::alive, 0);
}

TEST(RecyclingAllocatorTest, ADroppedObjectsBlockGoesToTheNextOne) {
  if (!PLATFORM_RECYCLES_BLOCKS) GTEST_SKIP() << "blocks go to malloc under AddressSanitizer";
  auto first = makeCounted("first");
  const void* address = first.get();
  first.reset();
  auto second = makeCounted("second");
  EXPECT_EQ(static_cast<const void*>(second.get()), address);
  EXPECT_EQ(second->text, "second");
}

TEST(RecyclingAllocatorTest, KeepsAtMostItsShareOfBlocks) {
  using Huge = RecycledBlocks<std::size_t{1} << 20, 16>;
  const std::size_t kept = Huge::kKeptBytes >> 20;
  std::vector<void*> blocks;
  for (std::size_t i = 0; i <= kept; ++i) blocks.push_back(::operator new(std::size_t{1} << 20));
  for (std::size_t i = 0; i < kept; ++i) EXPECT_TRUE(Huge::give(blocks[i])) << i;
  EXPECT_FALSE(Huge::give(blocks[kept])) << "one block more than it keeps";
  ::operator delete(blocks[kept]);
  // Taken back last in, first out, then nothing is left.
  for (std::size_t i = kept; i-- > 0;) EXPECT_EQ(Huge::take(), blocks[i]);
  EXPECT_EQ(Huge::take(), nullptr);
  for (std::size_t i = 0; i < kept; ++i) ::operator delete(blocks[i]);
}

inline constexpr const char* kPingName = "a notification name longer than a short string";

TEST(NotificationTest, NotificationsBorrowConstantNamesAndCopyOthers) {
  const std::string& constant = constantName<kPingName>();
  EXPECT_EQ(&constant, &constantName<kPingName>());
  auto borrowed = Notification::makeWithConstantName(constant, nullptr);
  EXPECT_EQ(&borrowed->name(), &constant);
  EXPECT_EQ(borrowed->name(), kPingName);
  std::string text = kPingName;
  auto copied = Notification::make(text);
  text = "changed";
  EXPECT_EQ(copied->name(), kPingName);
  EXPECT_NE(copied->description().find(kPingName), std::string::npos);
}

}  // namespace
