#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "host/SlotPicture.h"
#include "host/StatusBarHost.h"
#include "host/Transcript.h"
#include "platform/core/AssertionHandler.h"
#include "platform/core/Log.h"
#include "platform/core/Object.h"
#include "platform/ui/Workspace.h"
#include "sim/SimWorld.h"

namespace kibhost {

// Writes everything observable to a transcript: the slot (length, icon,
// banner text and its scrolling, highlight), every menu that opens and how it
// closes, the world's events, URLs opened and what the messaging application
// did, daemon requests, distributed notifications, log lines (the test log
// among them), preferences written and assertion failures. It is the host's
// delegate and hooks itself into the platform while it exists.
class TranscriptRecorder final : public StatusBarHostDelegate {
 public:
  // Attach after the world is made (it replaces the daemon controller) and
  // before the extra is created. world: nil when a real backend plays the daemon.
  TranscriptRecorder(Transcript& transcript, sim::SimWorld* world);
  ~TranscriptRecorder() override;
  TranscriptRecorder(const TranscriptRecorder&) = delete;
  TranscriptRecorder& operator=(const TranscriptRecorder&) = delete;

  Transcript& transcript() { return transcript_; }
  // What the messaging application (or a real backend standing in for it) did.
  // The first line of every transcript: the extra loaded and the world it runs on.
  void recordStart(const PluginBundle& plugin, const std::string& scenarioName);
  void recordApplicationActivity(const std::string& line);

  // Also told of every log line (after it is recorded).
  void setLogListener(std::function<void(platform::Log::Channel, const std::string&)> listener) {
    logListener_ = std::move(listener);
  }
  // Whether daemon queries (isConnected, vcCapabilities, …) are written; commands always are.
  void setRecordsQueries(bool records) { recordsQueries_ = records; }
  // When a menu left open must close (the end of a headless run).
  void setMenuTrackingDeadline(double time) { deadline_ = time; }

  void slotLengthDidChange(double length) override;
  void slotDidDisplay(const platform::RecordingCanvas& canvas) override;
  void menuDidOpen(const platform::MenuPtr& menu) override;
  void menuDidClose(std::int64_t chosenIndex) override;
  double menuTrackingDeadline() override { return deadline_; }

  // Another delegate told everything this one hears, after it is recorded
  // (the picture writer); not owned, nil for none.
  void setFollower(StatusBarHostDelegate* follower) { follower_ = follower; }

  // The slot as it was last drawn.
  const SlotPicture& slot() const { return slot_; }

 private:
  void hookWorld(sim::SimWorld* world);
  void hookPlatform();
  void recordPicture(const SlotPicture& picture);
  void recordLog(platform::Log::Channel channel, const std::string& line);

  Transcript& transcript_;
  sim::SimWorld* world_;
  std::function<void(platform::Log::Channel, const std::string&)> logListener_;
  bool recordsQueries_ = true;
  double deadline_;
  StatusBarHostDelegate* follower_ = nullptr;

  std::optional<double> length_;
  bool drawn_ = false;
  SlotPicture slot_;
  bool scrolling_ = false;
  int wraps_ = 0;
  double lastStep_ = 0;  // how far the text moved at its last scroll step
  platform::MenuPtr openMenu_;

  std::uint64_t daemonToken_ = 0;
  platform::ObjectPtr distributedToken_;
  platform::Workspace::URLHandler opener_;
  platform::Log::Sink previousSink_;
  std::shared_ptr<platform::AssertionHandler> previousAssertionHandler_;
};

}  // namespace kibhost
