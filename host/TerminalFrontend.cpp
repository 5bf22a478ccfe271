#include "host/TerminalFrontend.h"

#include <signal.h>
#include <unistd.h>

#include <cmath>
#include <ctime>

#include "host/SlotRenderer.h"
#include "platform/core/Clock.h"
#include "platform/core/RunLoop.h"
#include "platform/ui/KeyModifiers.h"

namespace kibhost {
namespace {

using Style = TerminalScreen::Style;
using Color = TerminalScreen::Color;

// The clock shows seconds: one redraw just after each second turns, and no
// other wake-up while nothing happens.
constexpr double kClockInterval = 1.0;
constexpr double kClockLag = 0.002;
// Lines of the transcript that change too often to be worth a line on screen.
const char* const kQuietTypes[] = {"length", "banner-scroll", "daemon-query", "highlight", "step"};

Style barStyle() {
  Style style;
  style.foreground = Color::Black;
  style.background = Color::White;
  return style;
}

std::string clockText() {
  std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char text[32];
  std::strftime(text, sizeof text, "%a %H:%M:%S", &local);
  return text;
}

// One line of the transcript as the list of what happened shows it.
std::string summary(const Transcript::Fields& line) {
  const std::string type = line.value("type", "");
  char time[32];
  std::snprintf(time, sizeof time, "%7.2f ", line.value("t", 0.0));
  std::string text = time + type;
  if (type == "menu") return text + " (" + std::to_string(line["items"].size()) + " items)";
  for (const auto& [key, value] : line.items()) {
    if (key == "t" || key == "type") continue;
    if (value.is_boolean()) {
      if (value.get<bool>()) text += " " + key;
    } else if (value.is_null()) {
      text += " (no " + key + ")";
    } else {
      text += " " + (value.is_string() ? value.get<std::string>() : value.dump());
    }
  }
  return text;
}

}  // namespace

TerminalFrontend::TerminalFrontend(std::optional<sim::Scenario> scenario, std::string scenarioName, const PluginBundle& plugin,
                                   std::ostream* transcriptFile)
    : scenario_(std::move(scenario)),
      scenarioName_(std::move(scenarioName)),
      plugin_(plugin),
      transcriptFile_(transcriptFile),
      self_(std::make_shared<TerminalFrontend*>(this)) {}

TerminalFrontend::~TerminalFrontend() {
  auto& loop = platform::RunLoop::main();
  loop.removeFileDescriptorSource(STDIN_FILENO);
  if (signals_) loop.removeFileDescriptorSource(signals_->fd());
  if (clockTimer_) clockTimer_->invalidate();
  host_.reset();
  recorder_.reset();
  session_.leave();
}

int TerminalFrontend::run(std::ostream& errors) {
  if (!session_.begin(STDIN_FILENO, STDOUT_FILENO)) {
    errors << "kibbar: the terminal frontend needs a terminal\n";
    return 2;
  }
  signals_ = std::make_unique<SignalPipe>(std::vector<int>{SIGINT, SIGTERM, SIGHUP, SIGWINCH, SIGCONT});

  if (scenario_) world_ = sim::SimWorld::make(*scenario_);
  panel_ = std::make_unique<WorldPanel>(world_.get(), scenarioName_);
  for (auto& line : pendingActivity_) panel_->addActivity(std::move(line));
  pendingActivity_.clear();
  transcript_ = std::make_unique<Transcript>(transcriptFile_ ? *transcriptFile_ : nullStream_);
  transcript_->setLineObserver([this](const Transcript::Fields& line) { noteTranscriptLine(line); });
  recorder_ = std::make_unique<TranscriptRecorder>(*transcript_, world_.get());
  host_ = std::make_unique<StatusBarHost>(*this);
  recorder_->recordStart(plugin_, scenarioName_);
  std::string error;
  if (!host_->load(plugin_, error)) {
    session_.leave();
    errors << "kibbar: " << error << '\n';
    return 2;
  }
  if (world_) world_->start();

  auto& loop = platform::RunLoop::main();
  loop.addFileDescriptorSource(STDIN_FILENO, [this] { readInput(); });
  loop.addFileDescriptorSource(signals_->fd(), [this] { readSignals(); });
  clockTimer_ =
      platform::Timer::timerWithTimeInterval(kClockInterval, true, [this](platform::Timer&) { requestRedraw(); });
  // Repeats follow the planned times, so the first one sets the phase.
  clockTimer_->setFireDate(std::floor(platform::CFAbsoluteTimeGetCurrent()) + 1.0 + kClockLag);
  loop.addTimer(clockTimer_, platform::kCommonRunLoopModes);
  redraw();
  while (!quit_) loop.runUntil(std::numeric_limits<double>::infinity());

  if (host_->extra()) {
    host_->unload();
    transcript_->write("unload");
  }
  transcript_->write("end");
  session_.leave();
  return quitSignal_ ? 128 + quitSignal_ : 0;
}

// The host's delegate.

void TerminalFrontend::slotLengthDidChange(double length) {
  recorder_->slotLengthDidChange(length);
  requestRedraw();
}

void TerminalFrontend::slotDidDisplay(const platform::RecordingCanvas& canvas) {
  recorder_->slotDidDisplay(canvas);
  slotCells_ = SlotRenderer::render(canvas, host_->length(), barStyle());
  requestRedraw();
}

void TerminalFrontend::menuDidOpen(const platform::MenuPtr& menu) {
  recorder_->menuDidOpen(menu);
  auto* open = host_->openMenu();
  menu_ = std::make_unique<TerminalMenu>(open->tracking, open->modifierFlags);
  redraw();
  std::weak_ptr<TerminalFrontend*> self = self_;
  platform::RunLoop::main().performBlock(0, platform::kEventTrackingRunLoopMode, [self] {
    if (auto frontend = self.lock()) (*frontend)->handlePendingKeys();
  });
}

void TerminalFrontend::menuDidClose(std::int64_t chosenIndex) {
  recorder_->menuDidClose(chosenIndex);
  menu_.reset();
  requestRedraw();
}

// Input.

void TerminalFrontend::readInput() {
  char buffer[4096];
  ssize_t count = read(STDIN_FILENO, buffer, sizeof buffer);
  if (count == 0) {  // the terminal went away
    requestQuit();
    return;
  }
  if (count < 0) return;
  for (auto& key : decoder_.decode(std::string_view(buffer, static_cast<std::size_t>(count))))
    pendingKeys_.push_back(std::move(key));
  handlePendingKeys();
}

// Keys wait in a queue: a key that opens the menu does not return until the
// menu closes, and the keys typed after it belong to the menu.
void TerminalFrontend::handlePendingKeys() {
  while (!pendingKeys_.empty() && !quit_) {
    KeyEvent key = std::move(pendingKeys_.front());
    pendingKeys_.pop_front();
    handle(key);
  }
}

void TerminalFrontend::readSignals() {
  for (int signal : signals_->take()) {
    if (signal == SIGWINCH || signal == SIGCONT) {
      shown_.resize(0, 0);
      requestRedraw();
    } else {
      quitSignal_ = signal;
      requestQuit();
    }
  }
}

void TerminalFrontend::handle(const KeyEvent& key) {
  using Kind = KeyEvent::Kind;
  if (key.kind == Kind::Control && key.control == 'c') return requestQuit();
  if (menu_) return handleMenuKey(key);
  if (prompt_) return handlePromptKey(key);
  switch (key.kind) {
    case Kind::Enter:
      return clickSlot(key.alt ? platform::kAlternateKeyMask : 0);
    case Kind::MouseDown:
      if (key.row == 0 && key.column >= slotColumn_ && key.column < slotColumn_ + static_cast<int>(slotCells_.size()))
        clickSlot(0);
      return;
    case Kind::Up:
      panel_->moveSelection(-1);
      return requestRedraw();
    case Kind::Down:
      panel_->moveSelection(1);
      return requestRedraw();
    case Kind::Control:
      if (key.control == 'z') suspend();
      if (key.control == 'l') shown_.resize(0, 0);
      return requestRedraw();
    case Kind::Character:
      break;
    default:
      return;
  }
  const auto* buddy = panel_->selectedBuddy();
  if (key.text == " ") {
    clickSlot(0);
  } else if (key.text == "q") {
    requestQuit();
  } else if (!world_ && key.text.size() == 1 && std::string_view("+-ts").find(key.text) != std::string_view::npos) {
    panel_->addActivity("not here: change it in the client");
    requestRedraw();
  } else if (key.text == "+" && buddy) {
    applyEvent(sim::SimEvent::buddyOnline(buddy->accountID, buddy->handleID));
  } else if (key.text == "-" && buddy) {
    applyEvent(sim::SimEvent::buddyOffline(buddy->accountID, buddy->handleID));
  } else if (key.text == "t") {
    prompt_ = "";
    requestRedraw();
  } else if (key.text == "s") {
    toggleScreenSharing();
  }
}

void TerminalFrontend::handleMenuKey(const KeyEvent& key) {
  using Kind = KeyEvent::Kind;
  auto* open = host_->openMenu();
  if (!open) return;
  switch (key.kind) {
    case Kind::Up:
      menu_->moveSelection(-1);
      break;
    case Kind::Down:
      menu_->moveSelection(1);
      break;
    case Kind::Tab:
      menu_->toggleOption();
      open->modifierFlags = menu_->modifierFlags();
      break;
    case Kind::Enter:
      if (menu_->selectedIndex() >= 0) host_->closeMenu(menu_->selectedIndex());
      return;
    case Kind::Escape:
      host_->closeMenu(-1);
      return;
    case Kind::Control:
      // Control-E stands for Control-Escape, which a terminal cannot send.
      if (key.control == 'e') {
        auto index =
            open->tracking.indexOfItemForKeyEquivalent(platform::kEscapeKeyEquivalent, platform::kControlKeyMask);
        if (index >= 0) host_->closeMenu(index);
        return;
      }
      break;
    case Kind::MouseDown: {
      bool inBox = false;
      auto index = menu_->indexAt(key.column, key.row, inBox);
      if (!inBox) host_->closeMenu(-1);
      if (index >= 0) host_->closeMenu(index);
      return;
    }
    case Kind::Character: {
      auto index = open->tracking.indexOfItemForKeyEquivalent(key.text, menu_->modifierFlags());
      if (index >= 0) host_->closeMenu(index);
      return;
    }
    default:
      break;
  }
  redraw();
}

void TerminalFrontend::handlePromptKey(const KeyEvent& key) {
  using Kind = KeyEvent::Kind;
  if (key.kind == Kind::Escape) {
    prompt_.reset();
  } else if (key.kind == Kind::Enter) {
    auto text = std::move(*prompt_);
    prompt_.reset();
    applyEvent(sim::SimEvent::statusText(text));
  } else if (key.kind == Kind::Backspace) {
    auto points = TerminalScreen::codePoints(*prompt_);
    if (!points.empty()) prompt_->resize(prompt_->size() - points.back().size());
  } else if (key.kind == Kind::Character) {
    *prompt_ += key.text;
  }
  requestRedraw();
}

void TerminalFrontend::clickSlot(std::uint64_t modifierFlags) {
  if (!host_->extra()) return;
  host_->click(modifierFlags);
  // The menu may have been closed by a quit request; the outer loop must end too.
  if (quit_) platform::RunLoop::main().stop();
}

void TerminalFrontend::applyEvent(const sim::SimEvent& event) {
  std::string error;
  if (!world_)
    panel_->addActivity("not here: change it in the client");
  else if (!world_->apply(event, &error))
    panel_->addActivity("cannot: " + error);
  requestRedraw();
}

void TerminalFrontend::toggleScreenSharing() {
  const auto* application = world_ ? world_->application().get() : nullptr;
  if (application && application->isScreenSharing()) {
    applyEvent(sim::SimEvent::screenSharingEnd());
    return;
  }
  const auto* buddy = panel_->selectedBuddy();
  applyEvent(sim::SimEvent::screenSharingStart(buddy ? std::optional<std::string>(buddy->name) : std::nullopt));
}

void TerminalFrontend::noteActivity(const std::string& line) {
  if (!panel_) {
    pendingActivity_.push_back(line);
    return;
  }
  panel_->addActivity(line);
  requestRedraw();
}

void TerminalFrontend::requestQuit() {
  quit_ = true;
  if (host_ && host_->openMenu())
    host_->closeMenu(-1);
  else
    platform::RunLoop::main().stop();
}

void TerminalFrontend::suspend() {
  session_.leave();
  raise(SIGTSTP);
  // Running again.
  session_.enter();
  shown_.resize(0, 0);
}

// Drawing.

void TerminalFrontend::requestRedraw() {
  if (redrawScheduled_) return;
  redrawScheduled_ = true;
  std::weak_ptr<TerminalFrontend*> self = self_;
  platform::RunLoop::main().performBlock(0, platform::kCommonRunLoopModes, [self] {
    if (auto frontend = self.lock()) (*frontend)->redraw();
  });
}

void TerminalFrontend::redraw() {
  redrawScheduled_ = false;
  if (!session_.isActive()) return;
  int columns = 0, rows = 0;
  session_.size(columns, rows);
  if (screen_.width() != columns || screen_.height() != rows) screen_.resize(columns, rows);
  screen_.clear();
  drawBar();
  panel_->draw(screen_, 2, rows - 1);
  if (menu_) {
    // The open menu is in front: what is behind it steps back.
    for (int y = 1; y < rows - 1; ++y)
      for (int x = 0; x < columns; ++x) {
        auto& style = screen_.at(x, y).style;
        style.foreground = Color::BrightBlack;
        style.reverse = false;
      }
    menu_->draw(screen_, slotColumn_, 1, rows - 1);
  }
  drawFooter();
  session_.write(screen_.render(shown_));
  shown_ = screen_;
}

void TerminalFrontend::drawBar() {
  const Style bar = barStyle();
  const int width = screen_.width();
  screen_.fill(0, 0, width, bar);
  const std::string clock = clockText();
  const std::string name = plugin_.bundle()->bundleIdentifier();
  const int slotWidth = static_cast<int>(slotCells_.size());
  // The slot comes first; the clock and the program's name only where there is room.
  const bool showClock = width >= slotWidth + TerminalScreen::columns(clock) + 12;
  const int clockX = showClock ? width - TerminalScreen::columns(clock) - 1 : width;
  if (showClock) screen_.put(clockX, 0, clock, bar);
  slotColumn_ = std::max(0, clockX - (showClock ? 2 : 0) - slotWidth);
  Style title = bar;
  title.bold = true;
  const int room = slotColumn_ - 2;
  const int used = screen_.put(1, 0, "kibbar", title, std::max(0, room));
  if (room - used > TerminalScreen::columns(name) + 3) screen_.put(used + 4, 0, name, bar);
  for (int i = 0; i < slotWidth; ++i) {
    const int column = slotColumn_ + i;
    if (screen_.contains(column, 0)) screen_.at(column, 0) = slotCells_[static_cast<std::size_t>(i)];
  }
}

void TerminalFrontend::drawFooter() {
  const int y = screen_.height() - 1;
  Style keys;
  keys.reverse = true;
  std::string help;
  if (prompt_) {
    help = " Status text: " + *prompt_ + "▏   (Enter: show it · empty: hide the banner · Esc: cancel)";
  } else if (menu_) {
    help = std::string(" ↑↓ move · Enter choose · Esc close · Tab Option ") +
           (menu_->isOptionHeld() ? "[held]" : "[up]") + " · ^E Control-Escape · ^C quit";
  } else if (!world_) {
    help = " Enter/Space/click: open the menu · q quit   (the messaging client's world changes in the client)";
  } else {
    help =
        " Enter/Space/click: open the menu · ↑↓ pick a buddy · + online · - offline · t status text · "
        "s screen sharing · q quit";
  }
  screen_.fill(0, y, screen_.width(), keys);
  screen_.put(0, y, help, keys);
}

void TerminalFrontend::noteTranscriptLine(const Transcript::Fields& line) {
  const std::string type = line.value("type", "");
  for (const char* quiet : kQuietTypes)
    if (type == quiet) return;
  panel_->addActivity(summary(line));
  requestRedraw();
}

}  // namespace kibhost
