#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "host/TerminalScreen.h"
#include "sim/SimWorld.h"

namespace kibhost {

// The terminal's view of the simulated world: the user's accounts, the
// buddies with their statuses (one row per handle, one of them picked for the
// keys that change the world), what the messaging application opened, and a
// running list of what happened. Without a world (a real backend) it shows the
// accounts and buddies the backend mirrored, and what the client did.
class WorldPanel {
 public:
  struct Buddy {
    std::string accountID;
    std::string handleID;
    std::string name;  // the person's name, else the screen name
  };

  // world nil: a real backend, named by scenarioName.
  WorldPanel(sim::SimWorld* world, std::string scenarioName);

  void addActivity(std::string line);
  void moveSelection(int direction);
  const Buddy* selectedBuddy() const;

  // Draws into the rows [top, bottom) of the screen.
  void draw(TerminalScreen& screen, int top, int bottom) const;

 private:
  int drawAccounts(TerminalScreen& screen, int x, int y, int width) const;
  int drawBuddies(TerminalScreen& screen, int x, int y, int width, int rows) const;
  int drawApplication(TerminalScreen& screen, int x, int y, int width, int rows) const;
  void drawActivity(TerminalScreen& screen, int x, int y, int width, int rows) const;

  // The rows: the scenario's handles, or the mirrored buddy lists as they are now.
  std::vector<Buddy> buddies() const;

  sim::SimWorld* world_;
  std::string scenarioName_;
  std::vector<Buddy> buddies_;
  int selected_ = 0;
  std::deque<std::string> activity_;
};

}  // namespace kibhost
