#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/ui/Color.h"

namespace kibrender {

// Whether the panel (or picture) behind the icons is light or dark: template
// glyphs are tinted to stand out on it (docs/rendering.md).
enum class PanelTheme { Light, Dark };

// The template tint for a theme: near-black on light, near-white on dark, opaque.
platform::Color templateTint(PanelTheme theme);
// "light" or "dark"; nullopt for anything else.
std::optional<PanelTheme> panelThemeNamed(const std::string& name);
const char* panelThemeName(PanelTheme theme);

// Chooses the theme of the desktop the program runs on: KIBBAR_PANEL_THEME
// ("light" or "dark") when set, else a GTK_THEME that names a dark variant
// ("Adwaita:dark", "Arc-Dark"), else the GTK settings file's theme name or
// its prefer-dark setting, else light. getenv and readFile are injected so
// tests need no real environment.
PanelTheme detectPanelTheme(const std::function<std::optional<std::string>(const std::string&)>& getenv,
                            const std::function<std::optional<std::string>(const std::string&)>& readFile);
// The same with the process's environment and files.
PanelTheme detectPanelTheme();

}  // namespace kibrender
