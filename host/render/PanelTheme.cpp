#include "host/render/PanelTheme.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace kibrender {
namespace {

std::string lowercase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

bool namesDarkVariant(const std::string& themeName) { return lowercase(themeName).find("dark") != std::string::npos; }

// The value of "key = value" in an ini text, or nullopt.
std::optional<std::string> iniValue(const std::string& text, const std::string& key) {
  std::istringstream lines(text);
  std::string line;
  while (std::getline(lines, line)) {
    const auto equals = line.find('=');
    if (equals == std::string::npos) continue;
    auto trim = [](std::string s) {
      const auto begin = s.find_first_not_of(" \t\r");
      if (begin == std::string::npos) return std::string();
      return s.substr(begin, s.find_last_not_of(" \t\r") - begin + 1);
    };
    if (trim(line.substr(0, equals)) == key) return trim(line.substr(equals + 1));
  }
  return std::nullopt;
}

}  // namespace

platform::Color templateTint(PanelTheme theme) {
  return theme == PanelTheme::Dark ? platform::Color{0.95, 0.95, 0.95, 1.0} : platform::Color{0.13, 0.13, 0.13, 1.0};
}

std::optional<PanelTheme> panelThemeNamed(const std::string& name) {
  if (name == "light") return PanelTheme::Light;
  if (name == "dark") return PanelTheme::Dark;
  return std::nullopt;
}

const char* panelThemeName(PanelTheme theme) { return theme == PanelTheme::Dark ? "dark" : "light"; }

PanelTheme detectPanelTheme(const std::function<std::optional<std::string>(const std::string&)>& getenv,
                            const std::function<std::optional<std::string>(const std::string&)>& readFile) {
  if (auto chosen = getenv("KIBBAR_PANEL_THEME"))
    if (auto theme = panelThemeNamed(lowercase(*chosen))) return *theme;
  if (auto gtkTheme = getenv("GTK_THEME"); gtkTheme && !gtkTheme->empty())
    return namesDarkVariant(*gtkTheme) ? PanelTheme::Dark : PanelTheme::Light;
  std::string configHome;
  if (auto xdg = getenv("XDG_CONFIG_HOME"); xdg && !xdg->empty())
    configHome = *xdg;
  else if (auto home = getenv("HOME"); home && !home->empty())
    configHome = *home + "/.config";
  if (!configHome.empty()) {
    if (auto settings = readFile(configHome + "/gtk-3.0/settings.ini")) {
      if (auto prefer = iniValue(*settings, "gtk-application-prefer-dark-theme"))
        if (*prefer == "1" || lowercase(*prefer) == "true") return PanelTheme::Dark;
      if (auto name = iniValue(*settings, "gtk-theme-name"); name && namesDarkVariant(*name)) return PanelTheme::Dark;
    }
  }
  return PanelTheme::Light;
}

PanelTheme detectPanelTheme() {
  auto environment = [](const std::string& name) -> std::optional<std::string> {
    const char* value = std::getenv(name.c_str());
    return value ? std::optional<std::string>(value) : std::nullopt;
  };
  auto file = [](const std::string& path) -> std::optional<std::string> {
    std::ifstream in(path);
    if (!in) return std::nullopt;
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
  };
  return detectPanelTheme(environment, file);
}

}  // namespace kibrender
