#pragma once

#include <cstdint>
#include <memory>

#include "platform/core/Bundle.h"
#include "platform/ui/MenuExtra.h"

// How a menu-extra bundle's shared library offers its principal class to the
// status-bar program. The library exports one C function,
//
//   extern "C" const platform::MenuExtraClass* kib_menu_extra_class_named(const char* className);
//
// that answers the class of that name (nil for a name it does not define).
// The program reads the principal class's name from the bundle's Info.json,
// looks it up through this function and creates the extra with the class's
// initWithBundle. Program and bundle share the platform library, so objects
// cross the boundary as ordinary shared pointers.
namespace platform {

// Raised whenever the layout of MenuExtraClass or the meaning of its entries changes.
inline constexpr std::uint32_t kMenuExtraPluginVersion = 1;

// A principal class as a plug-in exports it.
struct MenuExtraClass {
  // kMenuExtraPluginVersion of the platform the plug-in was built against.
  std::uint32_t pluginVersion;
  const char* name;
  // The class's initialiser: the extra, or nil when it refuses the bundle.
  std::shared_ptr<MenuExtra> (*initWithBundle)(const BundlePtr& bundle);
  // Optional self-test entry points for an outside driver (nil when the class
  // has none): schedule test n (0 for all) and answer how long test n takes.
  void (*runSelfTestDuration)(MenuExtra& extra, std::uint32_t test, double duration);
  double (*durationOfTest)(MenuExtra& extra, std::uint32_t test);
};

using MenuExtraClassLookup = const MenuExtraClass* (*)(const char* className);

inline constexpr const char* kMenuExtraClassLookupSymbol = "kib_menu_extra_class_named";

}  // namespace platform
