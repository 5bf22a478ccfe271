#include "host/panel/PanelFrontend.h"

#include <signal.h>
#include <unistd.h>

#include <limits>

#include "host/panel/BannerLabel.h"
#include "platform/core/Clock.h"
#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/RunLoop.h"
#include "platform/core/String.h"
#include "platform/im/IMConstants.h"
#include "platform/ui/MenuTracking.h"
#include "platform/ui/Workspace.h"

namespace kibhost {
namespace {

constexpr const char* kStringsTable = "MenuExtraLocalizable";
constexpr const char* kAwayGlyph = "MenuExtra-.pdf";
constexpr const char* kPlainGlyph = "MenuExtra.pdf";
constexpr const char* kSharingGlyph = "SharingActive.png";

// The part of the bundle identifier after its last dot: the application's name.
std::string shortName(const std::string& identifier) {
  const auto dot = identifier.rfind('.');
  return dot == std::string::npos ? identifier : identifier.substr(dot + 1);
}

}  // namespace

PanelFrontend::PanelFrontend(std::optional<sim::Scenario> scenario, std::string scenarioName, const PluginBundle& plugin,
                             std::ostream* transcriptFile, std::unique_ptr<PanelIcons> icons)
    : scenario_(std::move(scenario)),
      scenarioName_(std::move(scenarioName)),
      plugin_(plugin),
      transcriptFile_(transcriptFile),
      icons_(std::move(icons)),
      layout_([this](const platform::ImagePtr& image) { return icons_->menuIconPNG(image); }),
      self_(std::make_shared<PanelFrontend*>(this)) {}

PanelFrontend::~PanelFrontend() {
  auto& loop = platform::RunLoop::main();
  if (signals_) loop.removeFileDescriptorSource(signals_->fd());
  auto& distributed = platform::DistributedNotificationCenter::defaultCenter();
  for (const auto& token : observers_) {
    distributed.removeObserver(token.get());
    platform::Workspace::sharedWorkspace().notificationCenter().removeObserver(token.get());
  }
  watcher_.reset();
  menu_.reset();
  item_.reset();
  host_.reset();
  recorder_.reset();
  if (bus_ && !busName_.empty()) {
    try {
      bus_->connection().releaseName(busName_);
    } catch (const sdbus::Error&) {
      // the connection is gone; so is the name
    }
  }
}

int PanelFrontend::run(std::ostream& errors) {
  try {
    bus_ = kibbus::BusConnection::openSessionBus();
  } catch (const kibbus::BusError& error) {
    errors << "kibbar: " << error.what() << '\n';
    return 2;
  }
  signals_ = std::make_unique<SignalPipe>(std::vector<int>{SIGINT, SIGTERM});
  auto& loop = platform::RunLoop::main();
  loop.addFileDescriptorSource(signals_->fd(), [this] { readSignals(); });
  bus_->setDisconnectHandler([this, &errors] {
    errors << "kibbar: the session bus closed the connection\n";
    quit(1);
  });

  if (!startExtra(errors)) return 2;
  try {
    exportBus();
  } catch (const sdbus::Error& error) {
    errors << "kibbar: cannot export the status item on the session bus: " << error.getMessage() << '\n';
    status_ = 2;
    quit_ = true;
  }
  watcher_ = std::make_unique<WatcherRegistration>(
      *bus_, busName_, [&errors](const std::string& line) { errors << "kibbar: " << line << '\n'; });

  while (!quit_) loop.runUntil(std::numeric_limits<double>::infinity());

  if (host_->extra()) {
    host_->unload();
    transcript_->write("unload");
  }
  transcript_->write("end");
  return status_;
}

bool PanelFrontend::startExtra(std::ostream& errors) {
  if (scenario_) world_ = sim::SimWorld::make(*scenario_);
  transcript_ = std::make_unique<Transcript>(transcriptFile_ ? *transcriptFile_ : nullStream_);
  recorder_ = std::make_unique<TranscriptRecorder>(*transcript_, world_.get());
  label_ = std::make_unique<LabelThrottle>(kLabelInterval, [this](const std::string& label) { labelSent(label); });
  observeScreenSharing();
  state_.title = shortName(plugin_.bundle()->bundleIdentifier());
  state_.attentionIcon =
      pixmapsFor(platform::Image::initByReferencingFile(plugin_.bundle()->resourcePath() + "/" + kSharingGlyph), false);
  host_ = std::make_unique<StatusBarHost>(*this);
  recorder_->recordStart(plugin_, scenarioName_);
  std::string error;
  if (!host_->load(plugin_, error)) {
    errors << "kibbar: " << error << '\n';
    return false;
  }
  if (world_) world_->start();
  return true;
}

void PanelFrontend::exportBus() {
  busName_ = "org.kde.StatusNotifierItem-" + std::to_string(getpid()) + "-1";
  bus_->connection().requestName(busName_);
  layout_.rebuild(nullptr);
  menu_ = std::make_unique<DBusMenuAdaptor>(bus_->connection(), layout_, *this);
  state_.status = sharing_ ? "NeedsAttention" : "Active";
  item_ = std::make_unique<StatusNotifierItemAdaptor>(bus_->connection(), plugin_.bundle()->bundleIdentifier(),
                                                      DBusMenuAdaptor::kObjectPath, state_, *this);
  scheduleMenuRefresh();
}

// The slot.

void PanelFrontend::slotLengthDidChange(double length) { recorder_->slotLengthDidChange(length); }

void PanelFrontend::slotDidDisplay(const platform::RecordingCanvas& canvas) {
  recorder_->slotDidDisplay(canvas);
  updateIcon(canvas);
  const std::string text = BannerLabel::bannerText(canvas);
  const std::string visible = BannerLabel::visibleText(canvas);
  if (!visible.empty()) bannerText_ = text;
  label_->update(visible);
  publish();
}

void PanelFrontend::updateIcon(const platform::RecordingCanvas& canvas) {
  for (const auto& op : canvas.operations()) {
    if (op.kind != platform::RecordingCanvas::Kind::DrawCell || !op.image) continue;
    const bool dimmed = !op.enabled;
    const std::string name = op.image->displayName();
    state_.icon = pixmapsFor(op.image, dimmed);
    std::string word;
    if (dimmed) {
      word = localized("Offline");
    } else if (name == kAwayGlyph) {
      word = localized("Away");
    } else if (name == kPlainGlyph) {
      word = localized("Available");
    }
    // The sharing glyph says nothing about the status: the heading keeps its word.
    if (!word.empty()) state_.toolTipTitle = localized("My Status:") + " " + word;
    return;
  }
}

const std::vector<PanelIcons::Pixmap>& PanelFrontend::pixmapsFor(const platform::ImagePtr& image, bool dimmed) {
  const std::string key = image->filePath() + (dimmed ? "|dimmed" : "|plain");
  auto found = pixmapCache_.find(key);
  if (found == pixmapCache_.end()) found = pixmapCache_.emplace(key, icons_->iconPixmaps(image, dimmed)).first;
  return found->second;
}

void PanelFrontend::labelSent(const std::string& label) {
  state_.label = label;
  state_.labelGuide = label.empty() ? "" : BannerLabel::guideFor(bannerText_);
  state_.toolTipText = label.empty() ? "" : bannerText_;
  publish();
}

std::string PanelFrontend::localized(const std::string& key) const {
  return plugin_.bundle()->localizedStringForKey(key, "", kStringsTable);
}

void PanelFrontend::publish() {
  state_.status = sharing_ ? "NeedsAttention" : "Active";
  if (item_) item_->publish(state_);
}

// Screen sharing: the item asks for attention from the start until the end
// (or until the messaging application quits), as the extra's indicator runs.
void PanelFrontend::observeScreenSharing() {
  auto& distributed = platform::DistributedNotificationCenter::defaultCenter();
  observers_.push_back(distributed.addObserverForName(std::string(platform::kKBParloScreenSharingStartedNotification),
                                                      nullptr, [this](const platform::NotificationPtr&) {
                                                        sharing_ = true;
                                                        publish();
                                                      }));
  auto ended = [this](const platform::NotificationPtr&) {
    sharing_ = false;
    publish();
  };
  observers_.push_back(
      distributed.addObserverForName(std::string(platform::kKBParloScreenSharingEndedNotification), nullptr, ended));
  observers_.push_back(platform::Workspace::sharedWorkspace().notificationCenter().addObserverForName(
      std::string(platform::NSWorkspaceDidTerminateApplicationNotification), nullptr,
      [this](const platform::NotificationPtr& notification) {
        const auto& info = notification->userInfo();
        auto identifier =
            info ? std::dynamic_pointer_cast<platform::String>(info->objectForKey("NSApplicationBundleIdentifier"))
                 : nullptr;
        if (identifier && identifier->value() == platform::kKBAppBundleIdentifier) {
          sharing_ = false;
          publish();
        }
      }));
}

// The menu.

void PanelFrontend::statusItemActivated(std::int32_t, std::int32_t) { requestOpen(); }

void PanelFrontend::dbusMenuWillOpen() { requestOpen(); }

void PanelFrontend::requestOpen() {
  if (host_->openMenu()) {
    menu_->answerAboutToShow(false);
    return;
  }
  if (openScheduled_) return;
  openScheduled_ = true;
  // Not inside the bus handler: the menu's tracking runs the loop, which dispatches the bus again.
  std::weak_ptr<PanelFrontend*> self = self_;
  platform::RunLoop::main().performBlock(0, platform::kDefaultRunLoopMode, [self] {
    if (auto frontend = self.lock()) {
      (*frontend)->openScheduled_ = false;
      (*frontend)->openMenu();
    }
  });
}

void PanelFrontend::openMenu() {
  if (!host_->extra() || host_->openMenu()) {
    menu_->answerAboutToShow(false);
    return;
  }
  openedAt_ = platform::Clock::current().now();
  host_->click();
  menu_->answerAboutToShow(false);  // the extra had no menu to show
  if (pendingChoice_.menu) choose(std::exchange(pendingChoice_, Choice{}));
  if (quit_) platform::RunLoop::main().stop();
}

void PanelFrontend::menuDidOpen(const platform::MenuPtr& menu) {
  recorder_->menuDidOpen(menu);
  menu_->answerAboutToShow(exportMenu(menu).any());
}

DBusMenuLayout::Changes PanelFrontend::exportMenu(const platform::MenuPtr& menu) {
  auto changes = layout_.rebuild(menu);
  menu_->publish(changes);
  return changes;
}

void PanelFrontend::menuDidClose(std::int64_t chosenIndex) { recorder_->menuDidClose(chosenIndex); }

// A panel shows its copy of the menu the moment it is clicked, before it asks
// for a new one; so the exported menu is kept current: after loading and
// whenever the extra drops its cached menu, the extra is asked for its menu on
// the next turn (an unchanged menu exports unchanged and sends nothing).
void PanelFrontend::cachedMenuDidChange() {
  if (!host_ || !host_->extra() || host_->extra()->MenuExtra::menu()) return;
  scheduleMenuRefresh();
}

void PanelFrontend::scheduleMenuRefresh() {
  if (refreshScheduled_ || refreshing_) return;
  refreshScheduled_ = true;
  std::weak_ptr<PanelFrontend*> self = self_;
  platform::RunLoop::main().performBlock(0, platform::kCommonRunLoopModes, [self] {
    if (auto frontend = self.lock()) {
      (*frontend)->refreshScheduled_ = false;
      (*frontend)->refreshMenu();
    }
  });
}

void PanelFrontend::refreshMenu() {
  auto* open = host_->openMenu();
  if ((open && open->closing) || !host_->extra() || !menu_) return;
  refreshing_ = true;  // building the menu may drop it again; that is not a new change
  auto menu = host_->extra()->menu();
  refreshing_ = false;
  const auto changes = exportMenu(menu);
  if (open && menu && menu != open->tracking.menu()) {
    // The panel shows the new menu now: it is the one tracked, and recorded when it differs.
    open->tracking = platform::MenuTracking(menu);
    if (changes.any()) recorder_->menuDidOpen(menu);
  }
}

void PanelFrontend::dbusMenuItemClicked(std::int32_t id) {
  const auto* entry = layout_.entry(id);
  if (!entry || entry->menuIndex < 0) return;
  Choice choice{layout_.menu(), entry->menuIndex};
  if (auto* open = host_->openMenu()) {
    if (open->tracking.menu() == choice.menu) return host_->closeMenu(choice.index);
    // The exported menu replaced the one the tracking started with.
    pendingChoice_ = choice;
    return host_->closeMenu(-1);
  }
  // The panel closed the menu before it sent the click.
  platform::RunLoop::main().performBlock(0, platform::kDefaultRunLoopMode, [choice] { choose(choice); });
}

void PanelFrontend::choose(const Choice& choice) {
  platform::MenuTracking tracking(choice.menu);
  tracking.chooseItemAtIndex(choice.index);
}

void PanelFrontend::dbusMenuDidClose() {
  if (!host_->openMenu()) return;
  // A click sent in the same batch as the closing still counts as the choice.
  std::weak_ptr<PanelFrontend*> self = self_;
  platform::RunLoop::main().performBlock(0, platform::kEventTrackingRunLoopMode, [self] {
    if (auto frontend = self.lock()) (*frontend)->host_->closeMenu(-1);
  });
}

// Signals.

void PanelFrontend::readSignals() {
  if (!signals_->take().empty()) quit(0);
}

void PanelFrontend::quit(int status) {
  if (quit_) return;
  quit_ = true;
  status_ = status;
  if (host_ && host_->openMenu()) host_->closeMenu(-1);
  platform::RunLoop::main().stop();
}

}  // namespace kibhost
