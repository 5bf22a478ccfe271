#include "host/panel/WatcherRegistration.h"

namespace kibhost {

WatcherRegistration::WatcherRegistration(kibbus::BusConnection& bus, std::string itemName,
                                         std::function<void(const std::string&)> note)
    : bus_(bus),
      itemName_(std::move(itemName)),
      note_(std::move(note)),
      self_(std::make_shared<WatcherRegistration*>(this)),
      watch_(bus.watchName(kWatcherName, [this](const std::string& owner) { watcherChanged(owner); })) {
  const std::string owner = bus_.ownerOf(kWatcherName);
  if (owner.empty())
    note_("no StatusNotifierWatcher on the session bus yet; the item registers when a panel starts one");
  else
    watcherChanged(owner);
}

WatcherRegistration::~WatcherRegistration() = default;

void WatcherRegistration::watcherChanged(const std::string& owner) {
  if (owner == owner_) return;
  owner_ = owner;
  registered_ = false;
  if (!owner_.empty()) registerItem();
}

void WatcherRegistration::registerItem() {
  proxy_ = sdbus::createProxy(bus_.connection(), kWatcherName, kWatcherPath);
  std::weak_ptr<WatcherRegistration*> self = self_;
  const std::string owner = owner_;
  proxy_->callMethodAsync("RegisterStatusNotifierItem")
      .onInterface(kWatcherName)
      .withArguments(itemName_)
      .uponReplyInvoke([self, owner](const sdbus::Error* error) {
        auto registration = self.lock();
        if (!registration || (*registration)->owner_ != owner) return;  // a newer watcher took over
        if (error) {
          (*registration)->note_("the StatusNotifierWatcher refused the item: " + error->getMessage());
          return;
        }
        (*registration)->registered_ = true;
        ++(*registration)->registrations_;
      });
}

}  // namespace kibhost
