#include "host/ScriptPlayer.h"

#include "platform/core/Clock.h"
#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/JSONSerialization.h"
#include "platform/core/RunLoop.h"
#include "platform/core/String.h"

#include <algorithm>
#include <limits>
#include <sstream>

namespace kibhost {
namespace {

// How often a waiting wait-for step looks at the menu.
constexpr double kWaitForInterval = 0.1;

platform::NotificationCenter& centreNamed(const std::string& name) {
  if (name == "distributed") return platform::DistributedNotificationCenter::defaultCenter();
  if (name == "default") return platform::NotificationCenter::defaultCenter();
  return platform::NotificationCenter::centerNamed(name);
}

}  // namespace

ScriptPlayer::ScriptPlayer(const Script& script, StatusBarHost& host, const PluginBundle& plugin, sim::SimWorld* world,
                           Transcript& transcript, std::ostream& errors)
    : script_(script), host_(host), plugin_(plugin), world_(world), transcript_(transcript), errors_(errors) {}

int ScriptPlayer::play() {
  start_ = platform::Clock::current().now();
  if (endTimeObserver_) endTimeObserver_(start_ + script_.endTime);
  scheduleStep(0);
  auto& clock = platform::Clock::current();
  while (true) {
    const double end = start_ + delay_ + script_.endTime, now = clock.now();
    if (!waiting_ && now >= end) break;
    // While a wait-for waits, the end is not known yet.
    platform::RunLoop::main().runUntil(waiting_ ? std::max(end, now + kWaitForInterval) : end,
                                       platform::kDefaultRunLoopMode);
  }
  return failures_;
}

// Steps run one after the other: each is scheduled when the one before it is
// done, so a step never acts on a menu that an earlier step is closing. A
// click does not return while its menu is open, so the step after it is
// scheduled first and runs inside the menu's tracking.
void ScriptPlayer::scheduleStep(std::size_t index) {
  if (index >= script_.steps.size()) return;
  const ScriptStep& step = script_.steps[index];
  const double delay = start_ + delay_ + step.time - platform::Clock::current().now();
  platform::RunLoop::main().performBlock(delay, platform::kCommonRunLoopModes, [this, index, &step] {
    if (step.kind == ScriptStep::Kind::WaitFor) {
      transcript_.write("step", {{"line", step.line}, {"command", step.command}});
      waitFor(index, platform::Clock::current().now());
      return;
    }
    const bool blocks = step.kind == ScriptStep::Kind::Click;
    if (blocks) scheduleStep(index + 1);
    run(step);
    if (!blocks) scheduleStep(index + 1);
  });
}

void ScriptPlayer::fail(const ScriptStep& step, const std::string& message) {
  ++failures_;
  transcript_.write("script-error", {{"line", step.line}, {"message", message}});
  errors_ << "kibbar: " << script_.source << ":" << step.line << ": " << message << '\n';
}

StatusBarHost::OpenMenu* ScriptPlayer::requireMenu(const ScriptStep& step) {
  auto* menu = host_.openMenu();
  if (!menu || menu->closing) {
    fail(step, "no menu is open");
    return nullptr;
  }
  return menu;
}

void ScriptPlayer::run(const ScriptStep& step) {
  using Kind = ScriptStep::Kind;
  transcript_.write("step", {{"line", step.line}, {"command", step.command}});
  switch (step.kind) {
    case Kind::Click:
      if (!host_.extra())
        fail(step, "the extra is unloaded");
      else if (host_.openMenu())
        fail(step, "a menu is already open");
      else
        host_.click(step.modifiers.value_or(0));
      break;
    case Kind::Choose:
      choose(step);
      break;
    case Kind::ChooseIndex:
      chooseIndex(step);
      break;
    case Kind::Key:
      pressKey(step);
      break;
    case Kind::Dismiss:
      if (requireMenu(step)) host_.closeMenu(-1);
      break;
    case Kind::Event: {
      std::string error;
      if (!world_)
        fail(step, "there is no simulated world to play the event in");
      else if (!world_->apply(step.event, &error))
        fail(step, error);
      break;
    }
    case Kind::WaitFor:  // played by waitFor
    case Kind::Note:     // the step line is the note
      break;
    case Kind::Post:
      post(step);
      break;
    case Kind::SelfTest:
      selfTest(step);
      break;
    case Kind::Unload:
      if (!host_.extra()) {
        fail(step, "the extra is unloaded already");
      } else if (host_.openMenu()) {
        fail(step, "the menu is open; dismiss it first");
      } else {
        host_.unload();
        transcript_.write("unload");
      }
      break;
  }
}

void ScriptPlayer::choose(const ScriptStep& step) {
  auto* menu = requireMenu(step);
  if (!menu) return;
  const std::uint64_t modifiers = step.modifiers.value_or(menu->modifierFlags);
  for (const auto& row : menu->tracking.visibleRows(modifiers)) {
    if (row.item->isSeparatorItem() || row.item->title() != step.title) continue;
    if (!row.enabled) {
      fail(step, "\"" + step.title + "\" is disabled");
      return;
    }
    host_.closeMenu(row.index);
    return;
  }
  const bool hidden = menu->tracking.menu()->indexOfItemWithTitle(step.title) >= 0;
  fail(step, hidden ? "\"" + step.title + "\" is not shown with these modifier keys"
                    : "no item titled \"" + step.title + "\" in the open menu");
}

void ScriptPlayer::chooseIndex(const ScriptStep& step) {
  auto* menu = requireMenu(step);
  if (!menu) return;
  auto item = menu->tracking.menu()->itemAtIndex(step.index);
  if (!item) {
    fail(step, "the open menu has " + std::to_string(menu->tracking.menu()->numberOfItems()) + " items, no index " +
                   std::to_string(step.index));
  } else if (item->isSeparatorItem()) {
    fail(step, "item " + std::to_string(step.index) + " is a separator");
  } else if (!item->isEnabled()) {
    fail(step, "item " + std::to_string(step.index) + " (\"" + item->title() + "\") is disabled");
  } else {
    host_.closeMenu(step.index);
  }
}

void ScriptPlayer::pressKey(const ScriptStep& step) {
  auto* menu = requireMenu(step);
  if (!menu) return;
  const std::int64_t index = menu->tracking.indexOfItemForKeyEquivalent(step.key, step.modifiers.value_or(0));
  if (index < 0) {
    // As in a real menu, a key that chooses nothing leaves the menu open.
    transcript_.write("key-unmatched", {{"line", step.line}});
    return;
  }
  host_.closeMenu(index);
}

void ScriptPlayer::post(const ScriptStep& step) {
  platform::ObjectPtr object = step.object ? platform::makeString(*step.object) : nullptr;
  platform::DictionaryPtr userInfo;
  if (step.userInfo.is_object())
    userInfo =
        std::dynamic_pointer_cast<platform::Dictionary>(platform::JSONSerialization::objectWithJSON(step.userInfo));
  centreNamed(step.centre).postNotificationName(step.name, object, userInfo);
}

bool ScriptPlayer::menuShows(const std::string& title) {
  const auto& extra = host_.extra();
  auto menu = extra ? extra->menu() : nullptr;
  return menu && menu->indexOfItemWithTitle(title) >= 0;
}

void ScriptPlayer::waitFor(std::size_t index, double began) {
  if (!waiting_) {
    waiting_ = true;
    if (endTimeObserver_) endTimeObserver_(std::numeric_limits<double>::infinity());
  }
  const ScriptStep& step = script_.steps[index];
  const double now = platform::Clock::current().now();
  const bool done = menuShows(step.title) != step.absent;
  if (!done && now < began + step.duration) {
    platform::RunLoop::main().performBlock(kWaitForInterval, platform::kCommonRunLoopModes,
                                           [this, index, began] { waitFor(index, began); });
    return;
  }
  if (!done) {
    std::ostringstream limit;
    limit << step.duration;
    fail(step, "\"" + step.title + (step.absent ? "\" still in the menu after " : "\" not in the menu within ") +
                   limit.str() + " s");
  }
  delay_ += now - began;
  waiting_ = false;
  if (endTimeObserver_) endTimeObserver_(start_ + delay_ + script_.endTime);
  scheduleStep(index + 1);
}

void ScriptPlayer::selfTest(const ScriptStep& step) {
  const auto& extra = host_.extra();
  if (!extra) {
    fail(step, "the extra is unloaded");
  } else if (!plugin_.hasSelfTest()) {
    fail(step, plugin_.principalClass().name + std::string(" has no self-test"));
  } else {
    plugin_.principalClass().runSelfTestDuration(*extra, step.test, step.duration);
  }
}

}  // namespace kibhost
