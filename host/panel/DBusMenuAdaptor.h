#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/panel/DBusMenuLayout.h"

namespace kibhost {

// The com.canonical.dbusmenu object (/MenuBar) over a DBusMenuLayout. It
// validates every argument (an unknown id, event or property name is answered
// with an error and changes nothing) and forwards openings, clicks and
// closings to its delegate. Answering AboutToShow of the root waits until the
// delegate has the extra's menu exported (answerAboutToShow), so the panel's
// next GetLayout already sees it.
class DBusMenuAdaptor {
 public:
  static constexpr const char* kInterface = "com.canonical.dbusmenu";
  static constexpr const char* kObjectPath = "/MenuBar";
  static constexpr const char* kUnknownIdError = "com.canonical.dbusmenu.Error.UnknownId";
  static constexpr const char* kInvalidArgsError = "org.freedesktop.DBus.Error.InvalidArgs";

  class Delegate {
   public:
    virtual ~Delegate() = default;
    // The root is about to show or was opened: the extra's menu is wanted.
    virtual void dbusMenuWillOpen() = 0;
    virtual void dbusMenuItemClicked(std::int32_t id) = 0;
    virtual void dbusMenuDidClose() = 0;
  };

  using Node = sdbus::Struct<std::int32_t, std::map<std::string, sdbus::Variant>, std::vector<sdbus::Variant>>;

  DBusMenuAdaptor(sdbus::IConnection& connection, const DBusMenuLayout& layout, Delegate& delegate);
  ~DBusMenuAdaptor();
  DBusMenuAdaptor(const DBusMenuAdaptor&) = delete;
  DBusMenuAdaptor& operator=(const DBusMenuAdaptor&) = delete;

  // Tells the panel what a rebuild of the layout changed.
  void publish(const DBusMenuLayout::Changes& changes);
  // Answers the AboutToShow calls of the root that wait for the menu.
  void answerAboutToShow(bool needUpdate);
  std::size_t pendingAboutToShow() const { return pendingAboutToShow_.size(); }

  static sdbus::Variant toBus(const DBusMenuLayout::Value& value);

 private:
  void registerInterface();
  const DBusMenuLayout::Entry& knownEntry(std::int32_t id) const;
  std::map<std::string, sdbus::Variant> propertiesOf(const DBusMenuLayout::Entry& entry,
                                                     const std::vector<std::string>& names) const;
  Node nodeOf(const DBusMenuLayout::Entry& entry, std::int32_t depth, const std::vector<std::string>& names) const;
  // Checks an event before anything happens; throws the error to answer.
  static void checkEventName(const std::string& name);
  void handleEvent(std::int32_t id, const std::string& name);
  void aboutToShow(sdbus::Result<bool>&& result, std::int32_t id);

  std::unique_ptr<sdbus::IObject> object_;
  const DBusMenuLayout& layout_;
  Delegate& delegate_;
  std::vector<sdbus::Result<bool>> pendingAboutToShow_;
};

}  // namespace kibhost
