#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "platform/core/SmallVector.h"

using namespace platform;

namespace {

// A string that counts the live copies of itself, so that a lost or doubled
// destruction shows; long enough to live on the heap, so that a use after
// free shows under the sanitizer.
struct Tracked {
  static inline int alive = 0;
  explicit Tracked(std::string text) : text(std::move(text)) { ++alive; }
  Tracked(const Tracked& other) : text(other.text) { ++alive; }
  Tracked(Tracked&& other) noexcept : text(std::move(other.text)) { ++alive; }
  Tracked& operator=(const Tracked&) = default;
  Tracked& operator=(Tracked&&) noexcept = default;
  ~Tracked() { --alive; }
  bool operator==(const Tracked& other) const { return text == other.text; }
  std::string text;
};

using Small = SmallVector<Tracked, 2>;

std::vector<std::string> textsOf(const Small& small) {
  std::vector<std::string> texts;
  for (const auto& element : small) texts.push_back(element.text);
  return texts;
}

// Random operations on a small vector and on a std::vector of the same
// strings: after every step they hold the same, and every element made is
// destroyed once.
TEST(SmallVectorTest, BehavesAsAVectorAcrossTheInlineLimit) {
  std::mt19937 random(7);
  for (int round = 0; round < 200; ++round) {
    {
      Small small;
      std::vector<std::string> model;
      for (int step = 0; step < 40; ++step) {
        std::string fresh = "element number " + std::to_string(round) + "." + std::to_string(step);
        switch (random() % 8) {
          case 0:
          case 1:
          case 2:
            small.push_back(Tracked(fresh));
            model.push_back(fresh);
            break;
          case 3:
            // An element of the vector itself, also when it must move to the heap.
            if (!model.empty()) {
              std::size_t at = random() % model.size();
              small.push_back(small[at]);
              model.push_back(model[at]);
            }
            break;
          case 4:
            if (!model.empty()) {
              std::size_t first = random() % model.size();
              std::size_t last = first + random() % (model.size() - first + 1);
              auto next = small.erase(small.begin() + first, small.begin() + last);
              model.erase(model.begin() + first, model.begin() + last);
              EXPECT_EQ(next - small.begin(), static_cast<std::ptrdiff_t>(first));
            }
            break;
          case 5: {
            Small copy(small);
            Small moved(std::move(copy));
            EXPECT_TRUE(copy.empty());
            small = moved;
            break;
          }
          case 6: {
            Small other{Tracked("left over")};
            other = std::move(small);
            small = std::move(other);
            break;
          }
          case 7:
            if (random() % 4 == 0) {
              small.clear();
              model.clear();
            } else {
              small.reserve(small.size() + random() % 5);
            }
            break;
        }
        ASSERT_EQ(textsOf(small), model) << "round " << round << ", step " << step;
        EXPECT_GE(small.capacity(), small.size());
        EXPECT_EQ(small.isInline(), small.capacity() == 2);
        EXPECT_EQ(Tracked::alive, static_cast<int>(model.size()));
      }
    }
    ASSERT_EQ(Tracked::alive, 0) << "round " << round;
  }
}

TEST(SmallVectorTest, ReadsAsASpanAndComparesByElements) {
  SmallVector<int, 2> a{1, 2, 3};
  SmallVector<int, 2> b{1, 2};
  EXPECT_FALSE(a == b);
  b.push_back(3);
  EXPECT_TRUE(a == b);
  EXPECT_TRUE(a == (std::vector<int>{1, 2, 3}));
  EXPECT_FALSE((std::vector<int>{1, 2}) == a);
  std::span<const int> view = a;
  EXPECT_EQ(std::vector<int>(view.begin(), view.end()), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(std::vector<int>(a.rbegin(), a.rend()), (std::vector<int>{3, 2, 1}));
}

}  // namespace
