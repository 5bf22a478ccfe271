#include "host/TranscriptRecorder.h"

#include <limits>

#include "host/MenuJSON.h"
#include "host/ReturningAssertionHandler.h"
#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/InputFile.h"
#include "platform/core/JSONSerialization.h"
#include "platform/core/Preferences.h"
#include "platform/im/IMDaemonController.h"
#include "platform/im/IMDaemonRequest.h"
#include "platform/ui/Workspace.h"

namespace kibhost {
namespace {

using Fields = Transcript::Fields;

const char* channelName(platform::Log::Channel channel) {
  switch (channel) {
    case platform::Log::Channel::Always:
      return "always";
    case platform::Log::Channel::Warning:
      return "warning";
    case platform::Log::Channel::Test:
      return "test";
    case platform::Log::Channel::System:
      return "system";
  }
  return "?";
}

// The file's JSON in its own key order; null when it is unreadable or past the shared limits.
Fields readJSONFile(const std::filesystem::path& file) {
  auto contents = platform::InputFile::read(file);
  if (!contents.ok() || platform::JSONSerialization::findLimitProblem(contents.text)) return Fields(nullptr);
  auto json = Fields::parse(contents.text, nullptr, false);
  return json.is_discarded() ? Fields(nullptr) : json;
}

double roundedLength(double length) { return std::round(length * 1000.0) / 1000.0; }

}  // namespace

TranscriptRecorder::TranscriptRecorder(Transcript& transcript, sim::SimWorld* world)
    : transcript_(transcript), world_(world), deadline_(std::numeric_limits<double>::infinity()) {
  hookWorld(world);
  hookPlatform();
}

void TranscriptRecorder::recordStart(const PluginBundle& plugin, const std::string& scenarioName) {
  const auto& bundle = plugin.bundle();
  transcript_.write("start", {{"bundle", bundle->bundleIdentifier()},
                              {"principalClass", bundle->principalClassName()},
                              {"scenario", scenarioName}});
}

void TranscriptRecorder::recordApplicationActivity(const std::string& line) {
  transcript_.write("application", {{"activity", line}});
}

TranscriptRecorder::~TranscriptRecorder() {
  if (world_) {
    world_->setEventObserver(nullptr);
    if (const auto& application = world_->application()) application->setActivityObserver(nullptr);
  }
  platform::IMDaemonController::sharedController()->removeRequestObserver(daemonToken_);
  platform::DistributedNotificationCenter::defaultCenter().removeObserver(distributedToken_.get());
  platform::Workspace::sharedWorkspace().setURLHandler(opener_);
  platform::Preferences::setWriteObserver(nullptr);
  platform::Log::setSink(previousSink_);
  platform::AssertionHandler::setCurrent(previousAssertionHandler_);
}

void TranscriptRecorder::hookWorld(sim::SimWorld* world) {
  if (world) {
    world->setEventObserver([this](const sim::SimEvent& event) {
      transcript_.write("event", {{"event", event.description()}});
    });
    if (const auto& application = world->application())
      application->setActivityObserver([this](const std::string& line) { recordApplicationActivity(line); });
  }
  auto& workspace = platform::Workspace::sharedWorkspace();
  opener_ = workspace.setURLHandler(nullptr);
  workspace.setURLHandler([this, opener = opener_](const std::string& url) {
    transcript_.write("url", {{"url", url}});
    return opener && opener(url);
  });
}

void TranscriptRecorder::hookPlatform() {
  daemonToken_ = platform::IMDaemonController::sharedController()->addRequestObserver(
      [this](const platform::IMDaemonRequest& request) {
        if (request.isQuery) {
          if (recordsQueries_)
            transcript_.write(
                "daemon-query",
                {{"request", request.selector}, {"arguments", request.arguments}, {"answer", request.answer}});
        } else {
          transcript_.write("daemon", {{"request", request.selector}, {"arguments", request.arguments}});
        }
      });
  distributedToken_ = platform::DistributedNotificationCenter::defaultCenter().addObserverForName(
      std::nullopt, nullptr, [this](const platform::NotificationPtr& notification) {
        transcript_.write("distributed",
                          {{"name", notification->name()}, {"object", MenuJSON::object(notification->object().get())}});
      });
  platform::Preferences::setWriteObserver([this](const std::string& domain, const std::filesystem::path& file) {
    transcript_.write("preferences", {{"domain", domain}, {"values", readJSONFile(file)}});
  });
  previousSink_ = platform::Log::setSink(
      [this](platform::Log::Channel channel, const std::string& line) { recordLog(channel, line); });
  previousAssertionHandler_ = platform::AssertionHandler::setCurrent(std::make_shared<ReturningAssertionHandler>(
      [this](const std::string& method, const platform::Object* object, const std::string& file, int line,
             const std::string& description) {
        transcript_.write("assertion", {{"method", method},
                                        {"object", MenuJSON::object(object)},
                                        {"file", file},
                                        {"line", line},
                                        {"description", description}});
      }));
}

void TranscriptRecorder::recordLog(platform::Log::Channel channel, const std::string& line) {
  if (channel == platform::Log::Channel::Test)
    transcript_.write("test-log", {{"line", line}});
  else
    transcript_.write("log", {{"channel", channelName(channel)}, {"line", line}});
  if (logListener_) logListener_(channel, line);
}

void TranscriptRecorder::slotLengthDidChange(double length) {
  const double rounded = roundedLength(length);
  if (length_ && *length_ == rounded) return;
  length_ = rounded;
  transcript_.write("length", {{"length", rounded}});
  if (follower_) follower_->slotLengthDidChange(length);
}

void TranscriptRecorder::slotDidDisplay(const platform::RecordingCanvas& canvas) {
  recordPicture(SlotPicture::fromCanvas(canvas));
  if (follower_) follower_->slotDidDisplay(canvas);
}

void TranscriptRecorder::recordPicture(const SlotPicture& picture) {
  const bool first = !drawn_;
  drawn_ = true;
  if (first || picture.image != slot_.image || picture.dimmed != slot_.dimmed)
    transcript_.write("icon", {{"image", picture.image}, {"dimmed", picture.dimmed}});
  if (!first && picture.highlighted != slot_.highlighted)
    transcript_.write("highlight", {{"highlighted", picture.highlighted}});
  if (first || picture.text != slot_.text) {
    if (!first || picture.text)
      transcript_.write("banner", {{"text", picture.text ? Fields(*picture.text) : Fields(nullptr)}});
    scrolling_ = false;
    wraps_ = 0;
  } else if (picture.text && picture.textX < slot_.textX) {
    lastStep_ = slot_.textX - picture.textX;
    if (!scrolling_) transcript_.write("banner-scroll", {{"event", "start"}});
    scrolling_ = true;
  } else if (picture.text && picture.textX > slot_.textX) {
    // A finished cycle puts the text where its following copy stood (no
    // visible jump); any other jump back restarts the scrolling from the start.
    const bool seamless = slot_.copyX && *slot_.copyX - picture.textX <= lastStep_ + 1e-6;
    if (seamless) {
      transcript_.write("banner-scroll", {{"event", "wrap"}, {"count", ++wraps_}});
    } else {
      scrolling_ = false;
      wraps_ = 0;
    }
  }
  slot_ = picture;
}

void TranscriptRecorder::menuDidOpen(const platform::MenuPtr& menu) {
  openMenu_ = menu;
  const auto& items = menu->itemArray();
  transcript_.writeWithArray("menu", "items", items.size(), [&items](std::size_t index) {
    return MenuJSON::item(*items[index], static_cast<std::int64_t>(index));
  });
  if (follower_) follower_->menuDidOpen(menu);
}

void TranscriptRecorder::menuDidClose(std::int64_t chosenIndex) {
  Fields fields;
  if (chosenIndex >= 0 && openMenu_) {
    fields["chosen"] = chosenIndex;
    auto item = openMenu_->itemAtIndex(chosenIndex);
    fields["title"] = item ? item->title() : "";
  } else {
    fields["chosen"] = nullptr;
  }
  openMenu_.reset();
  transcript_.write("menu-close", fields);
  if (follower_) follower_->menuDidClose(chosenIndex);
}

}  // namespace kibhost
