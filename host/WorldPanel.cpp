#include "host/WorldPanel.h"

#include <algorithm>

#include "platform/im/IMAccount.h"
#include "platform/im/IMAccountController.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMPeople.h"
#include "platform/im/IMPersonStatus.h"
#include "platform/im/IMService.h"

namespace kibhost {
namespace {

using Style = TerminalScreen::Style;
using Color = TerminalScreen::Color;

constexpr std::size_t kActivityLines = 200;

Style heading() {
  Style style;
  style.bold = true;
  return style;
}

Style muted() {
  Style style;
  style.foreground = Color::BrightBlack;
  return style;
}

// A status as a coloured dot and its name.
void putStatus(TerminalScreen& screen, int x, int y, platform::IMPersonStatus status) {
  Style dot;
  std::string glyph = "●";
  switch (status) {
    case platform::kIMPersonStatusAvailable:
      dot.foreground = Color::Green;
      break;
    case platform::kIMPersonStatusAway:
      dot.foreground = Color::Red;
      break;
    case platform::kIMPersonStatusIdle:
      dot.foreground = Color::Yellow;
      break;
    case platform::kIMPersonStatusOffline:
      glyph = "○";
      dot = muted();
      break;
    default:
      glyph = "◌";
      dot = muted();
      break;
  }
  screen.put(x, y, glyph, dot);
  screen.put(x + 2, y, platform::IMNameOfPersonStatus(status),
             status == platform::kIMPersonStatusOffline ? muted() : Style{});
}

const char* loginText(std::uint32_t loginStatus) {
  switch (loginStatus) {
    case 0:
      return "offline";
    case 1:
      return "connecting";
    default:
      return "connected";
  }
}

platform::IMHandlePtr handleOf(sim::SimWorld* world, const WorldPanel::Buddy& buddy) {
  if (world) return world->handle(buddy.accountID, buddy.handleID);
  auto account = platform::IMAccountController::sharedInstance()->accountWithUniqueID(buddy.accountID);
  return account ? account->buddyList()->imHandleWithID(buddy.handleID) : nullptr;
}

}  // namespace

WorldPanel::WorldPanel(sim::SimWorld* world, std::string scenarioName)
    : world_(world), scenarioName_(std::move(scenarioName)) {
  if (!world_) return;
  for (const auto& person : world_->scenario().people) {
    std::string name = person.firstName;
    if (!person.lastName.empty()) name += (name.empty() ? "" : " ") + person.lastName;
    for (const auto& handle : person.handles)
      buddies_.push_back({handle.account, handle.id, name.empty() ? handle.id : name});
  }
}

void WorldPanel::addActivity(std::string line) {
  activity_.push_back(std::move(line));
  while (activity_.size() > kActivityLines) activity_.pop_front();
}

std::vector<WorldPanel::Buddy> WorldPanel::buddies() const {
  if (world_) return buddies_;
  std::vector<Buddy> rows;
  for (const auto& account : platform::IMAccountController::sharedInstance()->accounts())
    for (const auto& handle : account->buddyList()->people())
      rows.push_back({account->uniqueID(), handle->ID(), handle->name()});
  return rows;
}

void WorldPanel::moveSelection(int direction) {
  if (buddies_.empty()) return;
  const int count = static_cast<int>(buddies_.size());
  selected_ = (selected_ + direction % count + count) % count;
}

const WorldPanel::Buddy* WorldPanel::selectedBuddy() const {
  return buddies_.empty() ? nullptr : &buddies_[static_cast<std::size_t>(selected_)];
}

void WorldPanel::draw(TerminalScreen& screen, int top, int bottom) const {
  const int width = screen.width();
  const bool twoColumns = width >= 100;
  const int leftWidth = twoColumns ? std::max(64, width * 5 / 8) : width;
  int y = top;
  screen.put(1, y++, (world_ ? "Simulated world · " : "Messaging client · ") + scenarioName_, heading(),
             leftWidth - 2);
  y = drawAccounts(screen, 1, y + 1, leftWidth - 2);
  if (twoColumns) {
    drawBuddies(screen, 1, y + 1, leftWidth - 2, bottom - y - 1);
    const int right = leftWidth + 1;
    int ry = drawApplication(screen, right, top, width - right - 1, 8);
    drawActivity(screen, right, ry + 1, width - right - 1, bottom - ry - 1);
  } else {
    const int rest = bottom - y - 1;
    y = drawBuddies(screen, 1, y + 1, leftWidth - 2, std::max(3, rest / 2));
    y = drawApplication(screen, 1, y + 1, leftWidth - 2, 4);
    drawActivity(screen, 1, y + 1, leftWidth - 2, bottom - y - 1);
  }
}

int WorldPanel::drawAccounts(TerminalScreen& screen, int x, int y, int width) const {
  screen.put(x, y++, "Accounts", heading());
  std::vector<platform::IMAccountPtr> accounts;
  if (world_) {
    for (const auto& entry : world_->scenario().accounts)
      if (auto account = world_->account(entry.id)) accounts.push_back(account);
  } else {
    accounts = platform::IMAccountController::sharedInstance()->accounts();
  }
  if (accounts.empty()) screen.put(x + 1, y++, "none", muted(), width - 1);
  for (const auto& account : accounts) {
    std::string line = TerminalScreen::fitted(account->uniqueID(), 9) +
                       TerminalScreen::fitted(account->service() ? account->service()->name() : "?", 8) +
                       TerminalScreen::fitted(loginText(account->loginStatus()), 12);
    const int used = screen.put(x + 1, y, line, account->isActive() ? Style{} : muted(), width - 1);
    const int statusX = x + 1 + used;
    if (statusX + 12 < x + width) {
      putStatus(screen, statusX, y, account->myStatus());
      std::string extra;
      if (account->isInvisible()) extra += "invisible ";
      if (!account->myStatusMessage().empty()) extra += "“" + account->myStatusMessage() + "”";
      screen.put(statusX + 12, y, extra, muted(), x + width - statusX - 12);
    }
    ++y;
  }
  return y;
}

int WorldPanel::drawBuddies(TerminalScreen& screen, int x, int y, int width, int rows) const {
  screen.put(x, y++, "Buddies", heading());
  const int shown = std::max(0, rows - 1);
  const auto list = buddies();
  const int count = static_cast<int>(list.size());
  const int first = std::clamp(selected_ - shown / 2, 0, std::max(0, count - shown));
  for (int i = first; i < count && i < first + shown; ++i, ++y) {
    const auto& buddy = list[static_cast<std::size_t>(i)];
    auto handle = handleOf(world_, buddy);
    const bool picked = i == selected_;
    Style style;
    if (picked) style.reverse = true;
    screen.fill(x, y, width, style);
    int column = x + screen.put(x, y, std::string(picked ? "▸ " : "  ") + TerminalScreen::fitted(buddy.name, 17) + " ",
                                style, width);
    if (!handle || column + 12 >= x + width) continue;
    putStatus(screen, column, y, handle->status());
    column += 12;
    const int messageWidth = std::min(22, x + width - column);
    screen.put(column, y, TerminalScreen::fitted(handle->statusMessage(), messageWidth), Style{}, messageWidth);
    column += messageWidth + 1;
    if (column < x + width) screen.put(column, y, buddy.accountID + "/" + buddy.handleID, muted(), x + width - column);
  }
  return y;
}

int WorldPanel::drawApplication(TerminalScreen& screen, int x, int y, int width, int rows) const {
  screen.put(x, y++, "Messaging application", heading());
  std::vector<std::string> lines;
  if (const auto* application = world_ ? world_->application().get() : nullptr) {
    if (application->isScreenSharing())
      lines.push_back("sharing the screen" +
                      (application->screenSharingPartner() ? " with " + *application->screenSharingPartner() : ""));
    for (const auto& chat : application->openedChats())
      lines.push_back(std::string(chat.textOnly ? "text chat" : "chat") + " with " + chat.ID + " on " + chat.service);
    for (const auto& list : application->shownBuddyLists()) lines.push_back("buddy list " + list);
  }
  if (lines.empty()) lines.push_back("nothing opened yet");
  const int shown = std::max(1, rows - 1);
  const int first = std::max(0, static_cast<int>(lines.size()) - shown);
  for (int i = first; i < static_cast<int>(lines.size()); ++i)
    screen.put(x + 1, y++, lines[static_cast<std::size_t>(i)], muted(), width - 1);
  return y;
}

void WorldPanel::drawActivity(TerminalScreen& screen, int x, int y, int width, int rows) const {
  if (rows < 2) return;
  screen.put(x, y++, "What happened", heading());
  const int shown = rows - 1;
  const int first = std::max(0, static_cast<int>(activity_.size()) - shown);
  for (int i = first; i < static_cast<int>(activity_.size()); ++i)
    screen.put(x + 1, y++, activity_[static_cast<std::size_t>(i)], muted(), width - 1);
}

}  // namespace kibhost
