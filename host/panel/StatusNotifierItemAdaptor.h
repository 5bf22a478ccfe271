#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/panel/PanelIcons.h"

namespace kibhost {

// The org.kde.StatusNotifierItem object (/StatusNotifierItem). Thin: it
// answers properties from the state it was last given and turns changes into
// the New* signals, each only when its part of the state really changed.
class StatusNotifierItemAdaptor {
 public:
  static constexpr const char* kInterface = "org.kde.StatusNotifierItem";
  static constexpr const char* kObjectPath = "/StatusNotifierItem";

  struct State {
    std::string title;
    std::string status = "Active";  // or "NeedsAttention"
    std::vector<PanelIcons::Pixmap> icon;
    std::vector<PanelIcons::Pixmap> attentionIcon;
    std::string toolTipTitle;
    std::string toolTipText;
    std::string label;
    std::string labelGuide;
  };

  class Delegate {
   public:
    virtual ~Delegate() = default;
    virtual void statusItemActivated(std::int32_t x, std::int32_t y) = 0;
  };

  // Exports the object with the state it starts from (no signals for it).
  StatusNotifierItemAdaptor(sdbus::IConnection& connection, std::string id, std::string menuPath, State state,
                            Delegate& delegate);
  ~StatusNotifierItemAdaptor();
  StatusNotifierItemAdaptor(const StatusNotifierItemAdaptor&) = delete;
  StatusNotifierItemAdaptor& operator=(const StatusNotifierItemAdaptor&) = delete;

  const State& state() const { return state_; }
  // Takes the new state and sends a signal for each part that changed.
  void publish(const State& state);

 private:
  using Pixmaps = std::vector<sdbus::Struct<std::int32_t, std::int32_t, std::vector<std::uint8_t>>>;
  using ToolTip = sdbus::Struct<std::string, Pixmaps, std::string, std::string>;

  void registerInterface();
  static Pixmaps toBus(const std::vector<PanelIcons::Pixmap>& pixmaps);
  void emit(const char* signal);

  std::unique_ptr<sdbus::IObject> object_;
  std::string id_;
  std::string menuPath_;
  Delegate& delegate_;
  State state_;
};

}  // namespace kibhost
