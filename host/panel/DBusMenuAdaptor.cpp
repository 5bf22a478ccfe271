#include "host/panel/DBusMenuAdaptor.h"

#include <algorithm>
#include <tuple>

namespace kibhost {
namespace {

using BusProperties = std::map<std::string, sdbus::Variant>;
using EventArguments = sdbus::Struct<std::int32_t, std::string, sdbus::Variant, std::uint32_t>;

constexpr const char* kEventNames[] = {"clicked", "hovered", "opened", "closed"};

}  // namespace

DBusMenuAdaptor::DBusMenuAdaptor(sdbus::IConnection& connection, const DBusMenuLayout& layout, Delegate& delegate)
    : object_(sdbus::createObject(connection, kObjectPath)), layout_(layout), delegate_(delegate) {
  registerInterface();
}

DBusMenuAdaptor::~DBusMenuAdaptor() {
  answerAboutToShow(false);
  object_->unregister();
}

sdbus::Variant DBusMenuAdaptor::toBus(const DBusMenuLayout::Value& value) {
  return std::visit([](const auto& v) { return sdbus::Variant(v); }, value);
}

const DBusMenuLayout::Entry& DBusMenuAdaptor::knownEntry(std::int32_t id) const {
  const auto* entry = layout_.entry(id);
  if (!entry) throw sdbus::Error(kUnknownIdError, "no menu item with id " + std::to_string(id));
  return *entry;
}

BusProperties DBusMenuAdaptor::propertiesOf(const DBusMenuLayout::Entry& entry,
                                            const std::vector<std::string>& names) const {
  BusProperties properties;
  for (const auto& [name, value] : entry.properties)
    if (names.empty() || std::find(names.begin(), names.end(), name) != names.end()) properties[name] = toBus(value);
  return properties;
}

DBusMenuAdaptor::Node DBusMenuAdaptor::nodeOf(const DBusMenuLayout::Entry& entry, std::int32_t depth,
                                              const std::vector<std::string>& names) const {
  std::vector<sdbus::Variant> children;
  if (depth != 0)
    for (std::int32_t child : entry.children) children.emplace_back(nodeOf(knownEntry(child), depth - 1, names));
  return Node(entry.id, propertiesOf(entry, names), std::move(children));
}

void DBusMenuAdaptor::checkEventName(const std::string& name) {
  if (std::find(std::begin(kEventNames), std::end(kEventNames), name) == std::end(kEventNames))
    throw sdbus::Error(kInvalidArgsError, "unknown menu event \"" + name + "\"");
}

void DBusMenuAdaptor::handleEvent(std::int32_t id, const std::string& name) {
  if (name == "clicked") {
    delegate_.dbusMenuItemClicked(id);
  } else if (id == 0 && name == "opened") {
    delegate_.dbusMenuWillOpen();
  } else if (id == 0 && name == "closed") {
    delegate_.dbusMenuDidClose();
  }
}

void DBusMenuAdaptor::aboutToShow(sdbus::Result<bool>&& result, std::int32_t id) {
  knownEntry(id);
  if (id != 0) return result.returnResults(false);
  pendingAboutToShow_.push_back(std::move(result));
  delegate_.dbusMenuWillOpen();
}

void DBusMenuAdaptor::answerAboutToShow(bool needUpdate) {
  auto pending = std::move(pendingAboutToShow_);
  pendingAboutToShow_.clear();
  for (auto& result : pending) result.returnResults(needUpdate);
}

void DBusMenuAdaptor::registerInterface() {
  auto& o = *object_;
  o.registerProperty("Version").onInterface(kInterface).withGetter([] { return std::uint32_t{3}; });
  o.registerProperty("TextDirection").onInterface(kInterface).withGetter([] { return std::string("ltr"); });
  o.registerProperty("Status").onInterface(kInterface).withGetter([] { return std::string("normal"); });
  o.registerProperty("IconThemePath").onInterface(kInterface).withGetter([] { return std::vector<std::string>{}; });

  o.registerMethod("GetLayout")
      .onInterface(kInterface)
      .withInputParamNames("parentId", "recursionDepth", "propertyNames")
      .withOutputParamNames("revision", "layout")
      .implementedAs([this](std::int32_t parent, std::int32_t depth, const std::vector<std::string>& names) {
        if (depth < -1) throw sdbus::Error(kInvalidArgsError, "recursionDepth must be -1 or more");
        return std::tuple<std::uint32_t, Node>(layout_.revision(), nodeOf(knownEntry(parent), depth, names));
      });
  o.registerMethod("GetGroupProperties")
      .onInterface(kInterface)
      .withInputParamNames("ids", "propertyNames")
      .withOutputParamNames("properties")
      .implementedAs([this](const std::vector<std::int32_t>& ids, const std::vector<std::string>& names) {
        std::vector<sdbus::Struct<std::int32_t, BusProperties>> answer;
        for (std::int32_t id : ids.empty() ? layout_.ids() : ids) {
          const auto& entry = knownEntry(id);
          answer.emplace_back(id, propertiesOf(entry, names));
        }
        return answer;
      });
  o.registerMethod("GetProperty")
      .onInterface(kInterface)
      .withInputParamNames("id", "name")
      .withOutputParamNames("value")
      .implementedAs([this](std::int32_t id, const std::string& name) {
        const auto& properties = knownEntry(id).properties;
        auto found = properties.find(name);
        if (found == properties.end())
          throw sdbus::Error(kInvalidArgsError,
                             "menu item " + std::to_string(id) + " has no property \"" + name + "\"");
        return toBus(found->second);
      });
  o.registerMethod("Event")
      .onInterface(kInterface)
      .withInputParamNames("id", "eventId", "data", "timestamp")
      .implementedAs([this](std::int32_t id, const std::string& name, const sdbus::Variant&, std::uint32_t) {
        knownEntry(id);
        checkEventName(name);
        handleEvent(id, name);
      });
  o.registerMethod("EventGroup")
      .onInterface(kInterface)
      .withInputParamNames("events")
      .withOutputParamNames("idErrors")
      .implementedAs([this](const std::vector<EventArguments>& events) {
        std::vector<std::int32_t> unknown;
        for (const auto& event : events) {
          checkEventName(std::get<1>(event));
          if (!layout_.entry(std::get<0>(event))) unknown.push_back(std::get<0>(event));
        }
        if (!events.empty() && unknown.size() == events.size())
          throw sdbus::Error(kUnknownIdError, "none of the menu item ids is known");
        for (const auto& event : events)
          if (layout_.entry(std::get<0>(event))) handleEvent(std::get<0>(event), std::get<1>(event));
        return unknown;
      });
  o.registerMethod("AboutToShow")
      .onInterface(kInterface)
      .withInputParamNames("id")
      .withOutputParamNames("needUpdate")
      .implementedAs([this](sdbus::Result<bool>&& result, std::int32_t id) { aboutToShow(std::move(result), id); });
  o.registerMethod("AboutToShowGroup")
      .onInterface(kInterface)
      .withInputParamNames("ids")
      .withOutputParamNames("updatesNeeded", "idErrors")
      .implementedAs([this](const std::vector<std::int32_t>& ids) {
        std::vector<std::int32_t> updates;
        std::vector<std::int32_t> unknown;
        for (std::int32_t id : ids) (layout_.entry(id) ? updates : unknown).push_back(id);
        if (!ids.empty() && unknown.size() == ids.size())
          throw sdbus::Error(kUnknownIdError, "none of the menu item ids is known");
        updates.erase(std::remove_if(updates.begin(), updates.end(), [](std::int32_t id) { return id != 0; }),
                      updates.end());
        if (!updates.empty()) delegate_.dbusMenuWillOpen();
        return std::tuple<std::vector<std::int32_t>, std::vector<std::int32_t>>(updates, unknown);
      });

  o.registerSignal("LayoutUpdated")
      .onInterface(kInterface)
      .withParameters<std::uint32_t, std::int32_t>("revision", "parent");
  o.registerSignal("ItemsPropertiesUpdated")
      .onInterface(kInterface)
      .withParameters<std::vector<sdbus::Struct<std::int32_t, BusProperties>>,
                      std::vector<sdbus::Struct<std::int32_t, std::vector<std::string>>>>("updatedProps",
                                                                                          "removedProps");
  o.registerSignal("ItemActivationRequested")
      .onInterface(kInterface)
      .withParameters<std::int32_t, std::uint32_t>("id", "timestamp");
  o.finishRegistration();
}

void DBusMenuAdaptor::publish(const DBusMenuLayout::Changes& changes) {
  if (changes.layout) {
    object_->emitSignal("LayoutUpdated").onInterface(kInterface).withArguments(layout_.revision(), std::int32_t{0});
    return;
  }
  if (changes.updated.empty() && changes.removed.empty()) return;
  std::vector<sdbus::Struct<std::int32_t, BusProperties>> updated;
  for (const auto& [id, properties] : changes.updated) {
    BusProperties bus;
    for (const auto& [name, value] : properties) bus[name] = toBus(value);
    updated.emplace_back(id, std::move(bus));
  }
  std::vector<sdbus::Struct<std::int32_t, std::vector<std::string>>> removed;
  for (const auto& [id, names] : changes.removed) removed.emplace_back(id, names);
  object_->emitSignal("ItemsPropertiesUpdated").onInterface(kInterface).withArguments(updated, removed);
}

}  // namespace kibhost
