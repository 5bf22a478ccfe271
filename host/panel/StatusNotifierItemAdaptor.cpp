#include "host/panel/StatusNotifierItemAdaptor.h"

namespace kibhost {
namespace {

constexpr const char* kInvalidArgs = "org.freedesktop.DBus.Error.InvalidArgs";

}  // namespace

StatusNotifierItemAdaptor::StatusNotifierItemAdaptor(sdbus::IConnection& connection, std::string id,
                                                     std::string menuPath, State state, Delegate& delegate)
    : object_(sdbus::createObject(connection, kObjectPath)),
      id_(std::move(id)),
      menuPath_(std::move(menuPath)),
      delegate_(delegate),
      state_(std::move(state)) {
  registerInterface();
}

StatusNotifierItemAdaptor::~StatusNotifierItemAdaptor() { object_->unregister(); }

StatusNotifierItemAdaptor::Pixmaps StatusNotifierItemAdaptor::toBus(const std::vector<PanelIcons::Pixmap>& pixmaps) {
  Pixmaps bus;
  for (const auto& pixmap : pixmaps) bus.emplace_back(pixmap.width, pixmap.height, pixmap.argb);
  return bus;
}

void StatusNotifierItemAdaptor::registerInterface() {
  auto& o = *object_;
  o.registerProperty("Category").onInterface(kInterface).withGetter([] { return std::string("Communications"); });
  o.registerProperty("Id").onInterface(kInterface).withGetter([this] { return id_; });
  o.registerProperty("Title").onInterface(kInterface).withGetter([this] { return state_.title; });
  o.registerProperty("Status").onInterface(kInterface).withGetter([this] { return state_.status; });
  o.registerProperty("WindowId").onInterface(kInterface).withGetter([] { return std::int32_t{0}; });
  o.registerProperty("IconThemePath").onInterface(kInterface).withGetter([] { return std::string(); });
  o.registerProperty("IconName").onInterface(kInterface).withGetter([] { return std::string(); });
  o.registerProperty("IconPixmap").onInterface(kInterface).withGetter([this] { return toBus(state_.icon); });
  o.registerProperty("OverlayIconName").onInterface(kInterface).withGetter([] { return std::string(); });
  o.registerProperty("OverlayIconPixmap").onInterface(kInterface).withGetter([] { return Pixmaps{}; });
  o.registerProperty("AttentionIconName").onInterface(kInterface).withGetter([] { return std::string(); });
  o.registerProperty("AttentionIconPixmap").onInterface(kInterface).withGetter([this] {
    return toBus(state_.attentionIcon);
  });
  o.registerProperty("AttentionMovieName").onInterface(kInterface).withGetter([] { return std::string(); });
  o.registerProperty("ToolTip").onInterface(kInterface).withGetter([this] {
    return ToolTip(std::string(), Pixmaps{}, state_.toolTipTitle, state_.toolTipText);
  });
  o.registerProperty("ItemIsMenu").onInterface(kInterface).withGetter([] { return true; });
  o.registerProperty("Menu").onInterface(kInterface).withGetter([this] { return sdbus::ObjectPath(menuPath_); });
  o.registerProperty("XAyatanaLabel").onInterface(kInterface).withGetter([this] { return state_.label; });
  o.registerProperty("XAyatanaLabelGuide").onInterface(kInterface).withGetter([this] { return state_.labelGuide; });
  o.registerProperty("XAyatanaOrderingIndex").onInterface(kInterface).withGetter([] { return std::uint32_t{0}; });

  // With ItemIsMenu the panel shows the menu itself; a click that still
  // arrives as an activation opens it the same way.
  o.registerMethod("Activate")
      .onInterface(kInterface)
      .withInputParamNames("x", "y")
      .implementedAs([this](std::int32_t x, std::int32_t y) { delegate_.statusItemActivated(x, y); });
  o.registerMethod("ContextMenu")
      .onInterface(kInterface)
      .withInputParamNames("x", "y")
      .implementedAs([this](std::int32_t x, std::int32_t y) { delegate_.statusItemActivated(x, y); });
  o.registerMethod("SecondaryActivate")
      .onInterface(kInterface)
      .withInputParamNames("x", "y")
      .implementedAs([](std::int32_t, std::int32_t) {});
  o.registerMethod("Scroll")
      .onInterface(kInterface)
      .withInputParamNames("delta", "orientation")
      .implementedAs([](std::int32_t, const std::string& orientation) {
        if (orientation != "horizontal" && orientation != "vertical")
          throw sdbus::Error(kInvalidArgs,
                             "orientation must be \"horizontal\" or \"vertical\", not \"" + orientation + "\"");
      });
  o.registerMethod("ProvideXdgActivationToken")
      .onInterface(kInterface)
      .withInputParamNames("token")
      .implementedAs([](const std::string&) {});

  for (const char* signal : {"NewTitle", "NewIcon", "NewAttentionIcon", "NewOverlayIcon", "NewToolTip"})
    o.registerSignal(signal).onInterface(kInterface);
  o.registerSignal("NewStatus").onInterface(kInterface).withParameters<std::string>("status");
  o.registerSignal("XAyatanaNewLabel")
      .onInterface(kInterface)
      .withParameters<std::string, std::string>("label", "guide");
  o.finishRegistration();
}

void StatusNotifierItemAdaptor::emit(const char* signal) { object_->emitSignal(signal).onInterface(kInterface); }

void StatusNotifierItemAdaptor::publish(const State& state) {
  const State old = std::exchange(state_, state);
  if (old.title != state.title) emit("NewTitle");
  if (old.icon != state.icon) emit("NewIcon");
  if (old.attentionIcon != state.attentionIcon) emit("NewAttentionIcon");
  if (old.status != state.status) object_->emitSignal("NewStatus").onInterface(kInterface).withArguments(state.status);
  if (old.toolTipTitle != state.toolTipTitle || old.toolTipText != state.toolTipText) emit("NewToolTip");
  if (old.label != state.label || old.labelGuide != state.labelGuide)
    object_->emitSignal("XAyatanaNewLabel").onInterface(kInterface).withArguments(state.label, state.labelGuide);
}

}  // namespace kibhost
